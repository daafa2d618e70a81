#include "sample/SampleAlbums.h"

#include <algorithm>
#include <array>
#include <limits>

#include <MRZiPhoto/albums/Album.h>
#include <MRZiPhoto/albums/AlbumKinds.h>

namespace mrziphoto::sample {
namespace {

constexpr SampleKeys kListed = SampleKeys::listed;
constexpr SampleKeys kPacked = SampleKeys::packed;
constexpr SampleSelection kNone{};
constexpr SampleSelection kAll{0, 1, std::numeric_limits<std::uint32_t>::max()};
constexpr SampleSelection kLastRoll{0, 0, 0};

// Key, parent, kind, name, its name in the album data, keys, photos; comment. Roll albums are made
// of the rolls.
// clang-format off
constexpr std::array kAlbums{
    SampleAlbum{1,  0, &ArchiveAlbum::kClass,    "Photo Library",     "99",               kPacked, kAll},
    SampleAlbum{2,  0, &LastImportAlbum::kClass, "Last Import",       "Special Roll",     kListed, kLastRoll},
    SampleAlbum{3,  0, &FilterAlbum::kClass,     "Five stars & more", "Smart",            kPacked, {2, 9, 400}},
    SampleAlbum{4,  0, &Album::kClass,           "Été 2004",          "Regular",          kListed, {1, 3, 200}, "Le meilleur de l'été"},
    SampleAlbum{5,  0, &Album::kClass,           "Noe\u0308l",        "Regular",          kPacked, {0, 6, 100}},
    SampleAlbum{6,  0, &FolderAlbum::kClass,     "Family",            "Folder",           kListed, kNone},
    SampleAlbum{7,  6, &Album::kClass,           "Zoë & Noah",        "Regular",          kListed, {3, 5, 50}},
    SampleAlbum{8,  6, &FolderAlbum::kClass,     "Grandparents",      "Folder",           kListed, kNone},
    SampleAlbum{9,  8, &Album::kClass,           "80. Geburtstag",    "Regular",          kPacked, {4, 2, 30},  "Grüße von allen"},
    SampleAlbum{10, 6, &KeywordAlbum::kClass,    "京都",              "Keyword",          kListed, {0, 4, 50}},
    SampleAlbum{11, 0, &Album::kClass,           "An empty one",      "Regular",          kPacked, kNone},
    SampleAlbum{12, 0, &BookAlbum::kClass,       "A book",            "Book",             kListed, {0, 7, 40}},
    SampleAlbum{13, 0, &SlideshowAlbum::kClass,  "A show",            "Slideshow",        kPacked, {5, 5, 40}},
    SampleAlbum{14, 0, &PublishedAlbum::kClass,  "On the web",        "Published",        kListed, {1, 8, 20}},
    SampleAlbum{15, 0, &DynamicAlbum::kClass,    "Last 12 Months",    "Special Month",    kPacked, {0, 2, 60}},
    SampleAlbum{16, 0, &RotationAlbum::kClass,   "Pending Rotation",  "Special Rotation", kListed, {4, 7, 10}},
    SampleAlbum{17, 0, &TrashAlbum::kClass,      "Trash",             "Special Trash",    kListed, kNone},
};
// clang-format on

}  // namespace

std::span<const SampleAlbum> sampleAlbums() { return kAlbums; }

SampleSelection photosOfAlbum(const SampleAlbum& album, const SampleModel& model) {
  SampleSelection photos = album.selection;
  if (photos.step == 0) {
    if (model.rollCount() == 0) {
      return {};
    }
    const SampleRoll last = model.roll(model.rollCount() - 1);
    return {last.firstPhoto, 1, last.photoCount};
  }
  const std::uint32_t left = model.photoCount() - std::min(model.photoCount(), photos.first);
  photos.most = std::min(photos.most, (left + photos.step - 1) / photos.step);
  return photos;
}

}  // namespace mrziphoto::sample

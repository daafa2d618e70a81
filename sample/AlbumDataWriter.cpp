#include "sample/AlbumDataWriter.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include <MRZiPhoto/albums/Album.h>
#include <MRZiPhoto/albums/AlbumKinds.h>
#include <MRZiPhoto/photos/ImageRecRef.h>
#include <MRZiPhoto/values/detail/Text.h>

#include "sample/Generations.h"
#include "sample/PropertyListFile.h"
#include "sample/SampleAlbums.h"
#include "sample/SampleLibrary.h"

namespace mrziphoto::sample {
namespace {

// The application that wrote libraries up to a catalogue version.
struct Application {
  std::int32_t lastVersion;
  std::string_view version;
};
constexpr std::array kApplications{
    Application{kLastWithAlbumFiles, "4.0.3"},
    Application{kLastArchiveHeaded, "5.0.4 (263)"},
    Application{kLastWithDirectories, "6.0.6 (322)"},
    Application{kLastCoded - 1, "7.1.5 (378)"},
    Application{kNewestSampleVersion, "9.4"},
};

void writeKeys(PropertyListFile& list, const SampleSelection& photos) {
  list.beginArray(Album::kKeyList);
  for (std::uint32_t i = 0; i < photos.most; ++i) {
    list.string(std::to_string(SampleModel::photoKey(photos.first + i * photos.step)));
    list.flushIfLarge();
  }
  list.endArray();
  list.integer("PhotoCount", photos.most);
}

void writeFilters(PropertyListFile& list) {
  list.string("Filter Mode", "All");
  list.beginArray("Filters");
  list.beginDictionary();
  list.integer("Count", 5);
  list.string("Operation", "Is");
  list.string("Type", "Rating");
  list.endDictionary();
  list.endArray();
}

void writeAlbum(PropertyListFile& list, const SampleModel& model, const SampleAlbum& album) {
  list.beginDictionary();
  list.integer(Album::kAlbumId, album.key);
  list.string(Album::kAlbumName, album.name);
  list.string("Album Type", album.albumDataType);
  if (album.kind == &ArchiveAlbum::kClass) {
    list.key("Master");
    list.boolean(true);
  }
  if (album.kind == &FilterAlbum::kClass) {
    writeFilters(list);
  }
  if (album.parent != 0) {
    list.integer("Parent", album.parent);
  }
  if (!album.comment.empty()) {
    list.string(Album::kAnnotation, album.comment);
  }
  writeKeys(list, photosOfAlbum(album, model));
  list.endDictionary();
}

// The albums of the oldest libraries lie in a folder of their own; listed here, too, they would be
// shown twice.
void writeAlbums(PropertyListFile& list, const SampleModel& model) {
  list.beginArray("List of Albums");
  if (model.version() > kLastWithAlbumFiles) {
    for (const SampleAlbum& album : sampleAlbums()) {
      writeAlbum(list, model, album);
    }
  }
  list.endArray();
}

void writeRolls(PropertyListFile& list, const SampleModel& model) {
  list.beginArray("List of Rolls");
  for (std::uint32_t i = 0; i < model.rollCount(); ++i) {
    const SampleRoll roll = model.roll(i);
    list.beginDictionary();
    list.integer(Album::kAlbumId, roll.key);
    list.integer("RollID", roll.key);
    list.string(RollAlbum::kRollName, roll.name);
    if (roll.comment) {
      list.string(Album::kAnnotation, *roll.comment);
    }
    list.real(RollAlbum::kRollDateAsTimerInterval, roll.date);
    list.key("KeyPhotoKey");
    list.string(std::to_string(SampleModel::photoKey(roll.firstPhoto)));
    writeKeys(list, {roll.firstPhoto, 1, roll.photoCount});
    list.endDictionary();
  }
  list.endArray();
}

void writeKeywords(PropertyListFile& list) {
  list.beginDictionary("List of Keywords");
  for (const SampleKeyword& keyword : SampleModel::keywords()) {
    list.string(std::to_string(keyword.key), keyword.text);
  }
  list.endDictionary();
}

// What a photo's record answers as its archive date is the date that stands here.
void writePhoto(PropertyListFile& list, const SamplePhoto& photo, const std::string& prefix) {
  list.beginDictionary(std::to_string(photo.key));
  list.string("MediaType", "Image");
  list.string(ImageRecRef::kCaption, photo.caption);
  if (photo.comment) {
    list.string(ImageRecRef::kComment, *photo.comment);
  }
  list.real("Aspect Ratio", static_cast<double>(photo.width / photo.height));
  list.integer("Rating", photo.rating);
  list.integer(ImageRecRef::kRoll, photo.rollKey);
  list.real(ImageRecRef::kDateAsTimerInterval, photo.archiveDate);
  list.real(ImageRecRef::kModDateAsTimerInterval, photo.modificationDate);
  list.real("MetaModDateAsTimerInterval", photo.metadataDate);
  list.string(ImageRecRef::kImagePath, prefix + photo.imagePath);
  if (photo.isEdited) {
    list.string(ImageRecRef::kOriginalPath, prefix + photo.originalPath);
  }
  list.string(ImageRecRef::kThumbPath, prefix + photo.thumbnailPath);
  if (!photo.keywords.empty()) {
    list.beginArray(ImageRecRef::kKeywords);
    for (const std::int32_t keyword : photo.keywords) {
      list.string(std::to_string(keyword));
    }
    list.endArray();
  }
  list.endDictionary();
}

/// The text with U+FFFD for what XML does not allow.
std::string xmlText(std::string_view bytes) {
  const std::string text = text::repairedUtf8(bytes);
  std::string result;
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view before = rest;
    const std::uint32_t character = text::nextCharacter(rest);
    const bool isControl =
        character < ' ' && character != '\t' && character != '\n' && character != '\r';
    const bool isAllowed = !isControl && character != 0xFFFE && character != 0xFFFF;
    result += isAllowed ? before.substr(0, before.size() - rest.size()) : "\uFFFD";
  }
  return result;
}

}  // namespace

void writeAlbumData(const SampleModel& model, const std::string& folder,
                    const std::function<void()>& photoDone) {
  const std::string archivePath = xmlText(folder);
  PropertyListFile list(folder + "/AlbumData.xml");
  list.beginDictionary();
  list.string("Application Version", std::ranges::lower_bound(kApplications, model.version(), {},
                                                              &Application::lastVersion)
                                         ->version);
  list.string("Archive Path", archivePath);
  list.integer("Major Version", 2);
  list.integer("Minor Version", 0);
  writeAlbums(list, model);
  writeRolls(list, model);
  writeKeywords(list);
  list.beginDictionary("Master Image List");
  model.forEachPhoto([&](const SampleRoll&, const SamplePhoto& photo) {
    writePhoto(list, photo, archivePath + "/");
    list.flushIfLarge();
    photoDone();
  });
  list.endDictionary();
  list.endDictionary();
  list.finish();
}

}  // namespace mrziphoto::sample

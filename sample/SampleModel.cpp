#include "sample/SampleModel.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>

#include "sample/Generations.h"

namespace mrziphoto::sample {
namespace {

using namespace std::chrono;

// Texts in both normal forms, outside the basic plane, and with the characters that XML and CSV
// must quote.
constexpr std::array kKeywords{
    SampleKeyword{1, "_Favorite_"},   SampleKeyword{2, "Family"},
    SampleKeyword{3, "Été à la mer"}, SampleKeyword{4, "京都"},
    SampleKeyword{5, "Noe\u0308l"},   SampleKeyword{6, "<\"Black\" & 'white'>"},
    SampleKeyword{7, "Größe"},        SampleKeyword{8, "Never used", false},
};
constexpr std::size_t kUsedKeywords = std::ranges::count(kKeywords, true, &SampleKeyword::isUsed);

constexpr std::array<std::string_view, 5> kRollNames{
    "Roll", "Été à la mer", "Zoë's birthday & party", "京都", "Noe\u0308l"};

constexpr std::array<std::string_view, 6> kCaptions{
    "Smørrebrød på Nyhavn",           "東京タワー",         "Ἀθῆναι",
    "Cre\u0300me bru\u0302le\u0301e", "🎉 2 < 3 & \"more\"", "On the beach"};
constexpr std::array<std::string_view, 4> kComments{"Taken from the bridge.",
                                                    "Two lines,\nand a \"quote\".",
                                                    "Übermüdet; schön war's trotzdem…", "雨の日"};

// What cameras and people call files; the number of the photo follows.
struct FileName {
  std::string_view stem;
  std::string_view extension;
};
constexpr std::array kFileNames{
    FileName{"IMG_", ".JPG"},         FileName{"IMG_", ".JPG"}, FileName{"DSC0", ".jpg"},
    FileName{"At the lake ", ".jpg"}, FileName{"IMG_", ".JPG"}, FileName{"Ålesund ", ".jpg"},
    FileName{"Cafe\u0301 ", ".jpg"},
};

// Rolls differ in length; after these the lengths repeat.
constexpr std::array<std::uint32_t, 5> kRollLengths{7, 12, 3, 28, 50};
constexpr std::uint32_t kPhotosInCycle = 100;

// Rolls and photos draw their keys from one counter: first the roll, then its photos. Albums have
// the keys below.
constexpr std::uint32_t kFirstKey = 101;

constexpr std::uint32_t firstPhotoOf(std::uint32_t roll) {
  const auto cycle = static_cast<std::uint32_t>(roll / kRollLengths.size());
  std::uint32_t first = cycle * kPhotosInCycle;
  for (std::size_t i = 0; i < roll % kRollLengths.size(); ++i) {
    first += kRollLengths[i];
  }
  return first;
}
static_assert(firstPhotoOf(kRollLengths.size()) == kPhotosInCycle);

constexpr std::uint32_t rollOf(std::uint32_t photo) {
  auto roll = static_cast<std::uint32_t>(photo / kPhotosInCycle * kRollLengths.size());
  while (firstPhotoOf(roll + 1) <= photo) {
    ++roll;
  }
  return roll;
}

constexpr sys_days kReferenceDay{2001y / January / 1};
constexpr sys_days kFirstDay{2003y / March / 1};
constexpr std::uint32_t kDays = 3000;

double secondsAt(sys_days day) {
  return static_cast<double>(duration_cast<seconds>(day - kReferenceDay).count());
}

template <class T, std::size_t count>
const T& pick(const std::array<T, count>& from, std::uint64_t number) {
  return from[number % count];
}

std::string number(std::uint32_t value, std::size_t digits) {
  const std::string text = std::to_string(value);
  return std::string(digits - std::min(digits, text.size()), '0') + text;
}

std::uint64_t mixed(std::uint64_t value) {
  value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9;
  value = (value ^ value >> 27) * 0x94D049BB133111EB;
  return value ^ value >> 31;
}

// Up to the archive-headed catalogues the folder of a day holds a photo and, in subfolders, all
// that belongs to it; later versions keep a tree for each sort of file, with a folder for each roll
// in it.
void setFolders(SampleRoll& roll, std::int32_t version, const year_month_day& day) {
  const std::string year = std::to_string(static_cast<int>(day.year()));
  if (version <= kLastArchiveHeaded) {
    const std::string folder = year + "/" + number(static_cast<unsigned>(day.month()), 2) + "/" +
                               number(static_cast<unsigned>(day.day()), 2);
    roll.imageFolder = folder;
    roll.editedFolder = folder;
    roll.originalFolder = folder + "/Originals";
    roll.thumbnailFolder = folder + "/Thumbs";
    roll.dataFolder = folder + "/Data";
    return;
  }
  const std::string folder = "/" + year + "/" + roll.name;
  roll.imageFolder = "Originals" + folder;
  roll.editedFolder = "Modified" + folder;
  roll.originalFolder = roll.imageFolder;
  roll.thumbnailFolder = "Data" + folder;
  roll.dataFolder = roll.thumbnailFolder;
}

}  // namespace

std::uint64_t SampleModel::chance(std::string_view purpose, std::uint32_t index) const {
  std::uint64_t state = mixed(_seed + 0x9E3779B97F4A7C15);
  for (const char character : purpose) {
    state = mixed(state ^ static_cast<unsigned char>(character));
  }
  return mixed(state ^ index);
}

std::uint32_t SampleModel::rollCount() const {
  return _photoCount == 0 ? 0 : rollOf(_photoCount - 1) + 1;
}

std::uint32_t SampleModel::photoKey(std::uint32_t index) {
  return kFirstKey + index + rollOf(index) + 1;
}

std::span<const SampleKeyword> SampleModel::keywords() { return kKeywords; }

SampleRoll SampleModel::roll(std::uint32_t index) const {
  const sys_days day = kFirstDay + days(index * 3 / 2 % kDays);
  SampleRoll roll{};
  roll.index = index;
  roll.firstPhoto = firstPhotoOf(index);
  roll.photoCount = std::min(firstPhotoOf(index + 1), _photoCount) - roll.firstPhoto;
  roll.key = kFirstKey + roll.firstPhoto + index;
  roll.name = std::string(pick(kRollNames, index)) + " " + std::to_string(index + 1);
  if (index % 2 == 1) {
    roll.comment = pick(kComments, index / 2);
  }
  roll.date = secondsAt(day) + static_cast<double>(6 * 3600 + chance("roll", index) % 36000);
  roll.directoryKey = index + 1;
  setFolders(roll, _version, year_month_day(day));
  return roll;
}

SamplePhoto SampleModel::photo(const SampleRoll& roll, std::uint32_t index) const {
  const std::uint32_t inRoll = index - roll.firstPhoto;
  const std::uint64_t random = chance("photo", index);
  SamplePhoto photo{};
  photo.index = index;
  photo.key = photoKey(index);
  photo.rollKey = roll.key;
  photo.date = roll.date + 97 * inRoll + static_cast<double>(random % 240) / 4;
  photo.archiveDate = roll.date + 86400 + inRoll;
  photo.modificationDate = photo.archiveDate + static_cast<double>(random % 5'000'000);
  photo.metadataDate = photo.modificationDate + 0.5;
  photo.rating = static_cast<std::int32_t>(random >> 8 & 0xFF) % 6;
  photo.isEdited = index % 5 == 3;
  const bool isUpright = index % 7 == 4;
  photo.width = isUpright ? 480 : 640;
  photo.height = isUpright ? 640 : 480;
  photo.rotation = isUpright ? 90 : 0;
  photo.madeUpFileSize = 100'000 + random % 900'000;
  photo.camera = sampleCamera(chance("camera", index));

  const FileName& file = pick(kFileNames, index);
  const std::string stem = std::string(file.stem) + number(index + 1, 4);
  photo.fileName = stem + std::string(file.extension);
  photo.caption = index % 3 == 2 ? std::string(pick(kCaptions, index / 3)) : stem;
  if (index % 4 == 1) {
    photo.comment = pick(kComments, index / 4);
  }
  for (const SampleKeyword& keyword : kKeywords) {
    if (keyword.isUsed && index % 2 == 0 && chance(keyword.text, index) % kUsedKeywords < 2) {
      photo.keywords.push_back(keyword.key);
    }
  }

  photo.imagePath = (photo.isEdited ? roll.editedFolder : roll.imageFolder) + "/" + photo.fileName;
  photo.originalPath =
      photo.isEdited ? roll.originalFolder + "/" + photo.fileName : photo.imagePath;
  photo.thumbnailPath = roll.thumbnailFolder + "/" +
                        (_version <= kLastArchiveHeaded ? std::to_string(photo.key) : stem) +
                        ".jpg";
  return photo;
}

}  // namespace mrziphoto::sample

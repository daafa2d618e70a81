#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sample/SampleCamera.h"

namespace mrziphoto::sample {

struct SampleKeyword {
  std::int32_t key;
  std::string_view text;
  bool isUsed = true;
};

/// A film roll. Paths are relative to the library folder, dates seconds since 2001-01-01 UTC.
struct SampleRoll {
  std::uint32_t index;
  std::uint32_t key;
  std::uint32_t firstPhoto;
  std::uint32_t photoCount;
  std::string name;
  std::optional<std::string> comment;
  double date;
  std::string imageFolder;
  std::string editedFolder;
  std::string originalFolder;
  std::string thumbnailFolder;
  /// The folder of the info and attribute files of the roll's photos, and its directory key.
  std::string dataFolder;
  std::uint32_t directoryKey;
};

struct SamplePhoto {
  std::uint32_t index;
  std::uint32_t key;
  std::uint32_t rollKey;
  double date;
  double archiveDate;
  double modificationDate;
  double metadataDate;
  std::string caption;
  std::optional<std::string> comment;
  std::int32_t rating;
  /// Keys of used keywords, in the keywords' order.
  std::vector<std::int32_t> keywords;
  bool isEdited;
  float width;
  float height;
  float rotation;
  std::string fileName;
  std::string imagePath;
  /// Where the picture lies as the camera took it: the image path of a photo that was not edited.
  std::string originalPath;
  std::string thumbnailPath;
  /// Bytes; of pictures that are really there their own size stands in its place.
  std::uint64_t madeUpFileSize;
  SampleCamera camera;
};

/// The contents of a made-up library, the same for all versions. Every photo and roll is computed
/// from a seed and its number on request, so that the largest library needs no memory.
class SampleModel {
 public:
  SampleModel(std::uint64_t seed, std::int32_t version, std::uint32_t photos)
      : _seed(seed), _version(version), _photoCount(photos) {}

  [[nodiscard]] std::int32_t version() const { return _version; }
  [[nodiscard]] std::uint32_t photoCount() const { return _photoCount; }
  [[nodiscard]] std::uint32_t rollCount() const;
  [[nodiscard]] SampleRoll roll(std::uint32_t index) const;
  /// The photo of that number, which counts through all rolls and lies in this one.
  [[nodiscard]] SamplePhoto photo(const SampleRoll& roll, std::uint32_t index) const;
  [[nodiscard]] static std::uint32_t photoKey(std::uint32_t index);
  [[nodiscard]] static std::span<const SampleKeyword> keywords();

  /// Calls `use(roll, photo)` for every photo in order.
  template <class Use>
  void forEachPhoto(Use&& use) const {
    for (std::uint32_t r = 0; r < rollCount(); ++r) {
      const SampleRoll each = roll(r);
      for (std::uint32_t i = 0; i < each.photoCount; ++i) {
        use(each, photo(each, each.firstPhoto + i));
      }
    }
  }

  /// A number made of that seed, a word that says what it is for, and an index.
  [[nodiscard]] std::uint64_t chance(std::string_view purpose, std::uint32_t index) const;

 private:
  std::uint64_t _seed;
  std::int32_t _version;
  std::uint32_t _photoCount;
};

}  // namespace mrziphoto::sample

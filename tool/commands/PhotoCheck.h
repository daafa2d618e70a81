#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <future>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/photos/ImageRecRef.h>

#include "NamedFiles.h"

namespace mrziphoto::tool {

/// The files that a photo has.
enum class PhotoFile : std::uint8_t { image, original, thumbnail, count };
inline constexpr auto kPhotoFiles = static_cast<std::size_t>(PhotoFile::count);

struct PhotoFileNames {
  PhotoFile file;
  std::string_view one;
  std::string_view many;
};
inline constexpr std::array<PhotoFileNames, kPhotoFiles> kPhotoFileNames{{
    {PhotoFile::image, "image", "images"},
    {PhotoFile::original, "original", "originals"},
    {PhotoFile::thumbnail, "thumbnail", "thumbnails"},
}};

enum class FileState : std::uint8_t { there, missing, unreadable, count };
inline constexpr std::array kFileStates{std::string_view("there"), std::string_view("missing"),
                                        std::string_view("unreadable")};
static_assert(kFileStates.size() == static_cast<std::size_t>(FileState::count));
constexpr std::string_view nameOf(FileState state) {
  return kFileStates[static_cast<std::size_t>(state)];
}

/// What was found of one file of a photo.
struct CheckedFile {
  std::optional<std::string> path;
  /// Nothing when the photo has no such file of its own.
  std::optional<FileState> state;
  /// The file has yet to be looked at, which tells the state.
  bool isOpen = false;
  /// The file may be there, but nothing says that it should.
  bool mayBeAbsent = false;

  [[nodiscard]] bool isWrong() const { return state && *state != FileState::there; }
};

struct CheckedPhoto {
  Ref<ImageRecRef> photo;
  std::array<CheckedFile, kPhotoFiles> files;
  /// Whether the thumbnail cache has a picture in the place of a thumbnail file that is missing or
  /// unreadable; nothing for other photos.
  std::optional<bool> isInCache;

  [[nodiscard]] const CheckedFile& file(PhotoFile which) const {
    return files[static_cast<std::size_t>(which)];
  }
  [[nodiscard]] CheckedFile& file(PhotoFile which) {
    return files[static_cast<std::size_t>(which)];
  }
};

/// How many files of one sort were found in which state.
struct FileCounts {
  std::array<std::size_t, kFileStates.size()> inState{};

  [[nodiscard]] std::size_t checked() const;
};

struct CheckCounts {
  std::size_t photos = 0;
  std::array<FileCounts, kPhotoFiles> files;
  std::size_t inCache = 0;
  std::size_t unnamedFiles = 0;

  void add(const CheckedPhoto& checked);
  /// How many files of all sorts were found in that state.
  [[nodiscard]] std::size_t count(FileState state) const;
};

/// A look at the files of some photos, of each file no more than tells that it is an image. That is
/// mostly waiting for the file system, which threads of its own do: meanwhile the next photos can
/// be begun with.
class PhotoCheck {
 public:
  /// Begins, and adds the photos' files to the named ones.
  PhotoCheck(const TVQiPhotoDatabase& database, std::span<const Ref<ImageRecRef>> photos,
             NamedFiles& named);

  /// Waits for the end. Valid as long as this object.
  [[nodiscard]] std::span<const CheckedPhoto> finish();

 private:
  const TVQiPhotoDatabase& _database;
  std::vector<CheckedPhoto> _photos;
  // Behind what the work is done on, so that its end is waited for first.
  std::vector<std::future<void>> _work;
};

}  // namespace mrziphoto::tool

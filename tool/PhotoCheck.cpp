#include "PhotoCheck.h"

#include <algorithm>
#include <functional>
#include <numeric>

#include <MRZiPhoto/platform/FileManager.h>
#include <MRZiPhoto/platform/NSException.h>
#include <MRZiPhoto/platform/NSImage.h>
#include <MRZiPhoto/platform/Path.h>

#include "ComposedText.h"

namespace mrziphoto::tool {
namespace {

// Films, and pictures that only cameras' own programs and some others read: a library holds them
// rightly, and there is no telling here whether one is whole.
constexpr std::array<std::string_view, 44> kOtherMedia{
    "3fr",  "3g2",  "3gp", "arw", "avi", "bmp", "cr2",  "cr3", "crw", "dcr", "dng",
    "dv",   "eps",  "erf", "fff", "jp2", "kdc", "m2ts", "m4v", "mef", "mos", "mov",
    "mp4",  "mpeg", "mpg", "mrw", "mts", "nef", "nrw",  "orf", "pct", "pdf", "pef",
    "pict", "psd",  "raf", "raw", "rw2", "sr2", "srf",  "srw", "tga", "wmv", "x3f"};
static_assert(std::ranges::is_sorted(kOtherMedia));

FileState stateOf(const std::string& path) {
  const Ref<NSImage> image = NSImage::initByReferencingFile(path);
  if (image && image->isValid()) {
    return FileState::there;
  }
  const std::optional<std::uint64_t> size = FileManager::size(path);
  if (!size) {
    return FileState::missing;
  }
  const std::string extension = foldedFileName(path::extension(path));
  const bool isOther = *size > 0 && std::ranges::binary_search(kOtherMedia, extension);
  return isOther && FileManager::isFile(path) ? FileState::there : FileState::unreadable;
}

CheckedFile checkFile(const std::optional<std::string>& path, NamedFiles& named) {
  if (path) {
    named.add(*path);
  }
  return {path, path ? stateOf(*path) : FileState::missing};
}

/// Where the catalogue names no original, the photo was most likely not edited, and yet its
/// original may lie where older generations keep them.
CheckedFile checkOriginal(const ImageRecRef& photo, const std::optional<std::string>& image,
                          NamedFiles& named) {
  if (const std::optional<std::string> recorded = photo.recordedOriginalPath()) {
    return recorded == image ? CheckedFile() : checkFile(recorded, named);
  }
  const std::optional<std::string> presumed = photo.originalImagePath();
  const bool isThere = presumed && presumed != image && named.hasFolderOf(*presumed) &&
                       FileManager::exists(*presumed);
  return isThere ? checkFile(presumed, named) : CheckedFile();
}

bool isInCache(const TVQiPhotoDatabase& database, const ImageRecRef& photo) {
  return database.cacheThumbnailForKey(photo.key()) != nullptr;
}

/// What `look` answers, or what a photo without a usable key gets.
template <class Look, class T>
T orWithoutKey(Look&& look, T otherwise) {
  try {
    return look();
  } catch (const NSException&) {
    return otherwise;
  }
}

}  // namespace

std::size_t FileCounts::checked() const {
  return std::accumulate(inState.begin(), inState.end(), std::size_t{0});
}

void CheckCounts::add(const CheckedPhoto& checked) {
  ++photos;
  for (std::size_t i = 0; i < kPhotoFiles; ++i) {
    if (const std::optional<FileState> state = checked.files[i].state) {
      ++files[i].inState[static_cast<std::size_t>(*state)];
    }
  }
  inCache += checked.isInCache.value_or(false) ? 1 : 0;
}

std::size_t CheckCounts::wrong() const {
  return std::transform_reduce(files.begin(), files.end(), std::size_t{0}, std::plus<>(),
                               std::mem_fn(&FileCounts::wrong));
}

CheckedPhoto checkPhoto(const TVQiPhotoDatabase& database, const ImageRecRef& photo,
                        NamedFiles& named) {
  const CheckedFile none{std::nullopt, FileState::missing};
  CheckedPhoto checked{photo, {none, {}, none}, {}};
  CheckedFile& image = checked.file(PhotoFile::image);
  CheckedFile& thumbnail = checked.file(PhotoFile::thumbnail);
  image = orWithoutKey([&] { return checkFile(photo.imagePath(), named); }, none);
  checked.file(PhotoFile::original) =
      orWithoutKey([&] { return checkOriginal(photo, image.path, named); }, CheckedFile());
  thumbnail = orWithoutKey([&] { return checkFile(photo.thumbnailPath(), named); }, none);
  if (thumbnail.isWrong()) {
    checked.isInCache = orWithoutKey([&] { return isInCache(database, photo); }, false);
  }
  return checked;
}

}  // namespace mrziphoto::tool

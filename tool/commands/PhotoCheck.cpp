#include "PhotoCheck.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include <MRZiPhoto/files/FileManager.h>
#include <MRZiPhoto/files/Path.h>
#include <MRZiPhoto/images/NSImage.h>
#include <MRZiPhoto/values/NSException.h>

#include "../output/ComposedText.h"

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

// More than there are processors in some machines: what takes long is waiting for a disk.
constexpr std::size_t kThreads = 4;

FileState stateOf(const std::string& path) {
  const Ref<NSImage> image = NSImage::initByReferencingFile(path);
  if (image && image->isValid()) {
    return FileState::there;
  }
  const std::optional<std::uint64_t> size = FileManager::size(path);
  if (!size) {
    const std::optional<FileFailure> obstacle = FileManager::obstacle(path);
    return obstacle && obstacle->cause != FileFailure::Cause::notThere ? FileState::unreadable
                                                                       : FileState::missing;
  }
  const std::string extension = foldedFileName(path::extension(path));
  const bool isOther = *size > 0 && std::ranges::binary_search(kOtherMedia, extension);
  return isOther && FileManager::isFile(path) ? FileState::there : FileState::unreadable;
}

/// A file that has yet to be looked at, where that makes sense.
CheckedFile fileAt(const std::optional<std::string>& path, NamedFiles& named) {
  const bool hasFolder = path && named.add(*path);
  return {.path = path, .state = FileState::missing, .isOpen = hasFolder};
}

/// Where the catalogue names no original, the photo was most likely not edited, and yet its
/// original may lie where older generations keep them.
CheckedFile originalOf(const ImageRecRef& photo, const std::optional<std::string>& image,
                       NamedFiles& named) {
  if (const std::optional<std::string> recorded = photo.recordedOriginalPath()) {
    return recorded == image ? CheckedFile() : fileAt(recorded, named);
  }
  const std::optional<std::string> presumed = photo.originalImagePath();
  if (!presumed || presumed == image || !named.hasFolderOf(*presumed)) {
    return {};
  }
  CheckedFile file = fileAt(presumed, named);
  file.mayBeAbsent = true;
  return file;
}

void lookAt(CheckedFile& file) {
  if (!file.isOpen) {
    return;
  }
  file.state = stateOf(*file.path);
  if (file.mayBeAbsent && file.state == FileState::missing) {
    file = {};
  }
}

void lookAtFiles(const ReadingRules* rules, std::span<CheckedPhoto> photos) {
  const ReadingRules::Scope scope(rules);
  for (CheckedPhoto& photo : photos) {
    std::ranges::for_each(photo.files, lookAt);
  }
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

std::size_t CheckCounts::count(FileState state) const {
  return std::transform_reduce(
      files.begin(), files.end(), std::size_t{0}, std::plus<>(),
      [state](const FileCounts& each) { return each.inState[static_cast<std::size_t>(state)]; });
}

PhotoCheck::PhotoCheck(const TVQiPhotoDatabase& database, std::span<const Ref<ImageRecRef>> photos,
                       NamedFiles& named)
    : _database(database) {
  const CheckedFile none{.path = {}, .state = FileState::missing};
  _photos.reserve(photos.size());
  for (const Ref<ImageRecRef>& photo : photos) {
    CheckedPhoto& checked = _photos.emplace_back(CheckedPhoto{photo, {none, {}, none}, {}});
    CheckedFile& image = checked.file(PhotoFile::image);
    image = orWithoutKey([&] { return fileAt(photo->imagePath(), named); }, none);
    checked.file(PhotoFile::original) =
        orWithoutKey([&] { return originalOf(*photo, image.path, named); }, CheckedFile());
    checked.file(PhotoFile::thumbnail) =
        orWithoutKey([&] { return fileAt(photo->thumbnailPath(), named); }, none);
    photo->unload();
  }
  const std::size_t share = _photos.size() / kThreads + 1;
  // Where there can be no thread, the work is done when its end is waited for.
  constexpr auto kThreadOrLater = std::launch::async | std::launch::deferred;
  for (std::span<CheckedPhoto> rest = _photos; !rest.empty();) {
    const std::span<CheckedPhoto> part = rest.first(std::min(share, rest.size()));
    _work.push_back(std::async(kThreadOrLater, lookAtFiles, database.readingRules(), part));
    rest = rest.subspan(part.size());
  }
}

std::span<const CheckedPhoto> PhotoCheck::finish() {
  std::ranges::for_each(std::exchange(_work, {}), &std::future<void>::get);
  for (CheckedPhoto& checked : _photos) {
    if (checked.file(PhotoFile::thumbnail).isWrong()) {
      checked.isInCache = orWithoutKey([&] { return isInCache(_database, *checked.photo); }, false);
    }
  }
  return _photos;
}

}  // namespace mrziphoto::tool

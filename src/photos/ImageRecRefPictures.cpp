// The photo record's pictures: where their files lie, whether the photo was edited, and the images.

#include <algorithm>
#include <array>
#include <cmath>

#include "../files/Path.h"
#include "../images/NSImage.h"
#include "../table/detail/PhotoField.h"
#include "../values/Object.h"
#include "ImageRecRef.h"
#include "RecordDatabase.h"
#include "detail/ImageRecRefBeside.h"

namespace mrziphoto {
namespace {

constexpr std::string_view kHostImageClass = "TVQAttributedImage";
// The longest side of the small copy of an original.
constexpr float kLongestThumbnailSide = 240;

// The generations that keep an original under the image file's own name.
constexpr std::array<std::string_view, 4> kOriginalsUnderOwnName{"50", "40", "20", "11"};

std::optional<std::string> joined(const std::optional<std::string>& folder,
                                  const std::optional<std::string>& name) {
  return folder && name ? std::optional(path::join(*folder, *name)) : std::nullopt;
}

}  // namespace

std::string ImageRecRef::_thumbnailFilename() const {
  return path::withExtension(keyStringValue(), "jpg");
}

std::optional<std::string> ImageRecRef::thumbnailDirectory() const {
  return joined(_imageDirectory(), "Thumbs");
}

std::optional<std::string> ImageRecRef::thumbnailPath() const {
  for (const PhotoField field : {PhotoField::imageThumbnailPath, PhotoField::thumbPath}) {
    if (const Value recorded = imageInfo(field); !recorded.isNothing()) {
      return updated(recorded.text());
    }
  }
  return updated(joined(thumbnailDirectory(), _thumbnailFilename()));
}

std::optional<std::string> ImageRecRef::_originalImageFilename() const {
  const std::string generation =
      _database != nullptr ? _database->iPhotoDataVersion() : std::string();
  if (std::ranges::find(kOriginalsUnderOwnName, generation) == kOriginalsUnderOwnName.end()) {
    return path::withExtension(keyStringValue(), originalExtension());
  }
  const std::optional<std::string> name = _filename();
  return name ? std::optional(path::lastComponent(*name)) : std::nullopt;
}

std::optional<std::string> ImageRecRef::originalImageDirectory() const {
  return joined(_imageDirectory(), "Originals");
}

std::optional<std::string> ImageRecRef::originalImagePath() const {
  if (const Value recorded = imageInfo(PhotoField::imageOriginalPath); !recorded.isNothing()) {
    return recorded.text();
  }
  return originalIn(originalImageDirectory());
}

/// Where the original lies by the custom of the library's generation; `folder` is that of
/// originals.
std::optional<std::string> ImageRecRef::originalIn(const std::optional<std::string>& folder) const {
  return joined(folder, _originalImageFilename());
}

std::optional<std::string> ImageRecRef::recordedOriginalPath() const {
  // Only album data tells paths as they were when the library lay elsewhere.
  const Value recorded = imageInfo(PhotoField::imageOriginalPath);
  return recorded.isNothing() ? updated(imageInfo(PhotoField::originalPath).text())
                              : recorded.text();
}

bool ImageRecRef::hasBeenEdited() const {
  return _hasBeenEditedIsValid ? _hasBeenEdited
                               : keepHasBeenEdited(originalImagePath(), imagePath());
}

bool ImageRecRef::keepHasBeenEdited(const std::optional<std::string>& original,
                                    const std::optional<std::string>& image) const {
  _hasBeenEdited = original && image && *original != *image;
  _hasBeenEditedIsValid = true;
  return _hasBeenEdited;
}

const Class& ImageRecRef::imageClass() {
  static const Class& kind = []() -> const Class& {
    const Class* host = ClassRegistry::find(kHostImageClass);
    return host != nullptr && host->isKindOf(NSImage::kClass) ? *host : NSImage::kClass;
  }();
  return kind;
}

Ref<NSImage> ImageRecRef::imageWithPath(const std::string& path) {
  // One for each thread: two databases may live in two threads.
  static thread_local std::string cachedPath;
  static thread_local std::string cachedFolder;
  static thread_local Ref<NSImage> cachedImage;
  // What one database may open, another may not.
  const std::string folder = ReadingRules::current().onlyInside;
  if (cachedImage && cachedPath == path && cachedFolder == folder) {
    return cachedImage;
  }
  cachedImage = NSImage::initByReferencingFile(path, imageClass());
  cachedPath = path;
  cachedFolder = folder;
  if (cachedImage) {
    cachedImage->setCachedSeparately(true);
  }
  return cachedImage;
}

Ref<NSImage> ImageRecRef::image() const {
  const ReadingRules::Scope scope(rulesOf(_database.get()));
  const std::optional<std::string> path = imagePath();
  return path ? imageWithPath(*path) : nullptr;
}

/// A side of the photo's picture, where no store tells it.
Value ImageRecRef::imageSide(float NSSize::*side) const {
  const Ref<NSImage> full = image();
  return full ? Value(full->size().*side) : Value();
}

Ref<NSImage> ImageRecRef::keptThumbnail(Ref<NSImage>& kept) const {
  if (kept) {
    return kept;
  }
  const ReadingRules::Scope scope(rulesOf(_database.get()));
  const std::optional<std::string> path = thumbnailPath();
  Ref<NSImage> found = path ? NSImage::initByReferencingFile(*path, imageClass()) : nullptr;
  if (!found || !found->isValid()) {
    found =
        _database != nullptr ? _database->thumbnailForKeyImageSize(key(), imageSize()) : nullptr;
  }
  if (found) {
    found->setCachedSeparately(true);
  }
  kept = found;
  return found;
}

Ref<NSImage> ImageRecRef::thumbnail() const { return keptThumbnail(beside()._thumbnail); }

Ref<NSImage> ImageRecRef::displayThumbnail() const {
  return keptThumbnail(beside()._displayThumbnail);
}

Ref<NSImage> ImageRecRef::originalImage() const {
  if (!hasBeenEdited()) {
    return image();
  }
  const std::optional<std::string> path = originalImagePath();
  return path ? imageWithPath(*path) : nullptr;
}

Ref<NSImage> ImageRecRef::originalThumbnail() const {
  if (!hasBeenEdited()) {
    return thumbnail();
  }
  if (!beside()._originalThumbnail) {
    _makeOriginalThumbnail();
  }
  return beside()._originalThumbnail;
}

void ImageRecRef::_makeOriginalThumbnail() const {
  Ref<NSImage>& kept = beside()._originalThumbnail;
  const Ref<NSImage> original = originalImage();
  if (!original) {
    return;
  }
  const NSSize size = original->size();
  const float longest = std::max(size.width, size.height);
  if (!(longest > kLongestThumbnailSide)) {
    kept = original;
    return;
  }
  const double scale = static_cast<double>(kLongestThumbnailSide) / static_cast<double>(longest);
  const auto scaled = [scale](float side) {
    return static_cast<float>(std::ceil(static_cast<double>(side) * scale));
  };
  kept = original->scaledCopy({scaled(size.width), scaled(size.height)});
  if (kept) {
    kept->setCachedSeparately(true);
  }
}

}  // namespace mrziphoto

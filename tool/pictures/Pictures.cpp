#include "Pictures.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include <MRZiPhoto/images/NSImage.h>
#include <MRZiPhoto/images/NSSize.h>
#include <MRZiPhoto/values/NSException.h>

#include "../output/Failure.h"

namespace mrziphoto::tool {
namespace {

struct PixelSize {
  std::uint32_t width;
  std::uint32_t height;
};

/// The size of a picture of that shape that just fits into a square; the square for no shape.
PixelSize sizeInSquare(NSSize shape, std::uint32_t side) {
  const float longest = std::max(shape.width, shape.height);
  if (!(shape.width > 0 && shape.height > 0 && std::isfinite(longest))) {
    return {side, side};
  }
  const auto scaled = [=](float length) {
    const float pixels = std::round(length / longest * static_cast<float>(side));
    return std::clamp(static_cast<std::uint32_t>(pixels), std::uint32_t{1}, side);
  };
  return {scaled(shape.width), scaled(shape.height)};
}

Ref<NSBitmapImageRep> fromFile(const ImageRecRef& photo, std::uint32_t side) {
  const std::optional<std::string> path = photo.thumbnailPath();
  const Ref<NSImage> image = path ? NSImage::initByReferencingFile(*path) : nullptr;
  if (!image || !image->isValid()) {
    return {};
  }
  const PixelSize size = sizeInSquare(image->size(), side);
  return image->bitmapOfPixels(size.width, size.height);
}

/// Pictures in the cache are squares, into which photos of any shape were drawn.
Ref<NSBitmapImageRep> fromCache(const TVQiPhotoDatabase& database, const ImageRecRef& photo,
                                std::uint32_t side) {
  const Ref<NSBitmapImageRep> bitmap = database.cacheThumbnailForKey(photo.key());
  if (!bitmap) {
    return {};
  }
  const PixelSize size = sizeInSquare(photo.imageSize(), side);
  return bitmap->scaledToPixels(size.width, size.height);
}

}  // namespace

void expectPictures() {
  if (!NSImage::isSupported()) {
    throw Failure(ExitStatus::notThere,
                  "this mrziphoto was built without images, and reads no pictures");
  }
}

Ref<NSBitmapImageRep> thumbnailInSquare(const TVQiPhotoDatabase& database, const ImageRecRef& photo,
                                        std::uint32_t side) {
  try {
    Ref<NSBitmapImageRep> bitmap = fromFile(photo, side);
    return bitmap ? bitmap : fromCache(database, photo, side);
  } catch (const NSException&) {
    return {};  // a key that is none
  }
}

}  // namespace mrziphoto::tool

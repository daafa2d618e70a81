// Where the photo record's picture files lie, and whether the photo was edited.

#include <algorithm>
#include <array>

#include "../platform/Path.h"
#include "ImageRecRef.h"
#include "RecordDatabase.h"

namespace mrziphoto {
namespace {

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
  for (const std::string_view name : {kImageThumbnailPath, kThumbPath}) {
    if (const Value recorded = imageInfo(name); !recorded.isNothing()) {
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
  if (const Value recorded = imageInfo(kImageOriginalPath); !recorded.isNothing()) {
    return recorded.text();
  }
  return joined(originalImageDirectory(), _originalImageFilename());
}

bool ImageRecRef::hasBeenEdited() const {
  if (!_hasBeenEditedIsValid) {
    const std::optional<std::string> original = originalImagePath();
    const std::optional<std::string> image = imagePath();
    _hasBeenEdited = original && image && *original != *image;
    _hasBeenEditedIsValid = true;
  }
  return _hasBeenEdited;
}

}  // namespace mrziphoto

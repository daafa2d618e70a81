#pragma once

#include <optional>
#include <string>

#include "../../exif/TVQiPhotoUserData.h"
#include "../../images/NSImage.h"
#include "../ImageRecRef.h"

namespace mrziphoto {

/// What a photo record has besides its row: what it was given, and what it worked out on request.
struct ImageRecRef::Beside {
  Beside() = default;
  Beside(const Beside&) = delete;
  Beside& operator=(const Beside&) = delete;
  ~Beside() { letGoOfExifData(); }

  /// A host may hold on to the camera values for longer than to their photo.
  void letGoOfExifData() {
    if (_exifData) {
      _exifData->setPhoto(nullptr);
      _exifData = nullptr;
    }
  }

  // Read from an archive, or given.
  Ref<Dictionary> _dictionary;
  Ref<Dictionary> _imageInfo;
  Ref<AttributeMgr> _dbAttributes;
  Ref<ImageRec> _dbInfo;
  // Given, read from files of their own, or made from the row.
  Ref<ImageRec> _info;
  Ref<AttributeMgr> _imageAttributes;
  // Worked out.
  std::optional<std::string> _relativeDirectory;
  Ref<TVQiPhotoUserData> _exifData;
  Ref<NSImage> _thumbnail;
  Ref<NSImage> _displayThumbnail;
  Ref<NSImage> _originalThumbnail;
};

}  // namespace mrziphoto

#pragma once

#include <optional>
#include <string>

#include "../exif/TVQiPhotoUserData.h"
#include "../images/NSImage.h"
#include "ImageRecRef.h"

namespace mrziphoto {

/// What a photo record works out on first request and keeps.
struct ImageRecRef::OnRequest {
  OnRequest() = default;
  OnRequest(const OnRequest&) = delete;
  OnRequest& operator=(const OnRequest&) = delete;
  ~OnRequest() {
    // A host may hold on to the camera values for longer than to their photo.
    if (_exifData) {
      _exifData->setPhoto(nullptr);
    }
  }

  Ref<AttributeMgr> _dbAttributes;
  Ref<ImageRec> _dbInfo;
  std::optional<std::string> _relativeDirectory;
  Ref<TVQiPhotoUserData> _exifData;
  Ref<NSImage> _thumbnail;
  Ref<NSImage> _displayThumbnail;
  Ref<NSImage> _originalThumbnail;
};

}  // namespace mrziphoto

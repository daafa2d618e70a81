#pragma once

#include <string>

#include "sample/SampleCamera.h"

namespace mrziphoto::sample {

/// What a camera noted, as the block that catalogues and attribute files keep of it.
[[nodiscard]] std::string cameraBlock(const SampleCamera& camera);
/// The same as the EXIF segment of a picture file, with the picture's date in seconds since
/// 2001-01-01 UTC.
[[nodiscard]] std::string exifSegment(const SampleCamera& camera, double date);

}  // namespace mrziphoto::sample

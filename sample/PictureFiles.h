#pragma once

#include <functional>
#include <string>

#include "sample/SampleModel.h"

namespace mrziphoto::sample {

/// Writes the pictures of all photos, their thumbnails, and the originals of edited ones into the
/// library folder. Calls `photoDone` behind each photo.
void writePictureFiles(const SampleModel& model, const std::string& folder,
                       const std::function<void()>& photoDone);

/// Writes a cache of square thumbnails, one slot for each of the first `slots` photos. Calls
/// `photoDone` behind each photo.
void writeSegmentCache(const SampleModel& model, const std::string& path, std::uint32_t side,
                       std::uint32_t slots, const std::function<void()>& photoDone);

}  // namespace mrziphoto::sample

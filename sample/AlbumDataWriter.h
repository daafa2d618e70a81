#pragma once

#include <functional>
#include <string>

#include "sample/SampleModel.h"

namespace mrziphoto::sample {

/// Writes "AlbumData.xml" into the library folder, which is also the folder that the paths in it
/// name. Calls `photoDone` behind each photo.
void writeAlbumData(const SampleModel& model, const std::string& folder,
                    const std::function<void()>& photoDone);

}  // namespace mrziphoto::sample

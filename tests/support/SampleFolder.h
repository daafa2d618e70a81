#pragma once

#include <cstdint>
#include <string>

#include "sample/SampleLibrary.h"

namespace mrziphoto {

/// A made-up library of that version in a folder; with pictures only where a test looks at them.
inline void writeSample(const std::string& folder, std::int32_t version, std::uint32_t photos = 24,
                        bool images = false) {
  SampleOptions options;
  options.folder = folder;
  options.libraryVersion = version;
  options.photos = photos;
  options.images = images;
  writeSampleLibrary(options);
}

}  // namespace mrziphoto

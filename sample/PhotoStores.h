#pragma once

#include <bit>
#include <cstdint>
#include <string>

#include "sample/SampleModel.h"

namespace mrziphoto::sample {

/// The size in bytes of a photo's picture file, made up where there are no pictures.
[[nodiscard]] std::uint64_t fileSizeOf(const SamplePhoto& photo, const std::string& folder,
                                       bool hasPictures);

/// Writes the info and attribute files that lie beside pictures of the oldest libraries: those of
/// rolls, and with `hasPictures` those of photos.
void writePhotoStores(const SampleModel& model, const std::string& folder, bool hasPictures,
                      std::endian byteOrder);

}  // namespace mrziphoto::sample

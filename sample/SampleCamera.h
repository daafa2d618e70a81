#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace mrziphoto::sample {

/// A camera setting: an EXIF tag with a fraction, or with a whole number where the denominator is
/// 0.
struct CameraSetting {
  std::uint16_t tag;
  std::uint32_t numerator;
  std::uint32_t denominator = 0;
};

/// What a camera noted about a picture.
struct SampleCamera {
  std::string_view maker;
  std::string_view model;
  std::string_view software;
  /// Sorted by tag.
  std::vector<CameraSetting> settings;
};

/// The camera with which a picture was taken, and how it was set, by a random number.
[[nodiscard]] SampleCamera sampleCamera(std::uint64_t chance);

}  // namespace mrziphoto::sample

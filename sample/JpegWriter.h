#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string_view>

namespace mrziphoto::sample {

/// A JPEG picture on its way into a file, rows from the top: no more of it is in memory than the
/// caller holds.
class JpegWriter {
 public:
  /// The most pixels that such a picture has either way.
  static constexpr std::size_t kLongestSide = 65500;
  static constexpr std::size_t kSamples = 3;

  /// `stream` stays the caller's.
  JpegWriter(std::FILE* stream, std::size_t width, std::size_t height);
  ~JpegWriter();

  // Each of these answers false when the file cannot be written, which `errno` tells, or when there
  // is no memory; nothing more can be written then.

  /// To be called first. `quality` goes up to 100; `exif` is the content of the EXIF segment, empty
  /// for none.
  [[nodiscard]] bool begin(int quality, std::string_view exif = {});
  /// Red, green and blue of whole rows.
  [[nodiscard]] bool writeRows(std::span<const std::uint8_t> samples);
  /// After the last row.
  [[nodiscard]] bool finish();

 private:
  struct Compressor;
  std::unique_ptr<Compressor> _compressor;
};

}  // namespace mrziphoto::sample

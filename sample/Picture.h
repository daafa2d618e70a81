#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace mrziphoto::sample {

/// Red, green and blue of every pixel, row by row.
class Picture {
 public:
  Picture(std::size_t width, std::size_t height)
      : _width(width), _height(height), _samples(width * height * kSamples) {}

  static constexpr std::size_t kSamples = 3;

  [[nodiscard]] std::size_t width() const { return _width; }
  [[nodiscard]] std::size_t height() const { return _height; }
  /// A row's samples.
  [[nodiscard]] std::uint8_t* row(std::size_t y) { return &_samples[y * _width * kSamples]; }
  [[nodiscard]] const std::uint8_t* row(std::size_t y) const {
    return &_samples[y * _width * kSamples];
  }

  /// Of all rows.
  [[nodiscard]] std::span<const std::uint8_t> samples() const { return _samples; }

 private:
  std::size_t _width;
  std::size_t _height;
  std::vector<std::uint8_t> _samples;
};

/// Two colours that run into each other, with a number in white blocks; an edited picture has a
/// white frame as well. The same colours and number look alike in every size.
struct PictureSubject {
  std::uint64_t colours;
  std::uint32_t number;
  bool isEdited;
};
[[nodiscard]] Picture drawPicture(const PictureSubject& subject, std::size_t width,
                                  std::size_t height);

/// The picture as a JPEG file; `exif` is the content of its EXIF segment, empty for none. Throws
/// std::bad_alloc when there is no memory for it.
[[nodiscard]] std::string jpegFile(const Picture& picture, std::string_view exif);

}  // namespace mrziphoto::sample

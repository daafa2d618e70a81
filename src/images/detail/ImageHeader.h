#pragma once

#include <cstdint>
#include <optional>

#include "../../values/Limits.h"

namespace mrziphoto::detail {

class OpenFile;

/// The kinds of image file that are read.
enum class ImageFormat : std::uint8_t { jpeg, png, gif, tiff, webp, heif };

/// What the first bytes of an image file say, read without decoding anything: libraries are asked
/// for the sizes of many pictures of which few are ever drawn.
struct ImageHeader {
  ImageFormat format = ImageFormat::jpeg;
  /// Pixels as they are stored, no turn applied. Both 0 for HEIF, whose size its decoder tells.
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  /// What the decoder keeps of each pixel while it works; 0 when it goes through the picture by
  /// lines.
  std::uint32_t heldBytesPerPixel = 0;
  /// What it keeps besides, however few the pixels: the file, of formats that are decoded in
  /// memory.
  std::uint64_t heldBytes = 0;
};

/// True for a picture of more pixels, or of more bytes for all its pixels, than may be decoded.
[[nodiscard]] constexpr bool isTooLarge(const ImageHeader& header, const Limits& limits) {
  const std::uint64_t pixels = std::uint64_t{header.width} * header.height;
  return header.width > limits.imageSide || header.height > limits.imageSide ||
         pixels > limits.imagePixels || pixels * header.heldBytesPerPixel > limits.decoderBytes;
}

/// The header of an image file. Nothing for other files, and for those that end, or make no sense,
/// before the size is told.
[[nodiscard]] std::optional<ImageHeader> imageHeaderOf(const OpenFile& file);

}  // namespace mrziphoto::detail

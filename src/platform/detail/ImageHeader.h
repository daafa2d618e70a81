#pragma once

#include <cstdint>
#include <optional>
#include <string>

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
  /// The decoder has to hold the whole picture in memory; otherwise it goes through it by lines.
  bool isHeldWhole = false;
};

/// The header of an image file. Nothing for other files, and for those that end, or make no sense,
/// before the size is told.
[[nodiscard]] std::optional<ImageHeader> imageHeaderOf(const OpenFile& file);

}  // namespace mrziphoto::detail

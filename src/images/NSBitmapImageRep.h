#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "../values/Data.h"
#include "../values/Export.h"
#include "../values/Object.h"

namespace mrziphoto {

namespace detail {
struct Pixels;
struct PixelView;
}  // namespace detail

/// A picture in memory: rows from the top, four bytes a pixel, red, green, blue and alpha, the
/// colours not multiplied by alpha. It owns its pixels.
class MRZIPHOTO_EXPORT NSBitmapImageRep final : public Object {
 public:
  static const Class kClass;

  /// A bitmap of transparent pixels. Throws std::bad_alloc when there is no memory for it.
  NSBitmapImageRep(std::uint32_t pixelsWide, std::uint32_t pixelsHigh);
  explicit NSBitmapImageRep(detail::Pixels pixels);

  [[nodiscard]] std::uint32_t pixelsWide() const { return _pixelsWide; }
  [[nodiscard]] std::uint32_t pixelsHigh() const { return _pixelsHigh; }
  [[nodiscard]] std::uint32_t bitsPerSample() const { return 8; }
  [[nodiscard]] std::uint32_t samplesPerPixel() const { return 4; }
  [[nodiscard]] std::uint32_t bitsPerPixel() const { return bitsPerSample() * samplesPerPixel(); }
  [[nodiscard]] std::size_t bytesPerRow() const {
    return std::size_t{_pixelsWide} * samplesPerPixel();
  }
  [[nodiscard]] bool hasAlpha() const { return true; }
  [[nodiscard]] bool isPlanar() const { return false; }
  [[nodiscard]] std::string_view colorSpaceName() const { return kNSCalibratedRGBColorSpace; }

  /// The pixels, `bytesPerRow` times `pixelsHigh` bytes.
  [[nodiscard]] std::span<std::uint8_t> bitmapData() { return {_bitmapData.get(), size()}; }
  [[nodiscard]] std::span<const std::uint8_t> bitmapData() const {
    return {_bitmapData.get(), size()};
  }

  /// The picture drawn into another size. Nothing for a size without pixels or with too many (see
  /// `Limits::bitmapPixels`), and where the library was built without images.
  [[nodiscard]] Ref<NSBitmapImageRep> scaledToPixels(std::uint32_t wide, std::uint32_t high) const;
  /// The picture as a PNG file, its pixels as they are; nothing where the library was built without
  /// images.
  [[nodiscard]] std::optional<Data> pngData() const;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  /// "<NSBitmapImageRep 64 x 64>".
  [[nodiscard]] std::string description() const override;

  static constexpr std::string_view kNSCalibratedRGBColorSpace = "NSCalibratedRGBColorSpace";

 private:
  [[nodiscard]] std::size_t size() const { return bytesPerRow() * _pixelsHigh; }
  [[nodiscard]] detail::PixelView view() const;

  std::uint32_t _pixelsWide;
  std::uint32_t _pixelsHigh;
  std::unique_ptr<std::uint8_t, void (*)(void*)> _bitmapData;
};

}  // namespace mrziphoto

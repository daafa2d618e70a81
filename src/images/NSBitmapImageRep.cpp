#include <cstdlib>
#include <new>

#include "../values/detail/Formatted.h"
#include "NSImage.h"
#include "detail/ImageBackend.h"

namespace mrziphoto {
namespace {

detail::Buffer zeros(std::size_t count) {
  detail::Buffer bytes(static_cast<std::uint8_t*>(std::calloc(count, 1)), std::free);
  if (!bytes && count != 0) {
    throw std::bad_alloc();
  }
  return bytes;
}

}  // namespace

const Class NSBitmapImageRep::kClass{"NSBitmapImageRep"};

NSBitmapImageRep::NSBitmapImageRep(std::uint32_t pixelsWide, std::uint32_t pixelsHigh)
    : _pixelsWide(pixelsWide), _pixelsHigh(pixelsHigh), _bitmapData(zeros(size())) {}

NSBitmapImageRep::NSBitmapImageRep(detail::Pixels pixels)
    : _pixelsWide(pixels.width), _pixelsHigh(pixels.height), _bitmapData(std::move(pixels.bytes)) {}

detail::PixelView NSBitmapImageRep::view() const {
  return {_pixelsWide, _pixelsHigh, _bitmapData.get()};
}

Ref<NSBitmapImageRep> NSBitmapImageRep::scaledToPixels(std::uint32_t wide,
                                                       std::uint32_t high) const {
  const detail::ImageBackend* backend = detail::ImageBackend::shared();
  if (backend == nullptr || size() == 0 || !NSImage::canHoldPixels(wide, high)) {
    return {};
  }
  std::string failure;
  detail::Pixels pixels = backend->scale(view(), wide, high, failure);
  return pixels.bytes ? make<NSBitmapImageRep>(std::move(pixels)) : nullptr;
}

std::optional<Data> NSBitmapImageRep::pngData() const {
  const detail::ImageBackend* backend = detail::ImageBackend::shared();
  if (backend == nullptr || size() == 0) {
    return std::nullopt;
  }
  std::string failure;
  const detail::EncodedImage file = backend->encodePng(view(), failure);
  return file.bytes ? std::optional(Data::copyOf(
                          {reinterpret_cast<const char*>(file.bytes.get()), file.size}))
                    : std::nullopt;
}

std::string NSBitmapImageRep::description() const {
  return detail::formatted("<{} {} x {}>", className(), pixelsWide(), pixelsHigh());
}

}  // namespace mrziphoto

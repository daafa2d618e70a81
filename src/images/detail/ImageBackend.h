#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "../../values/Limits.h"
#include "ImageBytes.h"
#include "ImageHeader.h"

namespace mrziphoto::detail {

/// Bytes with what frees them.
using Buffer = std::unique_ptr<std::uint8_t, void (*)(void*)>;

/// A picture in memory: rows from the top, four bytes a pixel, red, green, blue and alpha, the
/// colours not multiplied by alpha.
struct Pixels {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  Buffer bytes{nullptr, nullptr};
};

/// Such a picture, owned by somebody else.
struct PixelView {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  const std::uint8_t* bytes = nullptr;
};

/// An encoded picture.
struct EncodedImage {
  std::size_t size = 0;
  Buffer bytes{nullptr, nullptr};
};

/// A picture to be decoded, and how much of it may be.
struct EncodedPicture {
  ImageBytes& bytes;
  const ImageHeader& header;
  const Limits& limits;
};

/// What decodes pictures. Nothing here throws: where there is no answer, `bytes` is empty and
/// `failure` says why.
///
/// It lives in a module of its own, which is loaded when the first picture is asked for: the
/// libraries behind it take longer to load than a small photo library takes to open.
class ImageBackend {
 public:
  ImageBackend(const ImageBackend&) = delete;
  ImageBackend& operator=(const ImageBackend&) = delete;

  /// The one that this library was built with, from any thread. nullptr, with a line in the log the
  /// first time, when it cannot be loaded; nullptr when pictures were left out of the build.
  static const ImageBackend* shared();
  /// False when pictures were left out of the build.
  static bool isBuiltIn();

  /// The size of a picture whose header tells none, in `width` and `height`. False when the file is
  /// damaged.
  virtual bool readSize(const EncodedPicture& picture, std::uint32_t& width, std::uint32_t& height,
                        std::string& failure) const = 0;
  /// The picture as it is stored.
  virtual Pixels decode(const EncodedPicture& picture, std::string& failure) const = 0;
  /// The picture drawn into that size; no more of the file is decoded than that takes.
  virtual Pixels decodeScaled(const EncodedPicture& picture, std::uint32_t width,
                              std::uint32_t height, std::string& failure) const = 0;
  /// Another picture drawn into that size.
  virtual Pixels scale(const PixelView& source, std::uint32_t width, std::uint32_t height,
                       std::string& failure) const = 0;
  virtual EncodedImage encodePng(const PixelView& source, std::string& failure) const = 0;

 protected:
  ImageBackend() = default;
  ~ImageBackend() = default;
};

/// What the module exports, and its name.
using MakeImageBackend = const ImageBackend* (*)();
inline constexpr char kMakeImageBackend[] = "mrziphotoImageBackend";

}  // namespace mrziphoto::detail

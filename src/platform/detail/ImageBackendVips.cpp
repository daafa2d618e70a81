// The module that decodes pictures, and the only source that knows libvips.

#include <algorithm>
#include <array>
#include <utility>
#include <vips/vips.h>

#include "../Export.h"
#include "ImageBackend.h"

namespace mrziphoto::detail {
namespace {

using LoadFunction = int (*)(const char* path, VipsImage** out, ...);

/// How a format is opened. Files are opened as what their first bytes say, and the path is taken to
/// the letter: libvips itself would look for options in it.
struct Loader {
  ImageFormat format;
  LoadFunction load;
};
constexpr std::array kLoaders{
    Loader{ImageFormat::jpeg, vips_jpegload}, Loader{ImageFormat::png, vips_pngload},
    Loader{ImageFormat::gif, vips_gifload},   Loader{ImageFormat::tiff, vips_tiffload},
    Loader{ImageFormat::webp, vips_webpload}, Loader{ImageFormat::heif, vips_heifload},
};

/// An image of libvips, owned.
class Image {
 public:
  explicit Image(VipsImage* image) : _image(image) {}
  Image(Image&& other) noexcept : _image(std::exchange(other._image, nullptr)) {}
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;
  ~Image() { g_clear_object(&_image); }

  [[nodiscard]] VipsImage* get() const { return _image; }
  explicit operator bool() const { return _image != nullptr; }
  /// Replaces the image by what `operation(in, &out)` makes of it, if there is one.
  template <class Operation>
  void become(Operation&& operation) {
    VipsImage* out = nullptr;
    if (_image != nullptr && operation(_image, &out) != 0) {
      g_clear_object(&out);
    }
    g_clear_object(&_image);
    _image = out;
  }

 private:
  VipsImage* _image = nullptr;
};

/// What libvips has collected about failures, in one line; the collection is empty afterwards.
std::string takeFailure() {
  std::string text = vips_error_buffer();
  vips_error_clear();
  while (!text.empty() && text.back() == '\n') {
    text.pop_back();
  }
  std::replace(text.begin(), text.end(), '\n', ';');
  return text.empty() ? "the decoder gives no reason" : text;
}

LoadFunction loaderOf(ImageFormat format) {
  const auto* const row =
      std::find_if(kLoaders.begin(), kLoaders.end(),
                   [format](const Loader& each) { return each.format == format; });
  return row->load;
}

/// The picture, unless it turns out larger than its header said and than may be: frames may reach
/// beyond the picture that they belong to, and fields of a header may be there twice.
Image bounded(VipsImage* opened, ImageHeader header) {
  Image image(opened);
  if (image) {
    header.width = static_cast<std::uint32_t>(vips_image_get_width(opened));
    header.height = static_cast<std::uint32_t>(vips_image_get_height(opened));
    if (header.heldBytesPerPixel != 0) {
      header.heldBytesPerPixel = std::max(
          header.heldBytesPerPixel, static_cast<std::uint32_t>(VIPS_IMAGE_SIZEOF_PEL(opened)));
    }
    if (isTooLarge(header)) {
      vips_error("mrziphoto", "too large an image: %u x %u pixels", header.width, header.height);
      return Image(nullptr);
    }
  }
  return image;
}

Image open(const std::string& path, const ImageHeader& header) {
  VipsImage* out = nullptr;
  loaderOf(header.format)(path.c_str(), &out, "access", VIPS_ACCESS_SEQUENTIAL, nullptr);
  return bounded(out, header);
}

/// A JPEG decoded at a fraction of its size, which saves nearly all of the work. A factor of two is
/// left for the drawing, whose filter is finer.
Image openReduced(const std::string& path, const ImageHeader& header, std::uint32_t width,
                  std::uint32_t height) {
  if (header.format != ImageFormat::jpeg) {
    return open(path, header);
  }
  int shrink = 1;
  while (shrink < 8 && header.width / (shrink * 4) >= width &&
         header.height / (shrink * 4) >= height) {
    shrink *= 2;
  }
  VipsImage* out = nullptr;
  vips_jpegload(path.c_str(), &out, "access", VIPS_ACCESS_SEQUENTIAL, "shrink", shrink, nullptr);
  return bounded(out, header);
}

/// Four bands of 8 bits: red, green, blue and alpha.
void makeRgba(Image& image) {
  image.become([](VipsImage* in, VipsImage** out) {
    return vips_colourspace(in, out, VIPS_INTERPRETATION_sRGB, nullptr);
  });
  image.become([](VipsImage* in, VipsImage** out) {
    return vips_image_hasalpha(in) != 0 ? vips_copy(in, out, nullptr)
                                        : vips_addalpha(in, out, nullptr);
  });
  image.become([](VipsImage* in, VipsImage** out) { return vips_cast_uchar(in, out, nullptr); });
}

Pixels pixelsOf(Image& image, std::string& failure) {
  makeRgba(image);
  Pixels result;
  if (image && vips_image_get_bands(image.get()) == 4) {
    std::size_t size = 0;
    auto* const bytes = static_cast<std::uint8_t*>(vips_image_write_to_memory(image.get(), &size));
    result.width = static_cast<std::uint32_t>(vips_image_get_width(image.get()));
    result.height = static_cast<std::uint32_t>(vips_image_get_height(image.get()));
    result.bytes = {bytes, g_free};
  }
  if (!result.bytes) {
    failure = takeFailure();
  }
  return result;
}

void drawInto(Image& image, std::uint32_t width, std::uint32_t height) {
  image.become([=](VipsImage* in, VipsImage** out) {
    return vips_thumbnail_image(in, out, static_cast<int>(width), "height",
                                static_cast<int>(height), "size", VIPS_SIZE_FORCE, "no_rotate",
                                TRUE, nullptr);
  });
}

/// The picture without a copy; it must outlive the image.
Image imageOf(const PixelView& source) {
  constexpr std::size_t kBands = 4;
  Image image(vips_image_new_from_memory(
      source.bytes, std::size_t{source.width} * source.height * kBands,
      static_cast<int>(source.width), static_cast<int>(source.height), kBands, VIPS_FORMAT_UCHAR));
  image.become([](VipsImage* in, VipsImage** out) {
    return vips_copy(in, out, "interpretation", VIPS_INTERPRETATION_sRGB, nullptr);
  });
  return image;
}

class VipsBackend final : public ImageBackend {
 public:
  bool readSize(const std::string& path, ImageHeader& header, std::string& failure) const override {
    const Image image = open(path, header);
    if (!image) {
      failure = takeFailure();
      return false;
    }
    header.width = static_cast<std::uint32_t>(vips_image_get_width(image.get()));
    header.height = static_cast<std::uint32_t>(vips_image_get_height(image.get()));
    return true;
  }

  Pixels decode(const std::string& path, const ImageHeader& header,
                std::string& failure) const override {
    Image image = open(path, header);
    return pixelsOf(image, failure);
  }

  Pixels decodeScaled(const std::string& path, const ImageHeader& header, std::uint32_t width,
                      std::uint32_t height, std::string& failure) const override {
    Image image = openReduced(path, header, width, height);
    drawInto(image, width, height);
    return pixelsOf(image, failure);
  }

  Pixels scale(const PixelView& source, std::uint32_t width, std::uint32_t height,
               std::string& failure) const override {
    Image image = imageOf(source);
    drawInto(image, width, height);
    return pixelsOf(image, failure);
  }

  EncodedImage encodePng(const PixelView& source, std::string& failure) const override {
    const Image image = imageOf(source);
    void* bytes = nullptr;
    EncodedImage result;
    if (!image || vips_pngsave_buffer(image.get(), &bytes, &result.size, nullptr) != 0) {
      failure = takeFailure();
      return {};
    }
    result.bytes = {static_cast<std::uint8_t*>(bytes), g_free};
    return result;
  }
};

/// Once in the life of the process.
bool start() {
  if (VIPS_INIT("mrziphoto") != 0) {
    return false;
  }
  // Only loaders that are meant for files from anywhere.
  vips_block_untrusted_set(TRUE);
  // Each picture is asked for once; what libvips would keep of it is memory that grows with their
  // number.
  vips_cache_set_max(0);
  vips_cache_set_max_mem(0);
  vips_cache_set_max_files(0);
  // A picture is decoded in one line of work; more threads would only wait for it.
  vips_concurrency_set(1);
  // libvips writes to standard error what it also collects for us.
  g_log_set_handler(
      "VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_INFO),
      [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr);
  return true;
}

}  // namespace
}  // namespace mrziphoto::detail

extern "C" MRZIPHOTO_EXPORT const mrziphoto::detail::ImageBackend* mrziphotoImageBackend() {
  using namespace mrziphoto::detail;
  static const VipsBackend backend;
  static const bool isStarted = start();
  return isStarted ? &backend : nullptr;
}

// The module that decodes pictures, and the only source that knows libvips.

#include <algorithm>
#include <array>
#include <utility>
#include <vips/vips.h>
// Needs the header above.
#include <vips/vector.h>

#include "../../values/Export.h"
#include "ImageBackend.h"

namespace mrziphoto::detail {
namespace {

using LoadFunction = int (*)(VipsSource* source, VipsImage** out, ...);

/// How a format is opened. Files are opened as what their first bytes say.
struct Loader {
  ImageFormat format;
  LoadFunction load;
};
constexpr std::array kLoaders{
    Loader{ImageFormat::jpeg, vips_jpegload_source},
    Loader{ImageFormat::png, vips_pngload_source},
    Loader{ImageFormat::gif, vips_gifload_source},
    Loader{ImageFormat::tiff, vips_tiffload_source},
    Loader{ImageFormat::webp, vips_webpload_source},
    Loader{ImageFormat::heif, vips_heifload_source},
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

/// What libvips reads a picture from. It must outlive the images that read from it.
class Source {
 public:
  explicit Source(const EncodedPicture& picture)
      : _picture(picture), _source(vips_source_custom_new()) {
    g_signal_connect(_source, "read", G_CALLBACK(read), this);
    g_signal_connect(_source, "seek", G_CALLBACK(seek), this);
  }
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;
  ~Source() { g_object_unref(_source); }

  [[nodiscard]] const EncodedPicture& picture() const { return _picture; }
  /// The picture, unless it turns out larger than its header said and than may be: frames may reach
  /// beyond the picture that they belong to, and fields of a header may be there twice.
  template <class... Options>
  [[nodiscard]] Image open(Options... options) const {
    if (const std::string& failure = _picture.bytes.failure(); !failure.empty()) {
      vips_error("mrziphoto", "%s", failure.c_str());
      return Image(nullptr);
    }
    VipsImage* out = nullptr;
    loaderOf(_picture.header.format)(VIPS_SOURCE(_source), &out, "access", VIPS_ACCESS_SEQUENTIAL,
                                     options..., nullptr);
    Image image(out);
    if (image) {
      ImageHeader header = _picture.header;
      header.width = static_cast<std::uint32_t>(vips_image_get_width(out));
      header.height = static_cast<std::uint32_t>(vips_image_get_height(out));
      if (header.heldBytesPerPixel != 0) {
        header.heldBytesPerPixel = std::max(header.heldBytesPerPixel,
                                            static_cast<std::uint32_t>(VIPS_IMAGE_SIZEOF_PEL(out)));
      }
      if (isTooLarge(header, _picture.limits)) {
        vips_error("mrziphoto", "too large an image: %u x %u pixels", header.width, header.height);
        return Image(nullptr);
      }
    }
    return image;
  }

 private:
  static gint64 read(VipsSourceCustom* /*source*/, void* destination, gint64 count, Source* self) {
    const std::size_t got = self->_picture.bytes.read(
        self->_position, static_cast<char*>(destination), static_cast<std::size_t>(count));
    self->_position += got;
    return static_cast<gint64>(got);
  }

  static gint64 seek(VipsSourceCustom* /*source*/, gint64 offset, int whence, Source* self) {
    const std::uint64_t from = whence == SEEK_SET   ? 0
                               : whence == SEEK_CUR ? self->_position
                                                    : self->_picture.bytes.size();
    gint64 position = 0;
    if (__builtin_add_overflow(static_cast<gint64>(from), offset, &position) || position < 0) {
      return -1;
    }
    self->_position = static_cast<std::uint64_t>(position);
    return position;
  }

  const EncodedPicture& _picture;
  VipsSourceCustom* _source;
  std::uint64_t _position = 0;
};

/// A JPEG decoded at a fraction of its size, which saves nearly all of the work. A factor of two is
/// left for the drawing, whose filter is finer.
Image openReduced(const Source& source, std::uint32_t width, std::uint32_t height) {
  const ImageHeader& header = source.picture().header;
  if (header.format != ImageFormat::jpeg) {
    return source.open();
  }
  int shrink = 1;
  while (shrink < 8 && header.width / (shrink * 4) >= width &&
         header.height / (shrink * 4) >= height) {
    shrink *= 2;
  }
  return source.open("shrink", shrink);
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

std::uint64_t pixelCount(const Image& image) {
  return static_cast<std::uint64_t>(vips_image_get_width(image.get())) *
         static_cast<std::uint64_t>(vips_image_get_height(image.get()));
}

/// The pixels of an image of such bands.
Pixels pixelsOf(const Image& image, std::string& failure) {
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

/// The same for a picture that is decoded meanwhile, which is stopped when it takes too long.
/// Decoders make up what they cannot read.
Pixels decodedPixelsOf(Image& image, ImageBytes& bytes, std::string& failure) {
  makeRgba(image);
  if (image) {
    const auto endWhenLate = [](VipsImage* picture, VipsProgress* /*progress*/, ImageBytes* from) {
      if (from->isLate()) {
        vips_image_set_kill(picture, TRUE);
      }
    };
    vips_image_set_progress(image.get(), TRUE);
    g_signal_connect(
        image.get(), "eval",
        G_CALLBACK(+static_cast<void (*)(VipsImage*, VipsProgress*, ImageBytes*)>(endWhenLate)),
        &bytes);
  }
  Pixels result = pixelsOf(image, failure);
  if (!bytes.failure().empty()) {
    vips_error_clear();
    failure = bytes.failure();
    return {};
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
  bool readSize(const EncodedPicture& picture, std::uint32_t& width, std::uint32_t& height,
                std::string& failure) const override {
    const Source source(picture);
    const Image image = source.open();
    if (!image) {
      failure = takeFailure();
      return false;
    }
    width = static_cast<std::uint32_t>(vips_image_get_width(image.get()));
    height = static_cast<std::uint32_t>(vips_image_get_height(image.get()));
    return true;
  }

  Pixels decode(const EncodedPicture& picture, std::string& failure) const override {
    const Source source(picture);
    Image image = source.open();
    if (image && pixelCount(image) > picture.limits.bitmapPixels) {
      failure = "too large an image to be taken whole";
      return {};
    }
    return decodedPixelsOf(image, picture.bytes, failure);
  }

  Pixels decodeScaled(const EncodedPicture& picture, std::uint32_t width, std::uint32_t height,
                      std::string& failure) const override {
    const Source source(picture);
    Image image = openReduced(source, width, height);
    drawInto(image, width, height);
    return decodedPixelsOf(image, picture.bytes, failure);
  }

  Pixels scale(const PixelView& source, std::uint32_t width, std::uint32_t height,
               std::string& failure) const override {
    Image image = imageOf(source);
    drawInto(image, width, height);
    makeRgba(image);
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
  // Decoding a picture is sequential; more threads would only wait for it.
  vips_concurrency_set(1);
  // Its helper for vector instructions keeps code in files, which it makes in the user's home
  // folder or in that for temporary files; either may lie in a library.
  vips_vector_set_enabled(FALSE);
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

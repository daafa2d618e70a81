#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "../files/ReadingRules.h"
#include "../values/Data.h"
#include "../values/Export.h"
#include "../values/Object.h"
#include "NSSize.h"

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

namespace detail {
class OpenFile;
}

/// A picture: a file, which is opened only when its size or validity is asked for and decoded only
/// when its pixels are, or bitmaps that were given to it. JPEG, PNG, TIFF, GIF, WebP and, where
/// libvips has it, HEIF are read, whatever a file's name says; of files with several pictures the
/// first. How large a picture may be, and how long decoding it may take, `Limits` tells.
///
/// Nothing of what was decoded is kept, so that images may be kept by the hundred thousand; whoever
/// needs the pixels again keeps the bitmap. Pixels are answered as they are stored: neither turned
/// by what a camera block says nor converted from the colour space of a profile.
///
/// A host may derive its own kind and register it in ClassRegistry before the first photo is asked
/// for an image: a Class named "TVQAttributedImage" with `NSImage::kClass` as its superclass and a
/// `make`. Photos then answer images of that kind. What is virtual here is what is asked of one.
class MRZIPHOTO_EXPORT NSImage : public Object {
 public:
  static const Class kClass;

  NSImage();
  ~NSImage() override;

  /// False when the library was built without images. There are no plain images then.
  [[nodiscard]] static bool isSupported();
  /// An image of the file at that path, of a kind that is `NSImage` or derives from it. The file is
  /// not looked at. Nothing when the kind makes no image.
  static Ref<NSImage> initByReferencingFile(const std::string& path, const Class& kind = kClass);
  /// An image of that size without any pixels yet; nothing when the kind makes no image.
  static Ref<NSImage> initWithSize(NSSize size, const Class& kind = kClass);

  /// Makes a new instance an image of that file; false when there can be none.
  virtual bool referToFile(const std::string& path);
  /// The size that the image is drawn in, whatever the size of its bitmaps.
  virtual void setSize(NSSize size) { _size = size; }
  virtual void addRepresentation(Ref<NSBitmapImageRep> bitmap);

  /// The size that was set, else the file's in pixels; without either, and for a file that cannot
  /// be read, 0 both ways.
  [[nodiscard]] virtual NSSize size() const;
  /// True when there is something to draw: a bitmap, or a file that can be read as an image. Once
  /// decoding has failed a file counts as one that cannot, until it is another or was written to.
  [[nodiscard]] virtual bool isValid() const;
  /// The pixels as they are: the first bitmap that was added, else the file's. Nothing for an
  /// image that is not valid, and for one of more than `Limits::bitmapPixels`, which the log
  /// tells.
  [[nodiscard]] virtual Ref<NSBitmapImageRep> bitmap() const;
  /// The image drawn into a transparent bitmap of that many pixels, filling it. Nothing for an
  /// image that is not valid, for no pixels and for more than `Limits::bitmapPixels`. A large
  /// JPEG drawn small costs a fraction of decoding it.
  [[nodiscard]] virtual Ref<NSBitmapImageRep> bitmapOfPixels(std::uint32_t wide,
                                                             std::uint32_t high) const;

  /// A plain image of that size with this image drawn into it; not valid when there was nothing to
  /// draw. Nothing where the library was built without images.
  [[nodiscard]] Ref<NSImage> scaledCopy(NSSize size) const;
  /// `bitmap` as a PNG file.
  [[nodiscard]] std::optional<Data> pngData() const;

  /// The bitmaps that were added.
  [[nodiscard]] const std::vector<Ref<NSBitmapImageRep>>& representations() const {
    return _representations;
  }
  /// Why the file could not be read when it was last tried, as a sentence that names it; empty when
  /// it could, or was not tried.
  [[nodiscard]] const std::string& failure() const { return _failure; }
  /// Kept for hosts; images are not cached together here.
  void setCachedSeparately(bool separately) { _cachedSeparately = separately; }
  [[nodiscard]] bool isCachedSeparately() const { return _cachedSeparately; }

  /// True for a size of at least one pixel each way that a bitmap may have.
  [[nodiscard]] static bool canHoldPixels(std::uint64_t wide, std::uint64_t high);

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  /// "<NSImage path>", or without the path where there is no file.
  [[nodiscard]] std::string description() const override;

 private:
  struct File;
  struct Refusal;

  [[nodiscard]] std::optional<File> openFile() const;
  [[nodiscard]] bool hasReadableFile() const;
  template <class Decode>
  [[nodiscard]] Ref<NSBitmapImageRep> decodeFile(Decode&& decode) const;
  std::nullopt_t fail(std::string_view reason) const;
  std::nullopt_t refuse(const detail::OpenFile& file, std::string_view reason) const;

  std::string _path;
  std::shared_ptr<const ReadingRules> _rules;
  std::optional<NSSize> _size;
  std::vector<Ref<NSBitmapImageRep>> _representations;
  // What the file's header says, once it was read.
  mutable std::optional<NSSize> _fileSize;
  mutable std::string _failure;
  mutable std::unique_ptr<Refusal> _refusal;
  bool _cachedSeparately = false;
};

}  // namespace mrziphoto

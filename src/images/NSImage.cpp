#include "NSImage.h"

#include <cmath>
#include <memory>

#include "../files/FileFailure.h"
#include "../files/detail/OpenFile.h"
#include "../values/Limits.h"
#include "../values/Log.h"
#include "../values/detail/Formatted.h"
#include "detail/ImageBackend.h"
#include "detail/ImageBytes.h"

namespace mrziphoto {
namespace {

/// The pixels that a side has; 0 for what is no number of pixels.
std::uint32_t pixelsOf(float side) {
  return side >= 1 && side <= static_cast<float>(Limits::current().imageSide)
             ? static_cast<std::uint32_t>(std::ceil(side))
             : 0;
}

Ref<NSImage> makeOfKind(const Class& kind) {
  return kind.make != nullptr ? Ref<Object>::adopt(kind.make()).as<NSImage>() : nullptr;
}

}  // namespace

const Class NSImage::kClass{"NSImage", nullptr, 0, &makeEmpty<NSImage>};

/// A file that can be decoded.
struct NSImage::File {
  std::unique_ptr<detail::OpenFile> file;
  detail::ImageHeader header;
};

/// The file that could not be read, as it was then.
struct NSImage::Refusal {
  detail::OpenFile::Stamp stamp;
};

NSImage::NSImage() = default;
NSImage::~NSImage() = default;

bool NSImage::isSupported() { return detail::ImageBackend::isBuiltIn(); }

Ref<NSImage> NSImage::initByReferencingFile(const std::string& path, const Class& kind) {
  const Ref<NSImage> made = makeOfKind(kind);
  return made && made->referToFile(path) ? made : nullptr;
}

Ref<NSImage> NSImage::initWithSize(NSSize size, const Class& kind) {
  Ref<NSImage> made = &kind == &kClass && !isSupported() ? nullptr : makeOfKind(kind);
  if (made) {
    made->setSize(size);
  }
  return made;
}

bool NSImage::referToFile(const std::string& path) {
  _path = path;
  _rules = ReadingRules::kept();
  return isSupported();
}

void NSImage::addRepresentation(Ref<NSBitmapImageRep> bitmap) {
  if (bitmap) {
    _representations.push_back(std::move(bitmap));
  }
}

std::nullopt_t NSImage::fail(std::string_view reason) const {
  _failure = detail::formatted("'{}' {}", _path, reason);
  return std::nullopt;
}

/// The file is not tried again as long as it stays what it is.
std::nullopt_t NSImage::refuse(const detail::OpenFile& file, std::string_view reason) const {
  _fileSize.reset();
  _refusal = std::make_unique<Refusal>(Refusal{file.stamp()});
  return fail(reason);
}

std::optional<NSImage::File> NSImage::openFile() const {
  if (_path.empty()) {
    return std::nullopt;
  }
  const ReadingRules::Scope scope(_rules.get());
  FileFailure failure;
  File result{detail::OpenFile::atPath(_path, &failure), {}};
  if (!result.file) {
    return fail("cannot be opened: " + failure.reason);
  }
  if (_refusal && _refusal->stamp == result.file->stamp()) {
    return std::nullopt;
  }
  const std::optional<detail::ImageHeader> header = detail::imageHeaderOf(*result.file);
  if (!header) {
    return refuse(*result.file, "is no image that can be read");
  }
  result.header = *header;
  const Limits& limits = Limits::current();
  if (header->heldBytes > limits.decoderBytes) {
    refuse(*result.file,
           detail::formatted("is too large a file for an image that is decoded in memory: "
                             "{} bytes",
                             std::to_string(header->heldBytes)));
    log("%@", _failure);
    return std::nullopt;
  }
  if (header->format == detail::ImageFormat::heif) {
    const detail::ImageBackend* backend = detail::ImageBackend::shared();
    detail::ImageBytes bytes(*result.file, header->format, limits.decodingTime);
    std::string reason;
    if (backend == nullptr || !backend->readSize({bytes, *header, limits}, result.header.width,
                                                 result.header.height, reason)) {
      return refuse(*result.file, detail::formatted("cannot be decoded: {}", reason));
    }
  }
  if (detail::isTooLarge(result.header, limits)) {
    refuse(*result.file, detail::formatted("is too large an image: {} x {} pixels",
                                           result.header.width, result.header.height));
    log("%@", _failure);
    return std::nullopt;
  }
  _refusal.reset();
  _failure.clear();
  _fileSize =
      NSSize{static_cast<float>(result.header.width), static_cast<float>(result.header.height)};
  return result;
}

/// Once opened, a file is taken to stay what it is.
bool NSImage::hasReadableFile() const { return _fileSize.has_value() || openFile().has_value(); }

NSSize NSImage::size() const {
  if (_size) {
    return *_size;
  }
  return hasReadableFile() ? *_fileSize : NSSize{};
}

bool NSImage::isValid() const { return !_representations.empty() || hasReadableFile(); }

template <class Decode>
Ref<NSBitmapImageRep> NSImage::decodeFile(Decode&& decode) const {
  const ReadingRules::Scope scope(_rules.get());
  const std::optional<File> file = openFile();
  const detail::ImageBackend* backend = file ? detail::ImageBackend::shared() : nullptr;
  if (backend == nullptr) {
    return {};
  }
  const Limits& limits = Limits::current();
  detail::ImageBytes bytes(*file->file, file->header.format, limits.decodingTime);
  std::string reason;
  detail::Pixels pixels = decode(*backend, {bytes, file->header, limits}, reason);
  if (!pixels.bytes) {
    refuse(*file->file, detail::formatted("cannot be decoded: {}", reason));
    return {};
  }
  return make<NSBitmapImageRep>(std::move(pixels));
}

Ref<NSBitmapImageRep> NSImage::bitmap() const {
  if (!_representations.empty()) {
    return _representations.front();
  }
  if (!hasReadableFile()) {
    return {};
  }
  const std::uint32_t wide = pixelsOf(_fileSize->width);
  const std::uint32_t high = pixelsOf(_fileSize->height);
  if (!canHoldPixels(wide, high)) {
    log("'%@' is too large an image to be taken whole: %u x %u pixels", _path, wide, high);
    return {};
  }
  return decodeFile([](const detail::ImageBackend& backend, const detail::EncodedPicture& picture,
                       std::string& reason) { return backend.decode(picture, reason); });
}

Ref<NSBitmapImageRep> NSImage::bitmapOfPixels(std::uint32_t wide, std::uint32_t high) const {
  if (!_representations.empty()) {
    return _representations.front()->scaledToPixels(wide, high);
  }
  if (!canHoldPixels(wide, high)) {
    return {};
  }
  return decodeFile(
      [=](const detail::ImageBackend& backend, const detail::EncodedPicture& picture,
          std::string& reason) { return backend.decodeScaled(picture, wide, high, reason); });
}

Ref<NSImage> NSImage::scaledCopy(NSSize size) const {
  Ref<NSImage> copy = initWithSize(size);
  if (copy) {
    copy->addRepresentation(bitmapOfPixels(pixelsOf(size.width), pixelsOf(size.height)));
  }
  return copy;
}

std::optional<Data> NSImage::pngData() const {
  const Ref<NSBitmapImageRep> pixels = bitmap();
  return pixels ? pixels->pngData() : std::nullopt;
}

bool NSImage::canHoldPixels(std::uint64_t wide, std::uint64_t high) {
  const Limits& limits = Limits::current();
  return wide != 0 && high != 0 && wide <= limits.imageSide && high <= limits.imageSide &&
         wide * high <= limits.bitmapPixels;
}

std::string NSImage::description() const {
  return _path.empty() ? Object::description() : detail::formatted("<{} {}>", className(), _path);
}

}  // namespace mrziphoto

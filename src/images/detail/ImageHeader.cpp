#include "ImageHeader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>

#include "../../files/detail/OpenFile.h"

namespace mrziphoto::detail {
namespace {

using std::string_view_literals::operator""sv;

/// Reads numbers anywhere in a file through a window of it. Beyond the file's end it answers 0, and
/// `isWhole` is false from then on.
class FileNumbers {
 public:
  explicit FileNumbers(const OpenFile& file) : _file(file) {}

  /// Up to four bytes.
  std::uint32_t number(std::uint64_t offset, std::size_t size, std::endian order) {
    const std::string_view bytes = bytesAt(offset, size);
    std::uint32_t result = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      const std::size_t from = order == std::endian::big ? i : bytes.size() - 1 - i;
      result = result << 8 | static_cast<std::uint8_t>(bytes[from]);
    }
    return result;
  }
  std::uint32_t big(std::uint64_t offset, std::size_t size) {
    return number(offset, size, std::endian::big);
  }
  std::uint32_t little(std::uint64_t offset, std::size_t size) {
    return number(offset, size, std::endian::little);
  }
  bool hasText(std::uint64_t offset, std::string_view text) {
    return bytesAt(offset, text.size()) == text;
  }
  [[nodiscard]] bool isWhole() const { return _isWhole; }
  [[nodiscard]] std::uint64_t fileSize() const { return _file.size(); }

 private:
  static constexpr std::size_t kWindowSize = 4096;

  std::string_view bytesAt(std::uint64_t offset, std::size_t size) {
    if (offset < _start || offset - _start + size > _window.size()) {
      _start = offset;
      _window = _file.read(offset, kWindowSize);
    }
    const std::string_view bytes = _window.bytes().substr(
        std::min<std::size_t>(static_cast<std::size_t>(offset - _start), _window.size()), size);
    _isWhole = _isWhole && bytes.size() == size;
    return bytes.size() == size ? bytes : std::string_view();
  }

  const OpenFile& _file;
  Data _window;
  std::uint64_t _start = 0;
  bool _isWhole = true;
};

/// Completes a header of which the format is known; false for a damaged file.
using ReadSize = bool (*)(FileNumbers& file, ImageHeader& header);

constexpr std::uint8_t kStartOfScan = 0xDA;
// More than the largest camera block, colour profile and preview together.
constexpr std::uint64_t kLongestJpegHeader = std::uint64_t{32} << 20;

/// Whether a marker begins a frame, which tells the size; three codes of that row mean other
/// things.
constexpr bool beginsFrame(std::uint32_t marker) {
  return (marker & 0xF0) == 0xC0 && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}
/// Markers that stand alone; all others are followed by a size.
constexpr bool standsAlone(std::uint32_t marker) {
  return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD9);
}
/// Progressive frames are those whose code ends in these bits.
constexpr bool isProgressive(std::uint32_t marker) { return (marker & 3) == 2; }

// What decoders keep of a pixel: a coefficient for each component of a JPEG; the picture and the
// one before it; red, green, blue and alpha.
constexpr std::uint32_t kBytesOfCoefficient = 2;
constexpr std::uint32_t kBytesOfGif = 8;
constexpr std::uint32_t kBytesOfRgba = 4;

bool readJpegSize(FileNumbers& file, ImageHeader& header) {
  std::uint32_t components = 0;
  std::uint64_t offset = 2;
  while (file.isWhole() && offset < kLongestJpegHeader) {
    const std::uint32_t marker = file.big(offset + 1, 1);
    if (file.big(offset, 1) != 0xFF || marker == 0xFF || marker == 0) {
      ++offset;  // a fill byte, or one that is out of place, which decoders pass over
      continue;
    }
    if (standsAlone(marker)) {
      offset += 2;
      continue;
    }
    const std::uint32_t size = file.big(offset + 2, 2);
    if (size < 2) {
      return false;
    }
    if (beginsFrame(marker)) {
      header.height = file.big(offset + 5, 2);
      header.width = file.big(offset + 7, 2);
      components = file.big(offset + 9, 1);
      header.heldBytesPerPixel = isProgressive(marker) ? components * kBytesOfCoefficient : 0;
    } else if (marker == kStartOfScan) {
      // Components that come one after the other are complete only when the last was read.
      if (file.big(offset + 4, 1) < components) {
        header.heldBytesPerPixel = components * kBytesOfCoefficient;
      }
      return components != 0;
    }
    offset += 2 + size;
  }
  return false;
}

bool readPngSize(FileNumbers& file, ImageHeader& header) {
  header.width = file.big(16, 4);
  header.height = file.big(20, 4);
  const bool isInterlaced = file.big(28, 1) != 0;
  header.heldBytesPerPixel = isInterlaced ? 2 * kBytesOfRgba : 0;  // samples may have 16 bits
  return file.hasText(12, "IHDR");
}

bool readGifSize(FileNumbers& file, ImageHeader& header) {
  header.width = file.little(6, 2);
  header.height = file.little(8, 2);
  header.heldBytesPerPixel = kBytesOfGif;
  header.heldBytes = file.fileSize();
  return true;
}

// Fields of a TIFF directory, and the type of their values.
constexpr std::uint32_t kTiffWidth = 256;
constexpr std::uint32_t kTiffHeight = 257;
constexpr std::uint32_t kTiffBitsPerSample = 258;
constexpr std::uint32_t kTiffSamplesPerPixel = 277;
constexpr std::uint32_t kTiffShort = 3;
constexpr std::uint32_t kMostBitsPerSample = 64;
constexpr std::uint32_t kMostSamplesPerPixel = 8;

bool readTiffSize(FileNumbers& file, ImageHeader& header) {
  const std::endian order = file.hasText(0, "II") ? std::endian::little : std::endian::big;
  const std::uint64_t directory = file.number(4, 4, order);
  const std::uint32_t count = file.number(directory, 2, order);
  std::uint32_t samples = 1;
  std::uint32_t bits = 1;
  for (std::uint32_t i = 0; i < count && file.isWhole(); ++i) {
    const std::uint64_t field = directory + 2 + std::uint64_t{i} * 12;
    const std::size_t size = file.number(field + 2, 2, order) == kTiffShort ? 2 : 4;
    const bool isInPlace = file.number(field + 4, 4, order) * std::uint64_t{size} <= 4;
    const auto firstValue = [&] {
      return file.number(isInPlace ? field + 8 : file.number(field + 8, 4, order), size, order);
    };
    switch (file.number(field, 2, order)) {
      case kTiffWidth:
        header.width = firstValue();
        break;
      case kTiffHeight:
        header.height = firstValue();
        break;
      case kTiffBitsPerSample:
        bits = firstValue();
        break;
      case kTiffSamplesPerPixel:
        samples = firstValue();
        break;
      default:
        break;
    }
  }
  // The picture may be one single strip.
  header.heldBytesPerPixel = (samples * bits + 7) / 8;
  return samples <= kMostSamplesPerPixel && bits <= kMostBitsPerSample;
}

constexpr std::uint32_t kWebp14Bits = 0x3FFF;

bool readWebpSize(FileNumbers& file, ImageHeader& header) {
  header.heldBytesPerPixel = kBytesOfRgba;
  header.heldBytes = file.fileSize();
  if (file.hasText(12, "VP8X")) {
    header.width = file.little(24, 3) + 1;
    header.height = file.little(27, 3) + 1;
    return true;
  }
  if (file.hasText(12, "VP8L")) {
    const std::uint32_t bits = file.little(21, 4);
    header.width = (bits & kWebp14Bits) + 1;
    header.height = (bits >> 14 & kWebp14Bits) + 1;
    return file.big(20, 1) == 0x2F;
  }
  header.width = file.little(26, 2) & kWebp14Bits;
  header.height = file.little(28, 2) & kWebp14Bits;
  return file.hasText(12, "VP8 ") && file.hasText(23, "\x9D\x01\x2A");
}

/// The size stands in boxes anywhere in the file, and turns are part of it.
bool leaveSizeToDecoder(FileNumbers& file, ImageHeader& header) {
  header.heldBytes = file.fileSize();
  header.heldBytesPerPixel = 2 * kBytesOfRgba;  // samples may have 10 or 12 bits
  return true;
}

/// What stands at the beginning of a file of some format, in one piece or in two.
struct Signature {
  ImageFormat format;
  std::size_t offset;
  std::string_view text;
  std::string_view secondText;  // at `kSecondText`
  ReadSize readSize;
};
constexpr std::size_t kSecondText = 8;

// AVIF, a relative of HEIF, is left out: no camera wrote it in the days of these libraries, and its
// decoder loses memory over broken files.
constexpr std::array kSignatures{
    Signature{ImageFormat::jpeg, 0, "\xFF\xD8\xFF"sv, "", readJpegSize},
    Signature{ImageFormat::png, 0, "\x89PNG\r\n\x1A\n"sv, "", readPngSize},
    Signature{ImageFormat::gif, 0, "GIF87a"sv, "", readGifSize},
    Signature{ImageFormat::gif, 0, "GIF89a"sv, "", readGifSize},
    Signature{ImageFormat::tiff, 0, "II*\0"sv, "", readTiffSize},
    Signature{ImageFormat::tiff, 0, "MM\0*"sv, "", readTiffSize},
    Signature{ImageFormat::webp, 0, "RIFF"sv, "WEBP", readWebpSize},
    Signature{ImageFormat::heif, 4, "ftyp"sv, "heic", leaveSizeToDecoder},
    Signature{ImageFormat::heif, 4, "ftyp"sv, "heix", leaveSizeToDecoder},
    Signature{ImageFormat::heif, 4, "ftyp"sv, "mif1", leaveSizeToDecoder},
};

}  // namespace

std::optional<ImageHeader> imageHeaderOf(const OpenFile& openFile) {
  FileNumbers file(openFile);
  for (const Signature& each : kSignatures) {
    if (file.hasText(each.offset, each.text) && file.hasText(kSecondText, each.secondText)) {
      ImageHeader header{.format = each.format};
      const bool isSound = each.readSize(file, header) && file.isWhole();
      const bool hasSize = header.width != 0 && header.height != 0;
      return isSound && (hasSize || each.format == ImageFormat::heif) ? std::optional(header)
                                                                      : std::nullopt;
    }
  }
  return std::nullopt;
}

}  // namespace mrziphoto::detail

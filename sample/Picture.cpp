#include "sample/Picture.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "sample/JpegWriter.h"

namespace mrziphoto::sample {
namespace {

// Digits of three by five blocks, a row a number, the leftmost block the highest bit.
constexpr std::size_t kDigitWidth = 3;
constexpr std::size_t kDigitHeight = 5;
constexpr std::array<std::array<std::uint8_t, kDigitHeight>, 10> kDigits{{
    {7, 5, 5, 5, 7},
    {2, 6, 2, 2, 7},
    {7, 1, 7, 4, 7},
    {7, 1, 7, 1, 7},
    {5, 5, 7, 1, 1},
    {7, 4, 7, 1, 7},
    {7, 4, 7, 5, 7},
    {7, 1, 1, 1, 1},
    {7, 5, 7, 5, 7},
    {7, 5, 7, 1, 7},
}};

constexpr int kWhite = 255;

// The colours run along the diagonal, so that every row is a piece of one and the same strip.
void drawGradient(Picture& picture, std::uint64_t colours) {
  const std::size_t length = picture.width() + picture.height();
  std::vector<std::uint8_t> strip;
  strip.reserve(length * Picture::kSamples);
  for (std::size_t way = 0; way < length; ++way) {
    for (std::size_t i = 0; i < Picture::kSamples; ++i) {
      const std::size_t from = colours >> (8 * i) & 0xFF;
      const std::size_t to = colours >> (8 * (i + Picture::kSamples)) & 0xFF;
      strip.push_back(static_cast<std::uint8_t>((from * (length - way) + to * way) / length));
    }
  }
  for (std::size_t y = 0; y < picture.height(); ++y) {
    std::memcpy(picture.row(y), &strip[y * Picture::kSamples], picture.width() * Picture::kSamples);
  }
}

void fill(Picture& picture, std::size_t left, std::size_t top, std::size_t right,
          std::size_t bottom) {
  const std::size_t end = std::min(right, picture.width());
  for (std::size_t y = top; y < std::min(bottom, picture.height()) && left < end; ++y) {
    std::memset(picture.row(y) + left * Picture::kSamples, kWhite,
                (end - left) * Picture::kSamples);
  }
}

// Counted in blocks: every digit takes one more column, which keeps it off the next.
void drawNumber(Picture& picture, std::uint32_t number) {
  const std::string digits = std::to_string(number);
  const std::size_t columns = digits.size() * (kDigitWidth + 1) + 1;
  const std::size_t block = std::max<std::size_t>(
      1, std::min(picture.width() / columns, picture.height() / (kDigitHeight + 2)));
  const std::size_t left = (picture.width() - std::min(picture.width(), columns * block)) / 2;
  const std::size_t top = (picture.height() - kDigitHeight * block) / 2;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    const auto& rows = kDigits[static_cast<std::size_t>(digits[i] - '0')];
    for (std::size_t place = 0; place < kDigitWidth * kDigitHeight; ++place) {
      const std::size_t column = place % kDigitWidth;
      const std::size_t row = place / kDigitWidth;
      if ((rows[row] >> (kDigitWidth - 1 - column) & 1) != 0) {
        const std::size_t x = left + (i * (kDigitWidth + 1) + 1 + column) * block;
        const std::size_t y = top + row * block;
        fill(picture, x, y, x + block, y + block);
      }
    }
  }
}

void drawFrame(Picture& picture) {
  const std::size_t width = picture.width();
  const std::size_t height = picture.height();
  const std::size_t thickness = std::max<std::size_t>(1, std::min(width, height) / 32);
  fill(picture, 0, 0, width, thickness);
  fill(picture, 0, height - thickness, width, height);
  fill(picture, 0, 0, thickness, height);
  fill(picture, width - thickness, 0, width, height);
}

/// A file in memory, whose bytes can be had once it is closed.
class MemoryFile {
 public:
  MemoryFile() : _stream(::open_memstream(&_bytes, &_size)) {}
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() {
    close();
    std::free(_bytes);
  }

  [[nodiscard]] std::FILE* stream() const { return _stream; }
  std::string_view close() {
    if (std::FILE* stream = std::exchange(_stream, nullptr); stream != nullptr) {
      std::fclose(stream);
    }
    return {_bytes, _size};
  }

 private:
  char* _bytes = nullptr;
  std::size_t _size = 0;
  std::FILE* _stream;
};

}  // namespace

Picture drawPicture(const PictureSubject& subject, std::size_t width, std::size_t height) {
  Picture picture(width, height);
  drawGradient(picture, subject.colours);
  drawNumber(picture, subject.number);
  if (subject.isEdited) {
    drawFrame(picture);
  }
  return picture;
}

std::string jpegFile(const Picture& picture, std::string_view exif) {
  constexpr int kQuality = 85;
  MemoryFile file;
  if (file.stream() == nullptr) {
    throw std::bad_alloc();
  }
  JpegWriter writer(file.stream(), picture.width(), picture.height());
  if (!writer.begin(kQuality, exif) || !writer.writeRows(picture.samples()) || !writer.finish()) {
    throw std::bad_alloc();
  }
  return std::string(file.close());
}

}  // namespace mrziphoto::sample

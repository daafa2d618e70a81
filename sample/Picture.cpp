#include "sample/Picture.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <jpeglib.h>

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

// The JPEG library reports a failure by a call that must not come back. The only one that writing
// to memory knows is a lack of memory.
struct ErrorManager {
  jpeg_error_mgr manager;  // first, so that the library's pointer to it is one to the whole
  std::jmp_buf failed;
};

[[noreturn]] void jumpOut(j_common_ptr compressor) {
  std::longjmp(reinterpret_cast<ErrorManager*>(compressor->err)->failed, 1);
}

struct JpegBytes {
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
};

// Holds nothing that a jump could leave behind.
bool compress(const Picture& picture, std::string_view exif, JpegBytes& result) {
  constexpr int kQuality = 85;
  jpeg_compress_struct compressor;
  ErrorManager errors;
  compressor.err = jpeg_std_error(&errors.manager);
  errors.manager.error_exit = jumpOut;
  if (setjmp(errors.failed) != 0) {
    jpeg_destroy_compress(&compressor);
    return false;
  }
  jpeg_create_compress(&compressor);
  jpeg_mem_dest(&compressor, &result.bytes, &result.size);
  compressor.image_width = static_cast<JDIMENSION>(picture.width());
  compressor.image_height = static_cast<JDIMENSION>(picture.height());
  compressor.input_components = static_cast<int>(Picture::kSamples);
  compressor.in_color_space = JCS_RGB;
  jpeg_set_defaults(&compressor);
  jpeg_set_quality(&compressor, kQuality, TRUE);
  jpeg_start_compress(&compressor, TRUE);
  if (!exif.empty()) {
    jpeg_write_marker(&compressor, JPEG_APP0 + 1, reinterpret_cast<const JOCTET*>(exif.data()),
                      static_cast<unsigned>(exif.size()));
  }
  for (std::size_t y = 0; y < picture.height(); ++y) {
    JSAMPROW row = const_cast<JSAMPROW>(picture.row(y));
    jpeg_write_scanlines(&compressor, &row, 1);
  }
  jpeg_finish_compress(&compressor);
  jpeg_destroy_compress(&compressor);
  return true;
}

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
  JpegBytes result;
  const bool succeeded = compress(picture, exif, result);
  std::string file;
  if (succeeded) {
    file.assign(reinterpret_cast<const char*>(result.bytes), result.size);
  }
  std::free(result.bytes);
  if (!succeeded) {
    throw std::bad_alloc();
  }
  return file;
}

}  // namespace mrziphoto::sample

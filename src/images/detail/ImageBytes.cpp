#include "ImageBytes.h"

#include <algorithm>
#include <bit>
#include <string_view>

#include "../../files/detail/OpenFile.h"
#include "../../values/detail/Formatted.h"

namespace mrziphoto::detail {
namespace {

constexpr std::uint64_t kPngSignatureSize = 8;
/// Size, name and check sum of a chunk.
constexpr std::uint64_t kPngChunkFrame = 12;
constexpr std::size_t kPngNameSize = 4;
/// Programs put the chunks that are left out into a few places.
constexpr std::size_t kMostPieces = 1000;

constexpr std::string_view kCutShort = "the file has become shorter, or cannot be read to its end";

/// A capital letter says that there is no picture without the chunk.
bool isNeeded(std::string_view chunk) {
  return !chunk.empty() && ((chunk.front() & 0x20) == 0 || chunk == "tRNS");
}

}  // namespace

ImageBytes::ImageBytes(const OpenFile& file, ImageFormat format, std::chrono::milliseconds time)
    : _file(file), _time(time) {
  if (format == ImageFormat::png) {
    addPngChunks();
  } else if (format == ImageFormat::heif) {
    _size = file.size();
    _kept = file.read(0, static_cast<std::size_t>(_size));
    if (_kept->size() != _size) {
      _failure = kCutShort;
    }
  } else {
    add(0, file.size());
  }
}

void ImageBytes::add(std::uint64_t offset, std::uint64_t size) {
  if (!_pieces.empty() && _pieces.back().offset + _pieces.back().size == offset) {
    _pieces.back().size += size;
  } else {
    _pieces.push_back({_size, offset, size});
  }
  _size += size;
}

void ImageBytes::addPngChunks() {
  std::uint64_t offset = std::min(kPngSignatureSize, _file.size());
  add(0, offset);
  while (offset < _file.size() && !ImageBytes::isLate()) {
    const std::uint64_t left = _file.size() - offset;
    const Data frame = _file.read(offset, kPngChunkFrame);
    std::uint64_t size = 0;
    for (const char each : frame.bytes().substr(0, sizeof(std::uint32_t))) {
      size = size << 8 | static_cast<std::uint8_t>(each);
    }
    size = std::min(size + kPngChunkFrame, left);
    const std::string_view name = frame.slice(sizeof(std::uint32_t), kPngNameSize).bytes();
    if (isNeeded(name)) {
      add(offset, size);
    }
    if (_pieces.size() > kMostPieces) {
      _failure = "it has too many chunks";
    }
    offset = name == "IEND" ? _file.size() : offset + size;
  }
}

std::size_t ImageBytes::read(std::uint64_t offset, char* destination, std::size_t count) {
  if (_kept) {
    const std::string_view bytes = _kept->slice(static_cast<std::size_t>(offset), count).bytes();
    std::ranges::copy(bytes, destination);
    return bytes.size();
  }
  if (!_failure.empty()) {
    return 0;
  }
  std::size_t done = 0;
  auto piece = std::ranges::upper_bound(_pieces, offset, {}, &Piece::start);
  for (piece -= piece == _pieces.begin() ? 0 : 1; piece != _pieces.end(); ++piece) {
    const std::uint64_t into = offset + done - piece->start;
    if (done == count || into >= piece->size) {
      break;
    }
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(count - done, piece->size - into));
    if (isLate() || _file.readInto({destination + done, wanted}, piece->offset + into) != wanted) {
      if (_failure.empty()) {
        _failure = kCutShort;
      }
      return 0;
    }
    done += wanted;
  }
  return done;
}

bool ImageBytes::isLate() {
  using std::chrono::milliseconds;
  const auto taken = std::chrono::steady_clock::now() - _begin;
  if (_failure.empty() && std::chrono::duration_cast<milliseconds>(taken) >= _time) {
    _failure = formatted("it takes longer than {} milliseconds", std::to_string(_time.count()));
  }
  return !_failure.empty();
}

}  // namespace mrziphoto::detail

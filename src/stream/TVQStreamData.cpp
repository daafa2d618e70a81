#include "TVQStreamData.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "../platform/NSException.h"

namespace mrziphoto {

std::uint32_t TVQStreamData::length() const {
  return static_cast<std::uint32_t>(
      std::min<std::size_t>(_data.size(), std::numeric_limits<std::uint32_t>::max()));
}

void TVQStreamData::seekByDataOffset(std::int32_t delta) {
  const std::int64_t target = static_cast<std::int64_t>(_offset) + delta;
  _offset = static_cast<std::uint32_t>(std::clamp<std::int64_t>(
      target, 0, static_cast<std::int64_t>(std::numeric_limits<std::uint32_t>::max())));
}

std::string_view TVQStreamData::take(std::uint32_t count) {
  if (count > remaining()) {
    throw NSException(kNSRangeException,
                      format("the data ends inside a value: %u bytes wanted at offset %u of %u",
                             count, _offset, length()),
                      _offset);
  }
  const std::string_view bytes = _data.bytes().substr(_offset, count);
  _offset += count;
  return bytes;
}

bool TVQStreamData::readsBigEndian() const {
  constexpr bool kHostIsBigEndian = std::endian::native == std::endian::big;
  switch (_shouldSwapMode) {
    case opposite:
      return !kHostIsBigEndian;
    case bigEndian:
      return true;
    case littleEndian:
      return false;
    default:
      return kHostIsBigEndian;
  }
}

template <class Unsigned>
Unsigned TVQStreamData::readUnsigned() {
  const std::string_view bytes = take(sizeof(Unsigned));
  const bool fromBigEndian = readsBigEndian();
  Unsigned value = 0;
  for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
    const std::size_t at = fromBigEndian ? i : sizeof(Unsigned) - 1 - i;
    value = static_cast<Unsigned>((value << 8) | static_cast<unsigned char>(bytes[at]));
  }
  return value;
}

std::int32_t TVQStreamData::readInt() {
  return static_cast<std::int32_t>(readUnsigned<std::uint32_t>());
}

std::int16_t TVQStreamData::readShort() {
  return static_cast<std::int16_t>(readUnsigned<std::uint16_t>());
}

std::int64_t TVQStreamData::readLongLong() {
  return static_cast<std::int64_t>(readUnsigned<std::uint64_t>());
}

float TVQStreamData::readFloat() { return std::bit_cast<float>(readUnsigned<std::uint32_t>()); }

double TVQStreamData::readDouble() { return std::bit_cast<double>(readUnsigned<std::uint64_t>()); }

void TVQStreamData::readBytesCount(void* destination, std::uint32_t count) {
  const std::string_view bytes = take(count);
  if (!bytes.empty()) {
    std::memcpy(destination, bytes.data(), bytes.size());
  }
}

Data TVQStreamData::readDataWithLength(std::uint32_t count) { return {_data.owner(), take(count)}; }

}  // namespace mrziphoto

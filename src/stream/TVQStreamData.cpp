#include "TVQStreamData.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "../values/NSException.h"
#include "../values/detail/Formatted.h"

namespace mrziphoto {

TVQStreamData::TVQStreamData(Data data)
    : _data(std::move(data)),
      _length(static_cast<std::uint32_t>(
          std::min<std::size_t>(_data.size(), std::numeric_limits<std::uint32_t>::max()))) {}

void TVQStreamData::seekByDataOffset(std::int32_t delta) {
  const std::int64_t target = static_cast<std::int64_t>(_offset) + delta;
  _offset = static_cast<std::uint32_t>(std::clamp<std::int64_t>(
      target, 0, static_cast<std::int64_t>(std::numeric_limits<std::uint32_t>::max())));
}

void TVQStreamData::setShouldSwapMode(std::int32_t mode) {
  constexpr bool kHostIsBigEndian = std::endian::native == std::endian::big;
  _shouldSwapMode = mode;
  _readsSwapped = mode == opposite || (mode == bigEndian && !kHostIsBigEndian) ||
                  (mode == littleEndian && kHostIsBigEndian);
}

void TVQStreamData::failBeyondEnd(std::uint32_t count) const {
  throw NSException(
      kNSRangeException,
      detail::formatted("the data ends inside a value: {} bytes wanted at offset {} of {}", count,
                        _offset, length()),
      _offset);
}

void TVQStreamData::readBytesCount(void* destination, std::uint32_t count) {
  const std::string_view bytes = take(count);
  if (!bytes.empty()) {
    std::memcpy(destination, bytes.data(), bytes.size());
  }
}

Data TVQStreamData::dataInRange(std::uint32_t location, std::uint32_t count) const {
  TVQStreamData range(_data);
  range.seekToDataOffset(location);
  return range.readDataWithLength(count);
}

Data TVQStreamData::readDataWithLength(std::uint32_t count) { return {_data.owner(), take(count)}; }

}  // namespace mrziphoto

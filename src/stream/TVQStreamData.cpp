#include "TVQStreamData.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <span>

#include "../values/NSException.h"
#include "../values/detail/Formatted.h"
#include "detail/StreamedFile.h"

namespace mrziphoto {

TVQStreamData::TVQStreamData(Data data)
    : _data(std::move(data)),
      _window(_data.bytes().substr(0, std::numeric_limits<std::uint32_t>::max())),
      _length(static_cast<std::uint32_t>(_window.size())) {}

TVQStreamData::TVQStreamData(std::shared_ptr<StreamedFile> file)
    : _file(std::move(file)), _length(_file->size()) {}

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

void TVQStreamData::failBeyondEnd(std::uint32_t location, std::uint32_t count) const {
  throw NSException(
      kNSRangeException,
      detail::formatted("the data ends inside a value: {} bytes wanted at offset {} of {}", count,
                        location, length()),
      location);
}

std::string_view TVQStreamData::takeOutsideWindow(std::uint32_t count) {
  if (count == 0) {
    return {};  // maybe from behind the end
  }
  if (count > StreamedFile::kWindow / 2) {
    const std::string_view bytes = bytesOutsideWindow(_offset, count);
    _offset += count;
    return bytes;
  }
  _window = _file->moveTo(_offset, _windowStart);
  return take(count);
}

std::string_view TVQStreamData::bytesOutsideWindow(std::uint32_t location,
                                                   std::uint32_t count) const {
  return _file->lookAt(location, count);
}

void TVQStreamData::readBytesCount(void* destination, std::uint32_t count) {
  const std::string_view bytes = take(count);
  if (!bytes.empty()) {
    std::memcpy(destination, bytes.data(), bytes.size());
  }
}

Data TVQStreamData::piece(std::uint32_t location, std::uint32_t count) const {
  if (!_file) {
    return {_data.owner(), _data.bytes().substr(location, count)};
  }
  return Data::filled(count, [&](char* start) { _file->read(location, std::span(start, count)); });
}

Data TVQStreamData::dataInRange(std::uint32_t location, std::uint32_t count) const {
  if (count > (location < length() ? length() - location : 0)) {
    failBeyondEnd(location, count);
  }
  return count != 0 ? piece(location, count) : Data();
}

Data TVQStreamData::dataCutToRange(std::uint32_t location, std::uint32_t count) const {
  return location < length() ? piece(location, std::min(count, length() - location)) : Data();
}

Data TVQStreamData::readDataWithLength(std::uint32_t count) {
  Data bytes = dataInRange(_offset, count);
  _offset += count;
  return bytes;
}

}  // namespace mrziphoto

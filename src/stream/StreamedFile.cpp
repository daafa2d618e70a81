#include "detail/StreamedFile.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace mrziphoto {
namespace {

// What is asked once more mostly lies this near.
constexpr std::uint32_t kBehind = 4096;

}  // namespace

StreamedFile::StreamedFile(std::unique_ptr<detail::OpenFile> file, std::string path)
    : _file(std::move(file)),
      _path(std::move(path)),
      _size(static_cast<std::uint32_t>(
          std::min<std::uint64_t>(_file->size(), std::numeric_limits<std::uint32_t>::max()))),
      _window(std::min(_size, kWindow)) {}

std::string_view StreamedFile::moveTo(std::uint32_t offset, std::uint32_t& start) {
  start = offset - std::min(offset, kBehind);
  const std::size_t count = std::min<std::size_t>(_window.size(), _size - start);
  read(start, std::span(_window).first(count));
  return {_window.data(), count};
}

std::string_view StreamedFile::lookAt(std::uint32_t offset, std::uint32_t count) {
  if (_aside.size() < count) {
    _aside.resize(count);
  }
  read(offset, std::span(_aside).first(count));
  return {_aside.data(), count};
}

void StreamedFile::read(std::uint32_t offset, std::span<char> room) const {
  if (_file->readInto(room, offset) != room.size()) {
    throw FileException(
        {FileFailure::Cause::system, _path,
         "its bytes behind offset " + std::to_string(offset) + " cannot be read any more"});
  }
}

}  // namespace mrziphoto

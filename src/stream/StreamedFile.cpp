#include "detail/StreamedFile.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "../values/Limits.h"

namespace mrziphoto {
namespace {

// What is asked once more mostly lies this near.
constexpr std::uint32_t kBehind = 4096;

}  // namespace

StreamedFile::StreamedFile(std::unique_ptr<detail::OpenFile> file, std::string path)
    : _file(std::move(file)),
      _path(std::move(path)),
      _stamp(_file->stamp()),
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
  refuseHole(offset, count);
  if (_aside.size() < count) {
    _aside.resize(count);
  }
  read(offset, std::span(_aside).first(count));
  return {_aside.data(), count};
}

void StreamedFile::refuseHole(std::uint32_t offset, std::size_t count) const {
  const std::uint64_t spare = Limits::current().leastExpansion;
  if (count > spare && count - spare > _file->bytesOnDisk()) {
    throw FileException({FileFailure::Cause::tooLarge, _path,
                         "the " + std::to_string(count) + " bytes at offset " +
                             std::to_string(offset) + " are a hole in it"});
  }
}

void StreamedFile::read(std::uint32_t offset, std::span<char> room) const {
  refuseHole(offset, room.size());
  if (_file->readInto(room, offset) != room.size()) {
    throw FileException(
        {FileFailure::Cause::system, _path,
         "its bytes behind offset " + std::to_string(offset) + " cannot be read any more"});
  }
  if (_file->stamp() != _stamp) {
    throw FileException({FileFailure::Cause::system, _path,
                         "another program wrote to it while it was read; try again"});
  }
}

}  // namespace mrziphoto

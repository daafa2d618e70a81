#include "OpenFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mrziphoto::detail {
namespace {

/// Reads until `count` bytes are there, the file ends or reading fails; answers how many there are.
std::size_t readFully(int descriptor, char* destination, std::size_t count, std::uint64_t offset) {
  std::size_t done = 0;
  while (done < count) {
    const ssize_t got =
        pread(descriptor, destination + done, count - done, static_cast<off_t>(offset + done));
    if (got > 0) {
      done += static_cast<std::size_t>(got);
    } else if (got == 0 || errno != EINTR) {
      break;
    }
  }
  return done;
}

}  // namespace

std::unique_ptr<OpenFile> OpenFile::atPath(const std::string& path) {
  // Without O_NONBLOCK a pipe of that name would be waited for.
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) {
    return nullptr;
  }
  struct stat status {};
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    close(descriptor);
    return nullptr;
  }
  return std::unique_ptr<OpenFile>(
      new OpenFile(descriptor, static_cast<std::uint64_t>(status.st_size)));
}

OpenFile::~OpenFile() { close(_descriptor); }

Data OpenFile::read(std::uint64_t offset, std::size_t count) const {
  if (offset >= _size) {
    return {};
  }
  count = static_cast<std::size_t>(std::min<std::uint64_t>(count, _size - offset));
  std::size_t got = 0;
  const Data result =
      Data::filled(count, [&](char* start) { got = readFully(_descriptor, start, count, offset); });
  return result.slice(0, got);
}

}  // namespace mrziphoto::detail

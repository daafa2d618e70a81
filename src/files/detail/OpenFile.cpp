#include "OpenFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <future>
#include <new>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "../../values/Limits.h"
#include "../FileManager.h"
#include "../ReadingRules.h"

namespace mrziphoto::detail {
namespace {

using Status = struct stat;
using Cause = FileFailure::Cause;

// The longest run of bytes that a value can be a slice of.
constexpr std::uint64_t kLargestFile = 0xFFFFFFFF;
// From this size on, touching a file's memory takes longer than starting a thread, and looking for
// holes takes little beside it.
constexpr std::size_t kLarge = std::size_t{16} << 20;
constexpr std::uint64_t kBlock = 512;  // the unit of st_blocks, whatever the file system's is

/// Of a file that is read as a whole.
std::uint64_t mostBytes() { return std::min(Limits::current().fileSize, kLargestFile); }

void tell(FileFailure* failure, FileFailure why) {
  if (failure != nullptr) {
    *failure = std::move(why);
  }
}

/// Why what is known of an entry rules out reading it as a file.
std::optional<FileFailure> refusal(const std::string& path, const Status& status) {
  if (S_ISDIR(status.st_mode)) {
    return FileFailure{Cause::folder, path, "it is a folder"};
  }
  if (!S_ISREG(status.st_mode)) {
    return FileFailure{Cause::notRegular, path, "it is no regular file"};
  }
  return std::nullopt;
}

struct Outcome {
  std::size_t count = 0;
  int error = 0;
};

/// Reads until `count` bytes are there, the file ends or reading fails.
Outcome readFully(int descriptor, char* destination, std::size_t count, std::uint64_t offset) {
  Outcome result;
  while (result.count < count) {
    const ssize_t got = pread(descriptor, destination + result.count, count - result.count,
                              static_cast<off_t>(offset + result.count));
    if (got > 0) {
      result.count += static_cast<std::size_t>(got);
    } else if (got == 0) {
      break;
    } else if (errno != EINTR) {
      result.error = errno;
      break;
    }
  }
  return result;
}

/// Reads what is written in a file with holes; the rest of the memory, which is zero, is not
/// touched.
Outcome readWritten(int descriptor, char* start, std::size_t size) {
  Outcome result{size, 0};
  for (off_t offset = 0; std::cmp_less(offset, size);) {
    const off_t begin = lseek(descriptor, offset, SEEK_DATA);
    const off_t hole = begin < 0 ? begin : lseek(descriptor, begin, SEEK_HOLE);
    if (hole < 0) {
      result.error = errno == ENXIO ? 0 : errno;  // ENXIO: nothing is written from there on
      break;
    }
    const std::size_t end = std::min(static_cast<std::size_t>(hole), size);
    if (std::cmp_less(begin, end)) {
      const auto from = static_cast<std::size_t>(begin);
      const Outcome part = readFully(descriptor, start + from, end - from, from);
      if (part.error != 0 || part.count < end - from) {
        return {from + part.count, part.error};
      }
    }
    offset = hole;
  }
  return result;
}

/// Reads a whole file of that size, by two threads where that is allowed and worth it: what takes
/// the time is memory that is touched for the first time.
Outcome readWhole(int descriptor, char* start, std::size_t size) {
  Status status{};
  if (size >= kLarge && fstat(descriptor, &status) == 0 &&
      static_cast<std::uint64_t>(status.st_blocks) * kBlock < size / 2) {
    return readWritten(descriptor, start, size);
  }
  if (size < kLarge || !ReadingRules::current().mayStartThreads) {
    return readFully(descriptor, start, size, 0);
  }
  const std::size_t half = size / 2;
  // Where no thread can be started, the second half is read when it is asked for.
  std::future<Outcome> rest = std::async(std::launch::async | std::launch::deferred, readFully,
                                         descriptor, start + half, size - half, half);
  const Outcome first = readFully(descriptor, start, half, 0);
  const Outcome second = rest.get();
  if (first.error != 0 || first.count < half) {
    return first;
  }
  return {half + second.count, second.error};
}

}  // namespace

std::unique_ptr<OpenFile> OpenFile::atPath(const std::string& path, FileFailure* failure) {
  const auto refuse = [&](FileFailure why) {
    tell(failure, std::move(why));
    return nullptr;
  };
  if (path.find('\0') != std::string::npos) {
    return refuse(FileFailure::ofSystem(path, ENOENT));
  }
  std::string place = path;
  Status status{};
  if (stat(place.c_str(), &status) != 0) {
    const int error = errno;
    const std::optional<std::string> found =
        error == ENOENT ? FileManager::locate(path) : std::nullopt;
    if (!found || stat(found->c_str(), &status) != 0) {
      return refuse(FileFailure::ofSystem(path, error));
    }
    place = *found;
  }
  if (std::optional<FileFailure> why = refusal(path, status)) {
    return refuse(std::move(*why));
  }
  if (!ReadingRules::current().allow(place)) {
    return refuse(FileFailure::outside(path, ReadingRules::current().onlyInside));
  }
  // Should a pipe have taken the file's place by now, opening it must not wait for a writer.
  const int descriptor = open(place.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (descriptor < 0) {
    return refuse(FileFailure::ofSystem(path, errno));
  }
  std::unique_ptr<OpenFile> file(new OpenFile(path, descriptor, 0));
  if (fstat(descriptor, &status) != 0) {
    return refuse(FileFailure::ofSystem(path, errno));
  }
  if (std::optional<FileFailure> why = refusal(path, status)) {
    return refuse(std::move(*why));
  }
  // Links on the way may have been changed meanwhile: what counts is where the file lies that was
  // opened, which the system tells of the descriptor.
  const std::string opened = "/proc/self/fd/" + std::to_string(descriptor);
  if (!ReadingRules::current().allow(access(opened.c_str(), F_OK) == 0 ? opened : place)) {
    return refuse(FileFailure::outside(path, ReadingRules::current().onlyInside));
  }
  file->_size = static_cast<std::uint64_t>(status.st_size);
  return file;
}

OpenFile::~OpenFile() { close(_descriptor); }

Data OpenFile::read(std::uint64_t offset, std::size_t count) const {
  if (offset >= _size) {
    return {};
  }
  count = static_cast<std::size_t>(std::min<std::uint64_t>(count, _size - offset));
  std::size_t got = 0;
  const Data result = Data::filled(
      count, [&](char* start) { got = readFully(_descriptor, start, count, offset).count; });
  return result.slice(0, got);
}

bool OpenFile::mayBeReadWhole() const { return _size <= mostBytes(); }

std::optional<Data> OpenFile::contents(FileFailure* failure) const {
  if (!mayBeReadWhole()) {
    tell(failure, {Cause::tooLarge, _path,
                   "its " + std::to_string(_size) + " bytes are more than the " +
                       std::to_string(mostBytes()) + " that are allowed"});
    return std::nullopt;
  }
  const auto size = static_cast<std::size_t>(_size);
  try {
    Outcome outcome;
    const Data whole =
        Data::filled(size, [&](char* start) { outcome = readWhole(_descriptor, start, size); });
    if (outcome.error != 0) {
      tell(failure, FileFailure::ofSystem(_path, outcome.error));
      return std::nullopt;
    }
    return whole.slice(0, outcome.count);
  } catch (const std::bad_alloc&) {
    tell(failure, {Cause::tooLarge, _path,
                   "there is not enough memory for its " + std::to_string(_size) + " bytes"});
    return std::nullopt;
  }
}

std::size_t OpenFile::readInto(std::span<char> room, std::uint64_t offset) const {
  return readFully(_descriptor, room.data(), room.size(), offset).count;
}

std::uint64_t OpenFile::bytesOnDisk() const {
  constexpr std::uint64_t kBlock = 512;
  Status status{};
  return fstat(_descriptor, &status) == 0 ? static_cast<std::uint64_t>(status.st_blocks) * kBlock
                                          : 0;
}

OpenFile::Stamp OpenFile::stamp() const {
  Status status{};
  fstat(_descriptor, &status);
  return {static_cast<std::int64_t>(status.st_dev), static_cast<std::int64_t>(status.st_ino),
          status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

void OpenFile::measure() {
  Status status{};
  if (fstat(_descriptor, &status) == 0) {
    _size = static_cast<std::uint64_t>(status.st_size);
  }
}

}  // namespace mrziphoto::detail

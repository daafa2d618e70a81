#include "FileManager.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <future>
#include <new>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Path.h"
#include "detail/FolderNames.h"

namespace mrziphoto {
namespace {

using Status = struct stat;

// The longest run of bytes that a value can be a slice of.
constexpr off_t kLargestFile = 0xFFFFFFFF;
constexpr std::int64_t kReferenceDate = 978307200;  // 2001-01-01 in seconds since 1970-01-01
constexpr mode_t kEverybody = 0666;                 // what the user's mask leaves of it

class FileDescriptor {
 public:
  explicit FileDescriptor(int number) : _number(number) {}
  ~FileDescriptor() {
    if (_number >= 0) {
      close(_number);
    }
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  [[nodiscard]] int number() const { return _number; }
  [[nodiscard]] bool isOpen() const { return _number >= 0; }

 private:
  int _number;
};

/// False for a path that the system would read up to a zero byte only.
bool isPossible(const std::string& path) { return path.find('\0') == std::string::npos; }

bool hasEntry(const std::string& path) {
  Status status{};
  return lstat(path.c_str(), &status) == 0;
}

/// What is known of the entry at the path as it is spelled, else of the one that `locate` finds;
/// `path` then becomes its path.
std::optional<Status> statusOf(std::string& path, int flags = 0) {
  Status status{};
  if (!isPossible(path)) {
    return std::nullopt;
  }
  if (fstatat(AT_FDCWD, path.c_str(), &status, flags) == 0) {
    return status;
  }
  const std::optional<std::string> place =
      errno == ENOENT ? FileManager::locate(path) : std::nullopt;
  if (!place || *place == path || fstatat(AT_FDCWD, place->c_str(), &status, flags) != 0) {
    return std::nullopt;
  }
  path = *place;
  return status;
}

std::optional<Status> statusAt(std::string path, int flags = 0) { return statusOf(path, flags); }

/// Reads `size` bytes from `offset` on, or as many as the file has; nothing when reading fails.
std::optional<std::size_t> readRange(int file, char* start, std::size_t offset, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count = pread(file, start + done, size - done, static_cast<off_t>(offset + done));
    if (count < 0 && errno != EINTR) {
      return std::nullopt;
    }
    if (count == 0) {
      break;
    }
    done += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  return done;
}

// From this size on the time to touch a file's memory outweighs that to start a thread.
constexpr std::size_t kReadByTwo = std::size_t{16} << 20;

/// Reads a whole file of that size, a large one by two threads: what takes the time is memory that
/// is touched for the first time.
std::optional<std::size_t> readWhole(int file, char* start, std::size_t size) {
  if (size < kReadByTwo) {
    return readRange(file, start, 0, size);
  }
  const std::size_t half = size / 2;
  // Without a thread to be had the second half is read when it is asked for.
  std::future<std::optional<std::size_t>> rest = std::async(
      std::launch::async | std::launch::deferred, readRange, file, start + half, half, size - half);
  const std::optional<std::size_t> first = readRange(file, start, 0, half);
  const std::optional<std::size_t> second = rest.get();
  if (!first || !second) {
    return std::nullopt;
  }
  return *first < half ? *first : half + *second;
}

bool writeWhole(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(file, bytes.data(), bytes.size());
    if (count < 0 && errno != EINTR) {
      return false;
    }
    bytes.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
  }
  return true;
}

/// A path beside `path` at which nothing of ours lies.
std::string scratchPath(const std::string& path) {
  static std::atomic<unsigned> count = 0;
  return path::join(path::withoutLastComponent(path),
                    ".mrziphoto-" + std::to_string(getpid()) + '-' + std::to_string(count++));
}

/// Calls the re-entrant user look-up and takes the home folder from its answer.
template <class LookUp>
std::optional<std::string> homeFolderFrom(LookUp&& lookUp) {
  passwd user{};
  passwd* found = nullptr;
  std::array<char, 16384> buffer{};
  lookUp(&user, buffer.data(), buffer.size(), &found);
  return found != nullptr && found->pw_dir != nullptr ? std::optional<std::string>(found->pw_dir)
                                                      : std::nullopt;
}

}  // namespace

bool FileManager::exists(const std::string& path) { return statusAt(path).has_value(); }

bool FileManager::isFolder(const std::string& path) {
  const std::optional<Status> status = statusAt(path);
  return status && S_ISDIR(status->st_mode);
}

bool FileManager::isFile(const std::string& path) {
  const std::optional<Status> status = statusAt(path);
  return status && !S_ISDIR(status->st_mode);
}

std::optional<FileType> FileManager::fileType(const std::string& path) {
  const std::optional<Status> status = statusAt(path, AT_SYMLINK_NOFOLLOW);
  if (!status) {
    return std::nullopt;
  }
  switch (status->st_mode & S_IFMT) {
    case S_IFREG:
      return FileType::regular;
    case S_IFDIR:
      return FileType::folder;
    case S_IFLNK:
      return FileType::symbolicLink;
    default:
      return FileType::other;
  }
}

std::optional<std::uint64_t> FileManager::size(const std::string& path) {
  const std::optional<Status> status = statusAt(path);
  return status ? std::optional(static_cast<std::uint64_t>(status->st_size)) : std::nullopt;
}

std::optional<Date> FileManager::modificationDate(const std::string& path) {
  const std::optional<Status> status = statusAt(path);
  if (!status) {
    return std::nullopt;
  }
  constexpr double kNanosecond = 1e-9;
  return Date{static_cast<double>(status->st_mtim.tv_sec - kReferenceDate) +
              static_cast<double>(status->st_mtim.tv_nsec) * kNanosecond};
}

std::optional<Data> FileManager::contents(const std::string& path) {
  std::string place = path;
  const auto isReadable = [](const Status& status) {
    return S_ISREG(status.st_mode) && status.st_size <= kLargestFile;
  };
  std::optional<Status> status = statusOf(place);
  if (!status || !isReadable(*status)) {
    return std::nullopt;
  }
  // Should a pipe have taken the file's place by now, opening it must not wait for a writer.
  const FileDescriptor file(open(place.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
  if (!file.isOpen() || fstat(file.number(), &*status) != 0 || !isReadable(*status)) {
    return std::nullopt;
  }
  const auto size = static_cast<std::size_t>(status->st_size);
  try {
    std::optional<std::size_t> count;
    const Data whole =
        Data::filled(size, [&](char* start) { count = readWhole(file.number(), start, size); });
    return count ? std::optional(whole.slice(0, *count)) : std::nullopt;
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
}

bool FileManager::writeAtomically(const std::string& path, std::string_view bytes) {
  if (!isPossible(path)) {
    return false;
  }
  const std::string scratch = scratchPath(path);
  {
    const FileDescriptor file(
        open(scratch.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kEverybody));
    if (!file.isOpen()) {
      return false;
    }
    if (!writeWhole(file.number(), bytes)) {
      unlink(scratch.c_str());
      return false;
    }
  }
  if (std::rename(scratch.c_str(), path.c_str()) != 0) {
    unlink(scratch.c_str());
    return false;
  }
  return true;
}

std::optional<std::string> FileManager::locate(const std::string& path) {
  if (!isPossible(path) || path.empty()) {
    return std::nullopt;
  }
  if (hasEntry(path)) {
    return path;
  }
  if (errno != ENOENT) {
    return std::nullopt;  // a path that is too long, or that leads through a file
  }
  const std::string name = path::lastComponent(path);
  const std::string folder = path::withoutLastComponent(path);
  const std::optional<std::string> place = folder.empty() ? folder : locate(folder);
  if (!place) {
    return std::nullopt;
  }
  if (*place != folder && hasEntry(path::join(*place, name))) {
    return path::join(*place, name);
  }
  const auto names = detail::FolderNames::of(place->empty() ? "." : *place);
  const std::optional<std::string> found = names ? names->nameLike(name) : std::nullopt;
  return found ? std::optional(path::join(*place, *found)) : std::nullopt;
}

std::string FileManager::temporaryFolder() {
  const char* folder = std::getenv("TMPDIR");
  return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

std::string FileManager::homeFolder() {
  if (const char* folder = std::getenv("HOME"); folder != nullptr && *folder != '\0') {
    return folder;
  }
  return homeFolderFrom([](auto... rest) { getpwuid_r(getuid(), rest...); }).value_or("/");
}

std::optional<std::string> FileManager::homeFolderOfUser(const std::string& name) {
  return homeFolderFrom([&name](auto... rest) { getpwnam_r(name.c_str(), rest...); });
}

}  // namespace mrziphoto

#include "FileManager.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <pwd.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "Path.h"
#include "detail/FolderNames.h"
#include "detail/OpenFile.h"

namespace mrziphoto {
namespace {

using Status = struct stat;

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

/// Looks for the entry that a path means, beginning at the deepest folder that exists as it is
/// spelled. That folder is found by halving: asking for one component after the other would cost
/// the square of a path's length.
class PathSearch {
 public:
  explicit PathSearch(std::string_view path) : _root(path.starts_with('/') ? "/" : "") {
    _path.reserve(path.size());
    _path = _root;
    while (!path.empty()) {
      const std::size_t size = std::min(path.find('/'), path.size());
      if (size > 0) {
        _path += _ends.empty() ? "" : "/";
        _path += path.substr(0, size);
        _ends.push_back(_path.size());
      }
      path.remove_prefix(std::min(size + 1, path.size()));
    }
  }

  /// The entry's path; nothing when there is none.
  std::optional<std::string> find() {
    while (true) {
      takeAsSpelled();
      if (_next == _ends.size()) {
        return _path;
      }
      const std::size_t begin = _next > 0 ? _ends[_next - 1] + 1 : _root.size();
      const std::string folder = _next > 0 ? _path.substr(0, begin - 1) : _root;
      const std::size_t size = _ends[_next] - begin;
      const auto names = detail::FolderNames::of(folder.empty() ? "." : folder);
      const std::optional<std::string> found =
          names ? names->nameLike(std::string_view(_path).substr(begin, size)) : std::nullopt;
      if (!found) {
        return std::nullopt;
      }
      _path.replace(begin, size, *found);
      for (std::size_t i = _next; i < _ends.size(); ++i) {
        _ends[i] = _ends[i] - size + found->size();
      }
      ++_next;
    }
  }

 private:
  /// Whether the path leads somewhere up to the end of the name before `end`.
  bool hasNames(std::size_t end) {
    const std::size_t behind = _ends[end - 1];
    if (behind == _path.size()) {
      return hasEntry(_path);
    }
    _path[behind] = '\0';
    const bool has = hasEntry(_path);
    _path[behind] = '/';
    return has;
  }

  /// Passes over the names that are there as they are spelled.
  void takeAsSpelled() {
    // Mostly all of them are, or all but the last.
    std::size_t there = _ends.size();
    std::size_t missing = there + 1;
    for (std::size_t step = 1; there > _next && !hasNames(there); step *= 2) {
      missing = there;
      there -= std::min(step, there - _next);
    }
    while (there + 1 < missing) {
      const std::size_t middle = (there + missing) / 2;
      (hasNames(middle) ? there : missing) = middle;
    }
    _next = there;
  }

  std::string _root;
  std::string _path;
  std::vector<std::size_t> _ends;  // of the names in it
  std::size_t _next = 0;           // the first of the names that have yet to be found
};

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

std::optional<Data> FileManager::contents(const std::string& path, FileFailure* failure) {
  const std::unique_ptr<detail::OpenFile> file = detail::OpenFile::atPath(path, failure);
  return file ? file->contents(failure) : std::nullopt;
}

Data FileManager::readContents(const std::string& path) {
  FileFailure failure;
  std::optional<Data> bytes = contents(path, &failure);
  if (!bytes) {
    throw FileException(std::move(failure));
  }
  return *bytes;
}

Data FileManager::readHead(const std::string& path, std::size_t count) {
  FileFailure failure;
  const std::unique_ptr<detail::OpenFile> file = detail::OpenFile::atPath(path, &failure);
  if (!file) {
    throw FileException(std::move(failure));
  }
  const Data head = file->read(0, count);
  // A read that fails says nothing; reading the file whole tells why.
  return head.size() < std::min<std::uint64_t>(count, file->size()) ? readContents(path) : head;
}

std::optional<FileFailure> FileManager::obstacle(const std::string& path) {
  const std::optional<std::string> place = locate(path);
  Status status{};
  if (stat(place.value_or(path).c_str(), &status) == 0) {
    return std::nullopt;
  }
  return FileFailure::ofSystem(path, errno);
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
  return PathSearch(path).find();
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

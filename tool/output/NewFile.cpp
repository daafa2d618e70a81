#include "NewFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include <MRZiPhoto/files/Path.h>

#include "Output.h"

namespace mrziphoto::tool {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kEverybody = 0666;  // what the user's mask leaves of it
constexpr mode_t kOwner = 0600;
constexpr int kMostNames = 100;
constexpr int kMostLinks = 40;
constexpr const char* kProcesses = "/proc";
constexpr mode_t kModeBits = 07777;

/// The endings of a format of pictures, the usual one first.
using Endings = std::array<std::string_view, 3>;
constexpr std::array<Endings, 10> kEndings{{{"png"},
                                            {"jpg", "jpeg", "jpe"},
                                            {"gif"},
                                            {"tif", "tiff"},
                                            {"webp"},
                                            {"heic", "heif", "hif"},
                                            {"avif"},
                                            {"bmp", "dib"},
                                            {"jp2", "j2k"},
                                            {"pdf"}}};

/// True for a path in the folder, both without links; false for an empty folder.
bool liesIn(const fs::path& path, const fs::path& folder) {
  return !folder.empty() &&
         std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first ==
             folder.end();
}

/// Where the file lies or will lie: in a folder that is no link, and no link itself. What a process
/// has open is not followed: it may have no path, and a shell goes on writing to it. Nothing, and
/// `errno`, when there is no such folder.
std::optional<fs::path> placeOf(fs::path path) {
  if (path.empty()) {
    errno = ENOENT;
    return std::nullopt;
  }
  std::error_code error;
  for (int links = 0; links < kMostLinks; ++links) {
    const fs::path folder = fs::canonical(path.has_parent_path() ? path.parent_path() : ".", error);
    if (error) {
      errno = error.value();
      return std::nullopt;
    }
    path = folder / path.filename();
    if (liesIn(folder, kProcesses) || !fs::is_symlink(path, error)) {
      return path;
    }
    path = folder / fs::read_symlink(path, error);
  }
  errno = ELOOP;
  return std::nullopt;
}

/// The number of what this process has open; nothing for any other place.
std::optional<int> descriptorAt(const fs::path& place) {
  std::error_code error;
  int number = 0;
  const std::string name = place.filename();
  const auto* end = name.data() + name.size();
  const auto read = std::from_chars(name.data(), end, number);
  const bool isOwn = place.parent_path() == fs::canonical("/proc/self/fd", error) &&
                     read.ec == std::errc() && read.ptr == end;
  return isOwn ? std::optional(number) : std::nullopt;
}

}  // namespace

NewFile::NewFile(const std::string& path, const LibraryPlaces& library) : _path(path) {
  const std::optional<fs::path> place = placeOf(path);
  if (!place) {
    fail();
  }
  _place = *place;
  std::error_code error;
  if (const std::optional<int> descriptor = descriptorAt(_place)) {
    // Opened by its name a file would be written from its beginning.
    openDescriptor(dup(*descriptor));
  } else if (fs::is_directory(_place, error)) {
    errno = EISDIR;
  } else if (library.hold(path) || library.hold(_place)) {
    throw Failure(
        ExitStatus::notThere,
        fmt::format("'{}' lies in the library '{}' or beside its pictures, which are only read",
                    path, library.library()));
  } else if (fs::is_other(_place, error) || liesIn(_place, kProcesses)) {
    _stream.reset(std::fopen(_place.c_str(), "wb"));
  } else {
    makeScratchFile();
  }
  if (!_stream) {
    fail();
  }
}

NewFile::~NewFile() {
  if (!_scratch.empty()) {
    unlink(_scratch.c_str());
  }
}

void NewFile::makeScratchFile() {
  const fs::path folder = _place.parent_path();
  struct stat before {};
  const bool takesOver = stat(_place.c_str(), &before) == 0;
  // Until it has the modes of the file before it, nobody else may open it.
  const mode_t mode = takesOver ? kOwner : kEverybody;
  const SignalsWait noneUntilItIsKnown;
  int descriptor = -1;
  for (int i = 0; i < kMostNames && descriptor < 0; ++i) {
    const std::string name = fmt::format(".mrziphoto-{}-{}", getpid(), i);
    _scratch = (folder / name).string();
    descriptor = open(_scratch.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (descriptor < 0 && errno != EEXIST) {
      break;
    }
  }
  if (descriptor < 0) {
    _scratch.clear();
    return;
  }
  _removal.emplace(_scratch.c_str());
  if (takesOver) {
    // Where that cannot be, such as on file systems without modes, the file is still wanted.
    static_cast<void>(fchmod(descriptor, before.st_mode & kModeBits));
  }
  openDescriptor(descriptor);
  if (!_stream) {
    unlink(_scratch.c_str());
  }
}

/// Takes the descriptor over; -1 for one that could not be had.
void NewFile::openDescriptor(int descriptor) {
  _stream.reset(descriptor < 0 ? nullptr : fdopen(descriptor, "wb"));
  if (!_stream && descriptor >= 0) {
    close(descriptor);
  }
}

void NewFile::write(std::string_view bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), stream()) != bytes.size()) {
    fail();
  }
}

void NewFile::takePlace() {
  const bool isFlushed = std::fflush(stream()) == 0;
  if (!isFlushed || (!_scratch.empty() && fsync(fileno(stream())) != 0)) {
    fail();
  }
  if (std::fclose(_stream.release()) != 0) {
    fail();
  }
  if (!_scratch.empty()) {
    if (std::rename(_scratch.c_str(), _place.c_str()) != 0) {
      fail();
    }
    _scratch.clear();
    _removal.reset();
    syncFolder();
  }
}

/// The file itself is whole by now, whatever comes of this.
void NewFile::syncFolder() const {
  const int folder = open(_place.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder >= 0) {
    static_cast<void>(fsync(folder));
    close(folder);
  }
}

void NewFile::fail() const {
  if (errno == EPIPE) {
    throw ClosedPipe();
  }
  throw Failure(ExitStatus::notThere,
                fmt::format("cannot write '{}': {}", _path, std::strerror(errno)));
}

void expectEnding(const std::string& path, std::string_view format) {
  std::string ending = path::extension(path);
  std::ranges::transform(ending, ending.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; });
  const auto has = [](const Endings& endings, std::string_view each) {
    return std::ranges::find(endings, each) != endings.end();
  };
  const auto known = std::ranges::find_if(
      kEndings, [&](const Endings& each) { return !ending.empty() && has(each, ending); });
  if (known != kEndings.end() && !has(*known, format)) {
    const std::string stem = path.substr(0, path.size() - ending.size());
    throw Failure(
        ExitStatus::wrongUse,
        fmt::format("'{}' is the name of another format: call it '{}{}'", path, stem, format));
  }
}

}  // namespace mrziphoto::tool

#include "NewFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <system_error>
#include <unistd.h>

#include "Output.h"

namespace mrziphoto::tool {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kEverybody = 0666;  // what the user's mask leaves of it
constexpr int kMostNames = 100;
constexpr int kMostLinks = 40;
constexpr const char* kProcesses = "/proc";
constexpr std::array kInterrupts{SIGINT, SIGTERM, SIGHUP};

// What an interrupt removes; a copy, since a handler may look at little else.
std::array<char, 4096> scratchOfInterrupt{};

void removeAndEnd(int signal) {
  unlink(scratchOfInterrupt.data());
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

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
  const bool isOwn = place.parent_path() == fs::canonical("/proc/self/fd", error) &&
                     std::from_chars(name.data(), end, number).ptr == end;
  return isOwn ? std::optional(number) : std::nullopt;
}

}  // namespace

NewFile::NewFile(const std::string& path, const std::string& library) : _path(path) {
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
  } else if (liesIn(fs::weakly_canonical(_place, error), fs::canonical(library, error))) {
    throw Failure(ExitStatus::notThere,
                  "'" + path + "' lies in the library '" + library + "', which is only read");
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
    forgetScratchFile();
  }
}

void NewFile::makeScratchFile() {
  const fs::path folder = _place.parent_path();
  int descriptor = -1;
  for (int i = 0; i < kMostNames && descriptor < 0; ++i) {
    const std::string name = ".mrziphoto-" + std::to_string(getpid()) + '-' + std::to_string(i);
    _scratch = (folder / name).string();
    descriptor = open(_scratch.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kEverybody);
    if (descriptor < 0 && errno != EEXIST) {
      break;
    }
  }
  if (descriptor < 0) {
    _scratch.clear();
    return;
  }
  openDescriptor(descriptor);
  if (!_stream) {
    unlink(_scratch.c_str());
    _scratch.clear();
    return;
  }
  if (_scratch.size() < scratchOfInterrupt.size()) {
    _scratch.copy(scratchOfInterrupt.data(), _scratch.size());
    for (const int signal : kInterrupts) {
      // Who started the program may have chosen that it goes on.
      if (std::signal(signal, removeAndEnd) == SIG_IGN) {
        std::signal(signal, SIG_IGN);
      }
    }
  }
}

/// Takes the descriptor over; -1 for one that could not be had.
void NewFile::openDescriptor(int descriptor) {
  _stream.reset(descriptor < 0 ? nullptr : fdopen(descriptor, "wb"));
  if (!_stream && descriptor >= 0) {
    close(descriptor);
  }
}

void NewFile::forgetScratchFile() {
  for (const int signal : kInterrupts) {
    if (std::signal(signal, SIG_DFL) == SIG_IGN) {
      std::signal(signal, SIG_IGN);
    }
  }
  scratchOfInterrupt.fill('\0');
  _scratch.clear();
}

void NewFile::write(std::string_view bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), stream()) != bytes.size()) {
    fail();
  }
}

void NewFile::takePlace() {
  if (std::fclose(_stream.release()) != 0) {
    fail();
  }
  if (!_scratch.empty()) {
    if (std::rename(_scratch.c_str(), _place.c_str()) != 0) {
      fail();
    }
    forgetScratchFile();
  }
}

void NewFile::fail() const {
  if (errno == EPIPE) {
    throw ClosedPipe();
  }
  throw Failure(ExitStatus::notThere, "cannot write '" + _path + "': " + std::strerror(errno));
}

}  // namespace mrziphoto::tool

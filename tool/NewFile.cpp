#include "NewFile.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace mrziphoto::tool {
namespace {

constexpr mode_t kEverybody = 0666;  // what the user's mask leaves of it
constexpr int kMostNames = 100;
constexpr std::array kInterrupts{SIGINT, SIGTERM, SIGHUP};

// What an interrupt removes; a copy, since a handler may look at little else.
std::array<char, 4096> scratchOfInterrupt{};

void removeAndEnd(int signal) {
  unlink(scratchOfInterrupt.data());
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

}  // namespace

NewFile::NewFile(const std::string& path) : _path(path), _place(path) {
  namespace fs = std::filesystem;
  std::error_code error;
  if (path.empty() || fs::is_directory(path, error)) {
    errno = path.empty() ? ENOENT : EISDIR;
    fail();
  }
  if (fs::is_other(path, error)) {
    _stream.reset(std::fopen(path.c_str(), "wb"));
  } else {
    if (fs::is_symlink(path, error)) {
      const fs::path target = fs::weakly_canonical(path, error);
      _place = error ? path : target.string();
    }
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
  const std::filesystem::path folder = std::filesystem::path(_place).parent_path();
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
  _stream.reset(fdopen(descriptor, "wb"));
  if (!_stream) {
    close(descriptor);
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
  throw Failure(ExitStatus::notThere, "cannot write '" + _path + "': " + std::strerror(errno));
}

}  // namespace mrziphoto::tool

#include "sample/OutputFile.h"

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <MRZiPhoto/files/FileFailure.h>

namespace mrziphoto::sample {
namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 18;

}  // namespace

OutputFile::OutputFile(std::string path)
    : _path(std::move(path)), _buffer(kBufferSize), _file(std::fopen(_path.c_str(), "wb")) {
  check(_file != nullptr);
  check(std::setvbuf(_file.get(), _buffer.data(), _IOFBF, _buffer.size()) == 0);
}

void OutputFile::write(std::string_view bytes) {
  check(std::fwrite(bytes.data(), 1, bytes.size(), _file.get()) == bytes.size());
  _position += bytes.size();
}

void OutputFile::overwrite(std::uint64_t position, std::string_view bytes) {
  check(std::fseek(_file.get(), static_cast<long>(position), SEEK_SET) == 0);
  check(std::fwrite(bytes.data(), 1, bytes.size(), _file.get()) == bytes.size());
  check(std::fseek(_file.get(), 0, SEEK_END) == 0);
}

void OutputFile::close() { check(std::fclose(_file.release()) == 0); }

void OutputFile::check(bool succeeded) const {
  if (!succeeded) {
    const std::string reason = std::generic_category().message(errno);
    throw std::runtime_error("cannot write " + _path + ": " + reason);
  }
}

void writeFile(const std::string& path, std::string_view bytes) {
  OutputFile file(path);
  file.write(bytes);
  file.close();
}

void makeFolder(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (error) {
    throw std::runtime_error("cannot make the folder " + path + ": " +
                             FileFailure::ofSystem(path, error.value()).reason);
  }
}

}  // namespace mrziphoto::sample

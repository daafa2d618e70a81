#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <unistd.h>

namespace mrziphoto {

/// All bytes of a file; none when it cannot be read.
inline std::string fileBytes(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// An empty folder that goes, with all that is in it, when the test is done.
class TemporaryFolder {
 public:
  TemporaryFolder() { std::filesystem::create_directories(_path); }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  [[nodiscard]] const std::string& path() const { return _path; }
  /// The path of an entry.
  [[nodiscard]] std::string operator/(const std::string& name) const { return _path + "/" + name; }
  /// Makes a file, and the folders on the way to it.
  void write(const std::string& name, std::string_view contents) const {
    std::filesystem::create_directories(std::filesystem::path(*this / name).parent_path());
    std::ofstream file(*this / name, std::ios::binary);
    file.write(contents.data(), static_cast<std::streamsize>(contents.size()));
  }

 private:
  static std::string nextPath() {
    static std::atomic<int> count = 0;
    const std::string name =
        "mrziphoto-test-" + std::to_string(getpid()) + "-" + std::to_string(count++);
    return (std::filesystem::temp_directory_path() / name).string();
  }

  std::string _path = nextPath();
};

}  // namespace mrziphoto

#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace mrziphoto::sample {

/// A new file that is written from front to back through a large buffer. Every failure throws
/// std::runtime_error "cannot write PATH: why".
class OutputFile {
 public:
  explicit OutputFile(std::string path);

  void write(std::string_view bytes);
  /// The number of bytes written so far.
  [[nodiscard]] std::uint64_t position() const { return _position; }
  /// Replaces bytes that were written before, and goes on at the end.
  void overwrite(std::uint64_t position, std::string_view bytes);
  /// Must be called for the file to be whole: only now the last bytes reach it.
  void close();

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  void check(bool succeeded) const;

  std::string _path;
  std::vector<char> _buffer;
  std::unique_ptr<std::FILE, Closer> _file;
  std::uint64_t _position = 0;
};

/// Writes a whole file.
void writeFile(const std::string& path, std::string_view bytes);
/// Makes a folder and those above it. Throws like `OutputFile`.
void makeFolder(const std::string& path);

}  // namespace mrziphoto::sample

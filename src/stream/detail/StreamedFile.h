#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "../../files/detail/OpenFile.h"

namespace mrziphoto {

/// An open file that a stream reads through a window, so that the file never lies in memory as a
/// whole. Each operation throws FileException when the file has become shorter or was written to
/// meanwhile, cannot be read any more, or has fewer bytes on the disk than are asked for at once:
/// those are a hole in it, which would become memory.
class StreamedFile {
 public:
  StreamedFile(std::unique_ptr<detail::OpenFile> file, std::string path);

  [[nodiscard]] std::uint32_t size() const { return _size; }
  /// Moves the window over that offset; answers where it begins, and its bytes, which lie there
  /// until it is moved again. A little of what stands in front of the offset stays in it.
  std::string_view moveTo(std::uint32_t offset, std::uint32_t& start);
  /// Bytes from anywhere in the file, which lie there until this is asked again.
  std::string_view lookAt(std::uint32_t offset, std::uint32_t count);
  void read(std::uint32_t offset, std::span<char> room) const;

  static constexpr std::uint32_t kWindow = 256 * 1024;

 private:
  void refuseHole(std::uint32_t offset, std::size_t count) const;

  std::unique_ptr<detail::OpenFile> _file;
  std::string _path;
  detail::OpenFile::Stamp _stamp;
  std::uint32_t _size;
  std::vector<char> _window;
  std::vector<char> _aside;
};

}  // namespace mrziphoto

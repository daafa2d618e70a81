#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "../Data.h"

namespace mrziphoto::detail {

/// A file that stays open, for files that are too large to be held in memory for the few parts of
/// them that are asked for.
class OpenFile {
 public:
  /// nullptr for what cannot be opened, and for what is no regular file.
  static std::unique_ptr<OpenFile> atPath(const std::string& path);
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile();

  /// The size when it was opened.
  [[nodiscard]] std::uint64_t size() const { return _size; }
  /// A copy of the bytes from there, cut to what is there and can be read.
  [[nodiscard]] Data read(std::uint64_t offset, std::size_t count) const;

 private:
  OpenFile(int descriptor, std::uint64_t size) : _descriptor(descriptor), _size(size) {}

  int _descriptor;
  std::uint64_t _size;
};

}  // namespace mrziphoto::detail

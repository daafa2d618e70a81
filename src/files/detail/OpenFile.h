#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "../../values/Data.h"
#include "../FileFailure.h"

namespace mrziphoto::detail {

/// A file that is open for reading. Every file of a library is opened here, by the `ReadingRules`
/// in force; it stays open for files that are too large to be held in memory for the few parts of
/// them that are asked for.
class OpenFile {
 public:
  /// The regular file at the path, or the one that `FileManager::locate` finds for it. nullptr for
  /// what cannot be opened; `failure` then tells why.
  static std::unique_ptr<OpenFile> atPath(const std::string& path, FileFailure* failure = nullptr);
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile();

  /// The size when it was opened.
  [[nodiscard]] std::uint64_t size() const { return _size; }
  /// A copy of the bytes from there, cut to what is there and can be read.
  [[nodiscard]] Data read(std::uint64_t offset, std::size_t count) const;
  /// The whole file: as many bytes as it had when it was opened, or fewer if it is shorter now. Of
  /// a file with holes, only what is written in it takes memory. Nothing when there are more bytes
  /// than `Limits::fileSize`, or reading fails.
  [[nodiscard]] std::optional<Data> contents(FileFailure* failure = nullptr) const;
  /// True for a file that is not too large for `contents`.
  [[nodiscard]] bool mayBeReadWhole() const;
  /// Reads as many bytes from there as there are, up to the size of `room`; answers how many.
  [[nodiscard]] std::size_t readInto(std::span<char> room, std::uint64_t offset) const;

  /// How many bytes take room on the disk: fewer than `size` for a file with holes.
  [[nodiscard]] std::uint64_t bytesOnDisk() const;

  /// Numbers that differ when two files differ, or when one was written to in between.
  using Stamp = std::array<std::int64_t, 5>;
  [[nodiscard]] Stamp stamp() const;
  /// Takes the size that the file has now.
  void measure();

 private:
  OpenFile(std::string path, int descriptor, std::uint64_t size)
      : _path(std::move(path)), _descriptor(descriptor), _size(size) {}

  std::string _path;
  int _descriptor;
  std::uint64_t _size;
};

}  // namespace mrziphoto::detail

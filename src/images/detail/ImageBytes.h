#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "../../values/Data.h"
#include "ImageHeader.h"

namespace mrziphoto::detail {

class OpenFile;

/// What a decoder gets to see of an image file: of the very file whose header was read, whatever
/// its path leads to meanwhile, and never mapped into memory, where a file that another program
/// cuts short would end the process. Reading fails for a file that has become shorter, and when
/// decoding takes too long, which is counted from the making of this.
///
/// A HEIF file is read at once: its decoder ends the process where a file ends before its size.
///
/// Of a PNG the optional chunks are left out, the transparent colour apart: nothing in them is
/// asked for, and the texts and profiles among them are compressed a thousandfold.
class ImageBytes {
 public:
  /// The file must outlive it.
  ImageBytes(const OpenFile& file, ImageFormat format, std::chrono::milliseconds time);
  ImageBytes(const ImageBytes&) = delete;
  ImageBytes& operator=(const ImageBytes&) = delete;
  virtual ~ImageBytes() = default;

  [[nodiscard]] virtual std::uint64_t size() const { return _size; }
  /// The bytes from there as far as they go; answers how many. None after a failure: decoders know
  /// files that end, and some write where they must not when they are told of an error.
  virtual std::size_t read(std::uint64_t offset, char* destination, std::size_t count);
  /// Whether the time is over, which then is the failure.
  virtual bool isLate();
  /// Why reading failed; empty while it did not. What was decoded after a failure is no picture.
  [[nodiscard]] const std::string& failure() const { return _failure; }

 private:
  /// A piece of the file, and where it begins among the bytes that are seen.
  struct Piece {
    std::uint64_t start;
    std::uint64_t offset;
    std::uint64_t size;
  };

  void add(std::uint64_t offset, std::uint64_t size);
  void addPngChunks();

  const OpenFile& _file;
  std::vector<Piece> _pieces;
  std::optional<Data> _kept;
  std::uint64_t _size = 0;
  std::chrono::steady_clock::time_point _begin = std::chrono::steady_clock::now();
  std::chrono::milliseconds _time;
  std::string _failure;
};

}  // namespace mrziphoto::detail

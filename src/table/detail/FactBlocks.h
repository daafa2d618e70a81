#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace mrziphoto {

/// Memory for runs of bytes that are written from front to back, one run at a time, and stay where
/// they lie. Bytes are not cleared before they are written, and room that is never needed is never
/// touched.
class FactBlocks {
 public:
  FactBlocks() = default;
  FactBlocks(const FactBlocks&) = delete;
  FactBlocks& operator=(const FactBlocks&) = delete;

  /// Room for `count` bytes more behind those that were written of the present run. The run may
  /// move for it.
  char* room(std::size_t count) {
    if (static_cast<std::size_t>(_end - _at) < count) {
      grow(count);
    }
    return _at;
  }
  /// The bytes up to there have been written.
  void wroteTo(char* end) { _at = end; }

  [[nodiscard]] char* begin() const { return _begin; }
  [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(_at - _begin); }
  /// Ends the run, which begins at what this answers, and begins the next one.
  const char* finish() { return std::exchange(_begin, _at); }
  /// Forgets what was written of the present run.
  void discard() { _at = _begin; }

 private:
  static constexpr std::size_t kSmallest = std::size_t{1} << 12;
  static constexpr std::size_t kLargest = std::size_t{1} << 20;

  void grow(std::size_t count) {
    const std::size_t written = size();
    // A long run doubles its room with each move, so that moving it costs in line with its length.
    _blockSize = std::clamp(_blockSize * 2, kSmallest, kLargest);
    const std::size_t room = std::max(_blockSize, 2 * (written + count));
    std::unique_ptr<char[]> block(new char[room]);
    if (written != 0) {
      std::memcpy(block.get(), _begin, written);
    }
    if (written != 0 && _blocks.back().get() == _begin) {
      _blocks.pop_back();  // held nothing else
    }
    _begin = block.get();
    _at = _begin + written;
    _end = _begin + room;
    _blocks.push_back(std::move(block));
  }

  std::vector<std::unique_ptr<char[]>> _blocks;
  std::size_t _blockSize = 0;
  char* _begin = nullptr;
  char* _at = nullptr;
  char* _end = nullptr;
};

}  // namespace mrziphoto

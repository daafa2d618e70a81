#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "FirstIndex.h"

namespace mrziphoto {

/// The first of many rows with a given key. Keys that lie close together, as those of libraries do,
/// are looked up in a table; others in an index.
class RowIndex {
 public:
  /// Row numbers are positions in `keys`.
  explicit RowIndex(std::span<const std::uint32_t> keys);

  [[nodiscard]] std::optional<std::uint32_t> find(std::uint32_t key) const {
    if (_isDirect) {
      const std::uint32_t at = key - _least;
      return at < _rows.size() && _rows[at] != kNone ? std::optional(_rows[at]) : std::nullopt;
    }
    return _scattered.find(key);
  }
  /// Has the memory fetched that `find` will read for that key, while other work goes on.
  void prefetch(std::uint32_t key) const {
    if (!_isDirect) {
      _scattered.prefetch(key);
    } else if (key - _least < _rows.size()) {
      __builtin_prefetch(&_rows[key - _least]);
    }
  }
  /// True when two rows have one key.
  [[nodiscard]] bool hasEqualKeys() const { return _hasEqualKeys; }

 private:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  std::uint32_t _least = 0;
  bool _isDirect = true;
  bool _hasEqualKeys = false;
  std::vector<std::uint32_t> _rows;
  FirstIndex<std::uint32_t> _scattered;
};

}  // namespace mrziphoto

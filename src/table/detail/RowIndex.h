#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
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
  explicit RowIndex(std::span<const std::uint32_t> keys)
      : RowIndex(keys.size(),
                 [keys](std::size_t row) { return std::optional<std::int64_t>(keys[row]); }) {}
  /// `keyOf` answers the key of each of `count` rows, or nothing for a row that none finds. It is
  /// asked twice.
  template <class KeyOf>
  RowIndex(std::size_t count, KeyOf&& keyOf);

  [[nodiscard]] std::optional<std::uint32_t> find(std::int64_t key) const {
    if (_isDirect) {
      const std::uint64_t at = placeOf(key);
      return at < _rows.size() && _rows[at] != kNone ? std::optional(_rows[at]) : std::nullopt;
    }
    return _scattered.find(key);
  }
  /// Has the memory fetched that `find` will read for that key, while other work goes on.
  void prefetch(std::int64_t key) const {
    if (!_isDirect) {
      _scattered.prefetch(key);
    } else if (placeOf(key) < _rows.size()) {
      __builtin_prefetch(&_rows[placeOf(key)]);
    }
  }
  /// True when two rows have one key.
  [[nodiscard]] bool hasEqualKeys() const { return _hasEqualKeys; }

 private:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;
  // A table may have this many places for each row: as much memory as the index would take.
  static constexpr std::size_t kPlacesPerRow = 4;

  [[nodiscard]] std::uint64_t placeOf(std::int64_t key) const {
    return static_cast<std::uint64_t>(key) - static_cast<std::uint64_t>(_least);
  }
  void add(std::int64_t key, std::uint32_t row);

  std::int64_t _least = 0;
  bool _isDirect = true;
  bool _hasEqualKeys = false;
  std::vector<std::uint32_t> _rows;
  FirstIndex<std::int64_t> _scattered;
};

template <class KeyOf>
RowIndex::RowIndex(std::size_t count, KeyOf&& keyOf) {
  std::size_t keys = 0;
  std::int64_t most = std::numeric_limits<std::int64_t>::min();
  _least = std::numeric_limits<std::int64_t>::max();
  for (std::size_t row = 0; row < count; ++row) {
    if (const std::optional<std::int64_t> key = keyOf(row)) {
      _least = std::min(_least, *key);
      most = std::max(most, *key);
      ++keys;
    }
  }
  if (keys == 0) {
    return;
  }
  _isDirect = placeOf(most) / kPlacesPerRow < keys;
  if (_isDirect) {
    _rows.assign(placeOf(most) + 1, kNone);
  } else {
    _scattered = FirstIndex<std::int64_t>(keys);
  }
  for (std::size_t row = 0; row < count; ++row) {
    if (const std::optional<std::int64_t> key = keyOf(row)) {
      add(*key, static_cast<std::uint32_t>(row));
    }
  }
}

inline void RowIndex::add(std::int64_t key, std::uint32_t row) {
  std::uint32_t stands = row;
  if (!_isDirect) {
    stands = _scattered.add(key, row);
  } else if (std::uint32_t& place = _rows[placeOf(key)]; place == kNone) {
    place = row;
  } else {
    stands = place;
  }
  _hasEqualKeys = _hasEqualKeys || stands != row;
}

}  // namespace mrziphoto

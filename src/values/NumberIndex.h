#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <vector>

namespace mrziphoto {

/// Positions by number, the first of equal ones. Open addressing, 24 to 48 bytes an entry.
class NumberIndex {
 public:
  /// With room for that many entries.
  explicit NumberIndex(std::size_t expected = 0) { resize(expected); }

  /// Adds a position, unless the number has one.
  void add(std::int64_t number, std::size_t position) {
    if ((_count + 1) * 3 > _slots.size() * 2) {
      resize(_count * 2 + 1);
    }
    Slot& slot = _slots[slotOf(number)];
    if (slot.position == kEmpty) {
      slot = {number, static_cast<std::uint32_t>(position)};
      ++_count;
    }
  }

  [[nodiscard]] std::optional<std::size_t> find(std::int64_t number) const {
    const Slot& slot = _slots[slotOf(number)];
    return slot.position == kEmpty ? std::nullopt : std::optional<std::size_t>(slot.position);
  }

  /// Prefetches the memory that `find` will read.
  void prefetch(std::int64_t number) const { __builtin_prefetch(&_slots[firstSlot(number)]); }

 private:
  static constexpr std::uint32_t kEmpty = 0xFFFFFFFF;
  struct Slot {
    std::int64_t number = 0;
    std::uint32_t position = kEmpty;
  };

  /// Differs in each process, so that no file can hold numbers that collide.
  struct Spread {
    std::uint64_t first;
    std::uint64_t second;

    static Spread drawn() {
      static const Spread spread = [] {
        std::random_device random;
        const auto odd = [&random] { return std::uint64_t{random()} << 32 | random() | 1; };
        return Spread{odd(), odd()};
      }();
      return spread;
    }
  };

  /// Folds the upper half in: multiplication alone would put numbers at equal distances side by
  /// side.
  [[nodiscard]] std::size_t firstSlot(std::int64_t number) const {
    const std::uint64_t once = static_cast<std::uint64_t>(number) * _spread.first;
    return static_cast<std::size_t>(((once ^ once >> 32) * _spread.second) >> _shift);
  }

  /// The slot that holds the number, or the empty one where it belongs.
  [[nodiscard]] std::size_t slotOf(std::int64_t number) const {
    std::size_t at = firstSlot(number);
    while (_slots[at].position != kEmpty && _slots[at].number != number) {
      at = (at + 1) & (_slots.size() - 1);
    }
    return at;
  }

  void resize(std::size_t expected) {
    const std::size_t size = std::bit_ceil(std::max<std::size_t>(16, expected * 3 / 2 + 1));
    std::vector<Slot> old(size);
    old.swap(_slots);
    _shift = 64 - std::countr_zero(size);
    for (const Slot& slot : old) {
      if (slot.position != kEmpty) {
        _slots[slotOf(slot.number)] = slot;
      }
    }
  }

  std::vector<Slot> _slots;
  std::size_t _count = 0;
  Spread _spread = Spread::drawn();
  int _shift = 0;
};

}  // namespace mrziphoto

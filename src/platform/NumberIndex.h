#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace mrziphoto {

/// Finds the first of many things by a number: positions by number, open addressing, eight to
/// sixteen bytes a thing.
class NumberIndex {
 public:
  /// Room for that many things without growing.
  explicit NumberIndex(std::size_t expected = 0) { resize(expected); }

  /// Takes in the thing at `position`; of things with one number the first to come stands.
  void add(std::int64_t number, std::size_t position) {
    if ((_count + 1) * 3 > _slots.size() * 2) {
      resize(_count * 2 + 1);
    }
    Slot& slot = slotOf(number);
    if (slot.position == kEmpty) {
      slot = {number, static_cast<std::uint32_t>(position)};
      ++_count;
    }
  }

  [[nodiscard]] std::optional<std::size_t> find(std::int64_t number) const {
    const Slot& slot = const_cast<NumberIndex*>(this)->slotOf(number);
    return slot.position == kEmpty ? std::nullopt : std::optional<std::size_t>(slot.position);
  }

 private:
  static constexpr std::uint32_t kEmpty = 0xFFFFFFFF;
  struct Slot {
    std::int64_t number = 0;
    std::uint32_t position = kEmpty;
  };

  Slot& slotOf(std::int64_t number) {
    // Spreads runs of neighbouring numbers, which keys are, over the whole table.
    constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15;
    const std::size_t mask = _slots.size() - 1;
    std::size_t at =
        static_cast<std::size_t>((static_cast<std::uint64_t>(number) * kSpread) >> 20) & mask;
    while (_slots[at].position != kEmpty && _slots[at].number != number) {
      at = (at + 1) & mask;
    }
    return _slots[at];
  }

  void resize(std::size_t expected) {
    std::size_t size = 16;
    while (size * 2 < expected * 3 + 2) {
      size *= 2;
    }
    std::vector<Slot> old(size);
    old.swap(_slots);
    for (const Slot& slot : old) {
      if (slot.position != kEmpty) {
        slotOf(slot.number) = slot;
      }
    }
  }

  std::vector<Slot> _slots;
  std::size_t _count = 0;
};

}  // namespace mrziphoto

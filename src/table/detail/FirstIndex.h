#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <random>
#include <string_view>
#include <vector>

namespace mrziphoto {

/// Another number in each process. With it no file can hold keys that all fall on one slot.
inline std::uint64_t hashSecret() {
  static const std::uint64_t secret = [] {
    std::random_device random;
    return std::uint64_t{random()} << 32 | random();
  }();
  return secret;
}

/// Both halves of a product, laid over each other: every bit of either factor reaches all of it.
inline std::uint64_t foldedProduct(std::uint64_t one, std::uint64_t other) {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(one) * other;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

inline std::uint64_t keyedHash(std::uint64_t key, std::uint64_t secret) {
  constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15;
  return foldedProduct(foldedProduct(key ^ secret, kOdd ^ std::rotl(secret, 32)) ^ kOdd,
                       secret | 1);
}

inline std::uint64_t keyedHash(std::string_view key, std::uint64_t secret) {
  std::uint64_t hash = keyedHash(std::uint64_t{key.size()}, secret);
  for (; key.size() > sizeof hash; key.remove_prefix(sizeof hash)) {
    std::uint64_t word = 0;
    std::memcpy(&word, key.data(), sizeof word);
    hash = foldedProduct(hash ^ word, secret | 1);
  }
  std::uint64_t last = 0;
  std::memcpy(&last, key.data(), key.size());
  return keyedHash(hash ^ last, secret);
}

/// Finds the first of many things by its key: the position that a walk from the front would stop
/// at. Open addressing; keys (numbers, or texts that live elsewhere) stand in the slots.
template <class Key>
class FirstIndex {
 public:
  /// Room for that many keys without growing.
  explicit FirstIndex(std::size_t expected = 0) { resize(expected); }

  /// Takes in the thing at `position`, and answers the position that stands for its key: of things
  /// with one key the first to come.
  std::uint32_t add(Key key, std::uint32_t position) {
    if ((_count + 1) * 3 > _slots.size() * 2) {
      resize(_count * 2 + 1);
    }
    Slot& slot = _slots[slotOf(key)];
    if (slot.position == kEmpty) {
      slot = {key, position};
      ++_count;
    }
    return slot.position;
  }

  [[nodiscard]] std::optional<std::uint32_t> find(Key key) const {
    const Slot& slot = _slots[slotOf(key)];
    return slot.position == kEmpty ? std::nullopt : std::optional(slot.position);
  }

  /// Has the memory fetched that `find` will read for that key, while other work goes on.
  void prefetch(Key key) const { __builtin_prefetch(&_slots[firstSlot(key)]); }

 private:
  static constexpr std::uint32_t kEmpty = 0xFFFFFFFF;
  struct Slot {
    Key key{};
    std::uint32_t position = kEmpty;
  };

  [[nodiscard]] std::size_t firstSlot(Key key) const {
    return static_cast<std::size_t>(keyedHash(key, _secret) >> _shift);
  }

  /// The slot that holds the key, or the empty one where it belongs.
  [[nodiscard]] std::size_t slotOf(Key key) const {
    std::size_t at = firstSlot(key);
    while (_slots[at].position != kEmpty && _slots[at].key != key) {
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
        _slots[slotOf(slot.key)] = slot;
      }
    }
  }

  std::vector<Slot> _slots;
  std::size_t _count = 0;
  std::uint64_t _secret = hashSecret();
  int _shift = 0;
};

}  // namespace mrziphoto

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "../Dictionary.h"
#include "ReferenceStock.h"

namespace mrziphoto::detail {

/// Recent dictionary keys, so that entries of the same name share one text. Its size is fixed: keys
/// that occur once, such as the numbers of photos, replace each other; the names of every photo
/// stay.
class KeyCache {
 public:
  /// A key with that text.
  [[nodiscard]] DictionaryKey key(std::string_view text) {
    Pair& pair = _pairs[placeOf(text)];
    if (pair.recent.text != text) {
      std::swap(pair.recent, pair.earlier);
      if (pair.recent.text != text) {
        pair.recent = Place(text);
      }
    }
    return DictionaryKey(pair.recent.references.take());
  }

 private:
  struct Place {
    Place() = default;
    explicit Place(std::string_view newText) {
      DictionaryKey key(newText);
      text = key.text();
      references = ReferenceStock(std::move(key._text));
    }

    // Not UTF-8, so that no text equals it.
    std::string_view text{"\xFF", 1};
    ReferenceStock references;
  };
  struct Pair {
    Place recent;
    Place earlier;
  };
  static constexpr unsigned kPlaceBits = 10;

  /// Uses only the length and both ends of a text, which is fast and tells names apart.
  static std::size_t placeOf(std::string_view text) {
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    if (text.size() >= sizeof first) {
      std::memcpy(&first, text.data(), sizeof first);
      std::memcpy(&last, text.data() + text.size() - sizeof last, sizeof last);
    } else {
      for (const char each : text) {
        first = first << 8 | static_cast<unsigned char>(each);
      }
    }
    constexpr std::uint64_t kMixer = 0x9E3779B97F4A7C15;
    return (((first * kMixer) ^ last ^ text.size()) * kMixer) >> (64 - kPlaceBits);
  }

  std::vector<Pair> _pairs = std::vector<Pair>(std::size_t{1} << kPlaceBits);
};

}  // namespace mrziphoto::detail

#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "../Data.h"
#include "ReferenceStock.h"

namespace mrziphoto::detail {

/// Owns texts, many to a block of memory, which is cheaper than a block for each.
class TextPool {
 public:
  /// A text in the pool and its owner, none for the empty text.
  struct Kept {
    Ref<Object> owner;
    std::string_view text;
  };

  Kept keep(std::string_view text) {
    if (text.empty()) {
      return {};
    }
    if (text.size() > _room) {
      if (text.size() >= kLargest / 4) {
        const Data own = Data::copyOf(text);
        return {own.owner(), own.bytes()};
      }
      begin(text.size());
    }
    char* start = _next;
    std::ranges::copy(text, start);
    _next += text.size();
    _room -= text.size();
    return {_block.take(), {start, text.size()}};
  }

 private:
  static constexpr std::size_t kSmallest = 256;
  static constexpr std::size_t kLargest = 65536;

  /// Each block is twice as large as the one before.
  void begin(std::size_t atLeast) {
    _size = std::max(std::clamp(_size * 2, kSmallest, kLargest), atLeast);
    const Data block = Data::filled(_size, [this](char* start) { _next = start; });
    _block = ReferenceStock(block.owner());
    _room = _size;
  }

  ReferenceStock _block;
  std::size_t _size = 0;
  char* _next = nullptr;
  std::size_t _room = 0;
};

}  // namespace mrziphoto::detail

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "../../stream/TVQStreamData.h"
#include "../../values/detail/Formatted.h"
#include "CodedFields.h"

namespace mrziphoto {

/// Thrown where a size below zero leads back to bytes that were read already: nobody knows where
/// the next item begins.
struct NegativeSize {
  std::string item;
  std::uint32_t offset;
  std::int32_t size;

  [[nodiscard]] std::string description() const {
    return detail::formatted("the {} at offset {} has the size {}", item, offset, size);
  }

  /// Throws when the item at `offset`, whose size was just read, has one below zero.
  static void refuse(std::string_view kind, std::uint32_t code, std::uint32_t offset,
                     std::int32_t size) {
    if (size < 0) {
      throw NegativeSize{detail::formatted("{} {}", kind, fourCharacterText(code)), offset, size};
    }
  }
};

/// Refuses a size below zero as the typed read of the item would refuse any other size that does
/// not fit. The stream is right behind the size word, and stays there.
inline void refuseNegativeSize(CodedRead read, std::int32_t size,
                               TVQiPhotoCodedStreamData& stream) {
  if (size < 0) {
    stream.raiseUnexpectedCodeSizeExceptionDuring(codedReadKind(read).operation);
  }
}

/// Moves the stream to `bytes` behind `start`; beyond the last offset there is, to the end.
inline void seekBehind(TVQiPhotoCodedStreamData& stream, std::uint32_t start, std::uint64_t bytes) {
  stream.seekToDataOffset(static_cast<std::uint32_t>(
      std::min<std::uint64_t>(start + bytes, std::numeric_limits<std::uint32_t>::max())));
}

/// Finds rows by code. Fields come in much the same order in every record, so the search goes on
/// behind the row that was found last.
template <class Row, std::size_t count>
class CodeSearch {
 public:
  explicit CodeSearch(const std::array<Row, count>& table) : _table(table) {}

  /// The row of that code; nullptr when there is none.
  const Row* find(std::uint32_t code) {
    for (std::size_t tried = 0; tried < count; ++tried) {
      const Row& row = _table[_next];
      _next = _next + 1 < count ? _next + 1 : 0;
      if (row.code == code) {
        return &row;
      }
    }
    return nullptr;
  }

 private:
  const std::array<Row, count>& _table;
  std::size_t _next = 0;
};

}  // namespace mrziphoto

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace mrziphoto {

/// How the value of a coded item is stored, each after the typed read of
/// `TVQiPhotoCodedStreamData` that reads it.
enum class CodedRead : std::uint8_t {
  none,  // the item's value is no single value
  shortNumber,
  intNumber,
  longLong,
  floatNumber,
  doubleNumber,  // a date: seconds since 2001-01-01 00:00:00 UTC
  size,
  intArray,
  text,
  data,
  archive,
  count,
};

/// A typed read: its name, the one size of value that it takes (0 for any), and the size of its
/// elements: what does not fill one stays unread. Where that is 0 the read position stays behind
/// the size word.
struct CodedReadKind {
  CodedRead read;
  std::string_view operation;
  std::uint32_t requiredSize;
  std::uint32_t element;
};

inline constexpr std::array kCodedReads{
    CodedReadKind{CodedRead::none, "", 0, 0},
    CodedReadKind{CodedRead::shortNumber, "readCodedShort", 2, 2},
    CodedReadKind{CodedRead::intNumber, "readCodedInt", 4, 4},
    CodedReadKind{CodedRead::longLong, "readCodedLongLong", 8, 8},
    CodedReadKind{CodedRead::floatNumber, "readCodedFloat", 4, 4},
    CodedReadKind{CodedRead::doubleNumber, "readCodedDouble", 8, 8},
    CodedReadKind{CodedRead::size, "readCodedNSSize", 8, 8},
    CodedReadKind{CodedRead::intArray, "readCodedIntArray", 0, 4},
    CodedReadKind{CodedRead::text, "readCodedUTF16String", 0, 2},
    CodedReadKind{CodedRead::data, "readCodedData", 0, 1},
    CodedReadKind{CodedRead::archive, "readCodedArchive", 0, 0},
};

[[nodiscard]] constexpr const CodedReadKind& codedReadKind(CodedRead read) {
  return kCodedReads[static_cast<std::size_t>(read)];
}

[[nodiscard]] constexpr bool codedReadsStandInOrder() {
  for (std::size_t i = 0; i < kCodedReads.size(); ++i) {
    if (kCodedReads[i].read != static_cast<CodedRead>(i)) {
      return false;
    }
  }
  return kCodedReads.size() == static_cast<std::size_t>(CodedRead::count);
}

static_assert(codedReadsStandInOrder());

}  // namespace mrziphoto

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "../values/Export.h"

namespace mrziphoto {

/// The version of the archive format, the only one that is read and written.
inline constexpr char kStreamerVersion = 4;

/// A class that an archive names.
struct ArchiveClass {
  std::string_view name;
  std::int32_t version = 0;
  std::size_t number = 0;                   // among objects, classes and C strings
  std::optional<std::uint32_t> superclass;  // position among the archive's classes
};

/// A text of type `*`, which later ones of the same characters refer to.
struct ArchiveCString {
  std::string_view text;
  std::size_t number = 0;  // among objects, classes and C strings
};

/// One value as it stands in an archive, whose bytes it refers to.
struct MRZIPHOTO_EXPORT ArchiveItem {
  enum class Kind : std::uint8_t {
    nil,
    integer,          // also a real number in its short form
    real,             // `number` has the bits, as many as the type has
    bytes,            // with their length before them
    rawBytes,         // an array of characters
    sharedString,     // a selector or an atom
    classReference,   // `number` is the position of a class
    cString,          // `number` is the position of a C string
    newObject,        // `number` is the object's; its class and contents follow
    objectReference,  // `number` is the object's
    group,            // the type string of the values that follow
    endOfObject
  };

  Kind kind = Kind::nil;
  char type = 0;
  std::uint64_t number = 0;  // of a text the length
  const char* start = nullptr;

  [[nodiscard]] std::string_view text() const { return {start, static_cast<std::size_t>(number)}; }
  [[nodiscard]] std::int64_t integer() const { return static_cast<std::int64_t>(number); }
  /// True for an integer of a type without negative numbers: `number` is its value then.
  [[nodiscard]] bool isUnsigned() const;
  /// The value of an item of type `f` or `d`.
  [[nodiscard]] double real() const;
};

}  // namespace mrziphoto

#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "../values/Data.h"
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

/// The structure of any typed-object archive: its groups with their types and values, and its
/// objects with their classes and contents. The classes need not be registered.
///
/// A file may go on behind its archive, and an archive does not say where it ends. The archive part
/// therefore ends before the first top-level group that cannot be read, unless it is the very
/// first; `trailingReason` says why the rest is no group.
class MRZIPHOTO_EXPORT ArchiveDocument {
 public:
  /// Answers nothing when the data is no archive. Throws NSException
  /// kNSInconsistentArchiveException, with the byte offset, when its first group is damaged. Data
  /// without an owner must live for ever.
  static std::optional<ArchiveDocument> initWithData(const Data& data);

  [[nodiscard]] std::endian byteOrder() const;
  /// The version of the system that wrote the archive; 1000 for Mac OS X.
  [[nodiscard]] std::int32_t systemVersion() const;
  /// How many bytes the archive part has.
  [[nodiscard]] std::size_t length() const;
  /// How many bytes follow the archive part.
  [[nodiscard]] std::size_t trailingLength() const;
  /// Why the bytes behind the archive part are no group; empty when there are none.
  [[nodiscard]] const std::string& trailingReason() const;

  /// The archive part as one run of items in the order of the file, valid as long as a copy of this
  /// document lives: a group is followed by its values; a new object by its class, its groups and
  /// its end. Every class and C string that an item names by its position is there.
  [[nodiscard]] std::span<const ArchiveItem> items() const;
  /// Classes in the order of the file, superclasses behind the class that needs them first.
  [[nodiscard]] std::span<const ArchiveClass> classes() const;
  [[nodiscard]] std::span<const ArchiveCString> cStrings() const;

  /// The archive part, written anew: the same bytes for every archive that the format's original
  /// writer wrote.
  [[nodiscard]] Data write() const;

 private:
  struct Contents;
  class Builder;

  explicit ArchiveDocument(std::shared_ptr<const Contents> contents);

  std::shared_ptr<const Contents> _contents;
};

}  // namespace mrziphoto

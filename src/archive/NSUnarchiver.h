#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "../values/Data.h"
#include "../values/Dictionary.h"
#include "../values/Export.h"
#include "../values/KeyedHash.h"
#include "../values/Value.h"

namespace mrziphoto {

struct ArchiveItem;

namespace detail {
class ArchiveReader;
class ArchiveType;
struct FoundationClass;
}  // namespace detail

/// Reads a typed-object archive, group by group, in either byte order.
///
/// Strings, numbers, dates, bytes and collections come back as values of their kinds; NSNull and
/// nil as nothing, a set as an array, an attributed string as its text, an address as its text, a
/// structure as an array of its fields. Other objects are made from the classes in ClassRegistry
/// and read themselves with `Object::initWithCoder`. Texts and bytes are slices of the archive,
/// which they keep alive. An object that is referred to from inside itself is handed out there as a
/// weak value.
///
/// Every decoding operation throws NSException kNSInconsistentArchiveException, with the byte
/// offset, when the archive is damaged, holds something else than is asked for, or names a class
/// that nobody has registered. Nothing more can be read from it then.
class MRZIPHOTO_EXPORT NSUnarchiver {
 public:
  /// What `versionForClassName` answers for classes that have not been read.
  static constexpr std::uint32_t kNotFound = 0x7FFFFFFF;

  /// A reader that stands at the first group; nothing when the data is no archive. Data without an
  /// owner must live for ever.
  static std::unique_ptr<NSUnarchiver> initForReadingWithData(const Data& data);
  ~NSUnarchiver();
  NSUnarchiver(const NSUnarchiver&) = delete;
  NSUnarchiver& operator=(const NSUnarchiver&) = delete;

  /// The next object; nothing for nil.
  Value decodeObject();
  /// The next object of a collection, which must not be nil.
  Value decodeElement();
  /// The next object as the key of a dictionary: the text of a string, the description of another
  /// value. It must not be nil.
  DictionaryKey decodeKey();
  /// The next value, which must have been written with exactly that type: a number of its type, a
  /// text for `*`, `:` and `%`, a class name for `#`, bytes for `+` and arrays of characters, an
  /// object for `@`. The values of other arrays, of structures and of several types are answered
  /// as one array.
  Value decodeValueOfObjCType(std::string_view type);
  std::int32_t decodeInt() { return decodeValueOfObjCType("i").intValue(); }
  /// `count` values of that type, as `decodeValueOfObjCType` answers them.
  Value decodeArrayOfObjCType(std::string_view type, std::size_t count);
  /// The next run of bytes; nothing for nil.
  Value decodeBytes() { return decodeValueOfObjCType("+"); }
  /// The next run of bytes whose length was written before it.
  Value decodeDataObject();
  /// The number of elements that a collection begins with, each of `leastBytes` bytes or more.
  std::size_t decodeCount(std::size_t leastBytes);
  /// The next group, whatever its type, as `decodeValueOfObjCType` answers it.
  Value decodeGroup();
  /// Skips the rest of the object that is being read, objects of unknown classes included.
  void skipGroups();

  /// The version that the archive recorded for a class. Classes are known once an object of them,
  /// or of a class derived from them, has been begun.
  [[nodiscard]] std::uint32_t versionForClassName(std::string_view name) const;
  /// How many bytes have been read: where the next group, or whatever follows the archive, begins.
  [[nodiscard]] std::size_t cursor() const;
  /// True when no bytes are left.
  [[nodiscard]] bool isAtEnd() const;
  /// Archives of this kind have no keys.
  [[nodiscard]] static constexpr bool allowsKeyedCoding() { return false; }
  [[nodiscard]] std::endian byteOrder() const;
  /// The version of the system that wrote the archive; 1000 for Mac OS X.
  [[nodiscard]] std::uint32_t systemVersion() const;
  /// Throws the exception of damaged archives for the present byte. For classes that cannot use
  /// their contents.
  [[noreturn]] void fail(std::string_view reason) const;

 private:
  /// An object by its number. While it is being read its references to itself find it here.
  struct DecodedObject {
    Value value;
    std::uint64_t expandedSize = 0;
    std::uint32_t classPosition = 0;
    std::uint32_t height = 0;
    enum class State : std::uint8_t { none, reading, read } state = State::none;
  };
  /// What makes the objects of a class: one of the two, or neither.
  struct Loader {
    const Class* registered = nullptr;
    const detail::FoundationClass* foundation = nullptr;
  };

  explicit NSUnarchiver(const Data& data);

  const detail::ArchiveType& expectType(std::string_view type);
  Value valuesOf(const detail::ArchiveType& type);
  Value valueOf(const ArchiveItem& item);
  Value borrowedText(std::string_view text);
  DictionaryKey sharedKey(std::string_view text);
  Value newObject(std::size_t number);
  Value contentsOf(std::size_t number);
  Value objectReferredTo(std::size_t number);
  const Loader& loaderFor(std::uint32_t classPosition);
  [[noreturn]] void failUnknownClass(std::uint32_t classPosition) const;

  Data _data;
  std::unique_ptr<detail::ArchiveReader> _reader;
  std::vector<DecodedObject> _objects;
  std::vector<Loader> _loaders;
  std::unordered_map<std::string_view, DictionaryKey, KeyedHash> _keys;
  // The size of all references written out, and the depth of the present object with references
  // followed.
  std::uint64_t _borrowed = 0;
  std::uint64_t _lastExpandedSize = 0;
  std::uint32_t _heightInside = 0;
  std::uint32_t _openObjects = 0;
  int _skipping = 0;
};

}  // namespace mrziphoto

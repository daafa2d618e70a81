#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "../values/Data.h"
#include "../values/Export.h"
#include "../values/Value.h"

namespace mrziphoto {

namespace detail {
class ArchiveWriter;
}

/// Writes a typed-object archive, group by group, for NSUnarchiver to read.
///
/// Values are written as NSUnarchiver reads them, other objects by their `Object::encodeWithCoder`.
/// The same object, or the same piece of text or bytes in memory, is written once and referred to
/// afterwards; so are equal keys of dictionaries.
class MRZIPHOTO_EXPORT NSArchiver {
 public:
  explicit NSArchiver(std::endian byteOrder = std::endian::little);
  ~NSArchiver();
  NSArchiver(const NSArchiver&) = delete;
  NSArchiver& operator=(const NSArchiver&) = delete;

  /// Records that version for a class instead of its highest. To be called before the class is
  /// written.
  void setVersionForClassName(std::uint32_t version, std::string_view name);

  /// Writes an object; nil for nothing. A decimal is written as a number of type `d`. Throws
  /// NSException for objects of classes that no archive holds.
  void encodeObject(const Value& value);
  /// Writes the key of a dictionary as a string.
  void encodeKey(std::string_view key);
  /// Writes a value of one plain type: a number, a text for `*`, `:` and `%`, bytes for `+`, an
  /// object for `@`. Throws NSException kNSInvalidArgumentException for other types, and for a
  /// value that does not fit the type.
  void encodeValueOfObjCType(std::string_view type, const Value& value);
  void encodeInt(std::int32_t value) { encodeValueOfObjCType("i", value); }
  /// Writes a run of bytes.
  void encodeBytes(std::string_view bytes);
  /// Writes a run of bytes behind its length.
  void encodeDataObject(std::string_view bytes);

  /// What has been written so far.
  [[nodiscard]] Data archivedData() const;

 private:
  using Identity = std::tuple<const void*, std::size_t, Value::Kind>;

  static std::optional<Identity> identityOf(const Value& value);
  void writeObject(const Value& value);
  void writeClass(const Class* written);
  void writeCString(std::string_view text);
  void writeNumber(const Value& value, char code);

  std::unique_ptr<detail::ArchiveWriter> _writer;
  std::map<Identity, std::size_t> _objects;
  std::vector<Value> _kept;  // so that no other object takes their places in memory
  std::map<std::string, Value, std::less<>> _keys;
  std::map<std::string, std::size_t, std::less<>> _cStrings;
  std::map<std::string, std::size_t, std::less<>> _classes;
  std::map<std::string, std::uint32_t, std::less<>> _versions;
};

}  // namespace mrziphoto

#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "../../values/KeyedHash.h"
#include "ArchiveReader.h"

namespace mrziphoto::detail {

/// Writes the parts that archives are made of, each in its shortest form, and numbers them as
/// ArchiveReader does.
class ArchiveWriter {
 public:
  /// Writes the header.
  ArchiveWriter(std::endian byteOrder, std::int32_t systemVersion);

  [[nodiscard]] const std::string& bytes() const { return _bytes; }

  /// In full for the first time, then as a reference. Type strings, class names, selectors.
  void writeShared(std::string_view text);
  void writeNil() { writeHead(kHeadNil); }
  void writeEndOfObject() { writeHead(kHeadEndOfObject); }
  /// A number of an integer type, or a real number in its short form.
  void writeInteger(std::int64_t value, char code);
  /// A real number of type `f` or `d`, in its short form when it is a whole number.
  void writeReal(double value, char code);
  /// The bits of a real number.
  void writeRealBits(std::uint64_t bits, char code);
  /// Bytes with their length before them.
  void writeBytes(std::string_view bytes);
  void writeRawBytes(std::string_view bytes) { _bytes += bytes; }
  /// Begins a new object, class or C string and answers its number.
  std::size_t writeNew();
  void writeReference(std::size_t number);

 private:
  void writeHead(ArchiveHead head) { _bytes += static_cast<char>(head); }
  void writeShortest(std::int64_t value);
  void writeUnsigned(std::uint64_t value, std::size_t size);

  std::string _bytes;
  std::endian _byteOrder;
  TextMap<std::size_t> _strings;
  std::size_t _entries = 0;
};

}  // namespace mrziphoto::detail

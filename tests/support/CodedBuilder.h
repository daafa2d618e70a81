#pragma once

#include <bit>

#include <MRZiPhoto/catalogue/detail/CodedFields.h>

#include "Testing.h"

namespace mrziphoto {

/// Builds coded items, one behind the other, and whatever else stands in a coded catalogue. An
/// item's layout follows from the type of its value:
///
///     CodedBuilder().item("dbVS", 51).images({CodedBuilder().item("idKY", 7).item("idCP",
///     u"Köln")})
class CodedBuilder {
 public:
  [[nodiscard]] const std::string& bytes() const { return _bytes; }
  [[nodiscard]] std::string_view view() const { return _bytes; }

  /// Bytes as they are.
  CodedBuilder& raw(std::string_view bytes) {
    _bytes += bytes;
    return *this;
  }
  /// A number without code and size, as wide as its type.
  template <class Number>
  CodedBuilder& number(Number value) {
    if constexpr (std::is_same_v<Number, double>) {
      return number(std::bit_cast<std::uint64_t>(value));
    } else if constexpr (std::is_same_v<Number, float>) {
      return number(std::bit_cast<std::uint32_t>(value));
    } else {
      for (std::size_t left = sizeof(Number); left > 0; --left) {
        _bytes += static_cast<char>(value >> ((left - 1) * 8));
      }
      return *this;
    }
  }
  CodedBuilder& code(const char (&characters)[5]) { return number(fourCharacterCode(characters)); }

  /// An item of a number.
  template <class Number>
  requires std::is_arithmetic_v<Number> CodedBuilder& item(const char (&characters)[5],
                                                           Number value) {
    return code(characters).number(static_cast<std::uint32_t>(sizeof value)).number(value);
  }
  /// An item of a text.
  CodedBuilder& item(const char (&characters)[5], std::u16string_view text) {
    code(characters).number(static_cast<std::uint32_t>(text.size() * 2));
    for (const char16_t unit : text) {
      number(static_cast<std::uint16_t>(unit));
    }
    return *this;
  }
  /// An item of several numbers: keys, or a width and a height.
  template <class Number>
  CodedBuilder& item(const char (&characters)[5], const std::vector<Number>& numbers) {
    code(characters).number(static_cast<std::uint32_t>(numbers.size() * sizeof(Number)));
    for (const Number each : numbers) {
      number(each);
    }
    return *this;
  }
  /// An item of bytes: an archive, a camera block, further items.
  CodedBuilder& item(const char (&characters)[5], const std::string& bytes) {
    return code(characters).number(static_cast<std::uint32_t>(bytes.size())).raw(bytes);
  }
  CodedBuilder& item(const char (&characters)[5], const CodedBuilder& items) {
    return item(characters, items._bytes);
  }
  /// Items one behind the other: a code, its value, the next code, its value and so on.
  template <class Value, class... More>
  CodedBuilder& items(const char (&characters)[5], const Value& value, const More&... more) {
    item(characters, value);
    if constexpr (sizeof...(more) > 0) {
      items(more...);
    }
    return *this;
  }

  /// An image-data block of a type.
  CodedBuilder& block(std::uint32_t blockNumber, CodedBlockType type, const CodedBuilder& fields) {
    const CodedBuilder typed =
        CodedBuilder().item("idTY", static_cast<std::int32_t>(type)).raw(fields._bytes);
    return block(blockNumber, typed);
  }
  CodedBuilder& block(std::uint32_t blockNumber, const CodedBuilder& fields) {
    return number(blockNumber)
        .number(static_cast<std::uint32_t>(fields._bytes.size()))
        .raw(fields._bytes);
  }
  /// The count of image records, the marker and the records.
  CodedBuilder& images(const std::vector<CodedBuilder>& records) {
    item("dbCT", static_cast<std::int32_t>(records.size())).item("dbTV", std::string());
    for (const CodedBuilder& record : records) {
      item("imag", record);
    }
    return *this;
  }
  /// A record of the roll section.
  CodedBuilder& roll(const CodedBuilder& fields) {
    return number(static_cast<std::uint32_t>(fields._bytes.size() + 4)).raw(fields._bytes);
  }
  /// The roll section with these records.
  CodedBuilder& rolls(const std::vector<CodedBuilder>& records) {
    CodedBuilder section;
    section.number(1);
    for (const CodedBuilder& record : records) {
      section.roll(record);
    }
    return item("dbRL", section);
  }

 private:
  std::string _bytes;
};

}  // namespace mrziphoto

#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>

/// The classes of characters in an XML document.
namespace mrziphoto::detail::xml {

// Classes of ASCII characters, a bit each.
inline constexpr std::uint8_t kSpace = 1;
inline constexpr std::uint8_t kNameStart = 2;
inline constexpr std::uint8_t kName = 4;
inline constexpr std::uint8_t kPlain = 8;  // means nothing but itself in text, nor needs a check
inline constexpr std::uint8_t kPublicId = 16;
inline constexpr std::uint8_t kDeclared = 32;  // in the values of an XML declaration
inline constexpr std::uint8_t kLetter = 64;

inline constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
inline constexpr std::string_view kDigits = "0123456789";

inline constexpr auto kClasses = [] {
  std::array<std::uint8_t, 256> classes{};
  const auto add = [&classes](std::string_view characters, int bits) {
    for (const char character : characters) {
      classes[static_cast<unsigned char>(character)] |= static_cast<std::uint8_t>(bits);
    }
  };
  for (char character = ' '; character != '\x7F'; ++character) {
    add({&character, 1}, kPlain);
  }
  add("\t\n\x7F", kPlain);
  for (const char markup : std::string_view("<&]")) {
    classes[static_cast<unsigned char>(markup)] = 0;
  }
  add(" \t\r\n", kSpace);
  add(kLetters, kLetter | kNameStart | kName | kPublicId | kDeclared);
  add(kDigits, kName | kPublicId | kDeclared);
  add(":_", kNameStart | kName);
  add("-.", kName);
  add(" \r\n-'()+,./:=?;!*#@$_%", kPublicId);
  add("-._", kDeclared);
  return classes;
}();

constexpr bool isOf(std::uint8_t classes, char character) {
  return (kClasses[static_cast<unsigned char>(character)] & classes) != 0;
}

constexpr bool isAscii(char character) { return static_cast<unsigned char>(character) < 0x80; }

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

inline constexpr std::array kNameStartRanges{
    Range{0xC0, 0xD6},     Range{0xD8, 0xF6},     Range{0xF8, 0x2FF},    Range{0x370, 0x37D},
    Range{0x37F, 0x1FFF},  Range{0x200C, 0x200D}, Range{0x2070, 0x218F}, Range{0x2C00, 0x2FEF},
    Range{0x3001, 0xD7FF}, Range{0xF900, 0xFDCF}, Range{0xFDF0, 0xFFFD}, Range{0x10000, 0xEFFFF}};
inline constexpr std::array kFurtherNameRanges{Range{0xB7, 0xB7}, Range{0x300, 0x36F},
                                               Range{0x203F, 0x2040}};

constexpr bool isWithin(std::span<const Range> ranges, std::uint32_t character) {
  return std::ranges::any_of(ranges, [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

constexpr bool isNameCharacter(std::uint32_t character, bool isFirst) {
  if (character < 0x80) {
    return isOf(isFirst ? kNameStart : kName, static_cast<char>(character));
  }
  return isWithin(kNameStartRanges, character) ||
         (!isFirst && isWithin(kFurtherNameRanges, character));
}

/// Whether a document may hold that character.
constexpr bool isAllowed(std::uint32_t character) {
  return character == '\t' || character == '\n' || character == '\r' ||
         (character >= 0x20 && character <= 0xD7FF) ||
         (character >= 0xE000 && character <= 0xFFFD) ||
         (character >= 0x10000 && character <= 0x10FFFF);
}

/// The first character of another class.
inline const char* passAll(std::uint8_t classes, const char* at, const char* end) {
  while (at != end && isOf(classes, *at)) {
    ++at;
  }
  return at;
}

}  // namespace mrziphoto::detail::xml

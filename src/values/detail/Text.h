#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "../Export.h"

namespace mrziphoto::text {

/// True when the bytes are well-formed UTF-8 (no surrogates, no overlong forms).
[[nodiscard]] MRZIPHOTO_EXPORT bool isUtf8(std::string_view bytes);
/// Length in bytes of the character that non-empty text begins with; 0 when it is ill-formed.
[[nodiscard]] std::size_t characterLength(std::string_view text);
/// The bytes with every ill-formed part replaced by U+FFFD.
[[nodiscard]] MRZIPHOTO_EXPORT std::string repairedUtf8(std::string_view bytes);
/// Appends a character as UTF-8; U+FFFD for what is no Unicode scalar value.
MRZIPHOTO_EXPORT void appendUtf8(std::string& text, std::uint32_t character);
/// Takes one character off the front of well-formed, non-empty UTF-8.
[[nodiscard]] MRZIPHOTO_EXPORT std::uint32_t nextCharacter(std::string_view& text);

/// UTF-16 units, two bytes each, as UTF-8; a lone surrogate becomes U+FFFD, an odd last byte is
/// left out.
[[nodiscard]] MRZIPHOTO_EXPORT std::string utf8FromUtf16(std::string_view bytes, bool bigEndian);
/// The same, written to `to`, where there is room for three bytes a unit. Answers where it ends.
[[nodiscard]] char* writeUtf8FromUtf16(std::string_view bytes, bool bigEndian, char* to);

/// True for the characters '0' to '9', whatever the locale.
[[nodiscard]] constexpr bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

}  // namespace mrziphoto::text

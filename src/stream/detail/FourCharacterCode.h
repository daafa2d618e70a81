#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "../../values/Export.h"

namespace mrziphoto {

/// The code of four characters, the first in the most significant byte.
constexpr std::uint32_t fourCharacterCode(const char (&characters)[5]) {
  std::uint32_t code = 0;
  for (const char character : std::string_view(characters, 4)) {
    code = code << 8 | static_cast<unsigned char>(character);
  }
  return code;
}

/// The code as its four characters, of the 8-bit set that Unicode begins with, between single
/// quotes.
[[nodiscard]] MRZIPHOTO_EXPORT std::string fourCharacterText(std::uint32_t code);

}  // namespace mrziphoto

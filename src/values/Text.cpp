#include "detail/Text.h"

#include <bit>
#include <cstring>

namespace mrziphoto::text {
namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

/// Writes a character as UTF-8, of up to four bytes, and answers where it ends.
char* writeUtf8(char* to, std::uint32_t character) {
  if (character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF)) {
    character = kReplacement;
  }
  const auto write = [&to](std::uint32_t byte) { *to++ = static_cast<char>(byte); };
  if (character < 0x80) {
    write(character);
    return to;
  }
  if (character < 0x800) {
    write(0xC0 | (character >> 6));
  } else {
    if (character < 0x10000) {
      write(0xE0 | (character >> 12));
    } else {
      write(0xF0 | (character >> 18));
      write(0x80 | ((character >> 12) & 0x3F));
    }
    write(0x80 | ((character >> 6) & 0x3F));
  }
  write(0x80 | (character & 0x3F));
  return to;
}

/// The length of the ASCII characters that the bytes begin with, a multiple of eight.
std::size_t lengthOfAscii(std::string_view bytes) {
  std::size_t length = 0;
  std::uint64_t eight = 0;
  for (; bytes.size() - length >= sizeof eight; length += sizeof eight) {
    std::memcpy(&eight, bytes.data() + length, sizeof eight);
    if ((eight & 0x8080808080808080U) != 0) {
      break;
    }
  }
  return length;
}

/// Copies the UTF-16 units that `bytes` begins with, by four, as long as all are ASCII; answers the
/// number of bytes passed.
std::size_t copyAscii(std::string_view bytes, bool bigEndian, char* to) {
  std::size_t passed = 0;
  if constexpr (std::endian::native == std::endian::little) {
    const std::uint64_t beyondAscii = bigEndian ? 0x80FF80FF80FF80FFU : 0xFF80FF80FF80FF80U;
    for (std::uint64_t units = 0; bytes.size() - passed >= sizeof units; passed += sizeof units) {
      std::memcpy(&units, bytes.data() + passed, sizeof units);
      if ((units & beyondAscii) != 0) {
        break;
      }
      // 0d0c0b0a becomes 0000dcba.
      units = bigEndian ? units >> 8 : units;
      units = (units | units >> 8) & 0x0000FFFF0000FFFFU;
      const auto four = static_cast<std::uint32_t>(units | units >> 16);
      std::memcpy(to, &four, sizeof four);
      to += sizeof four;
    }
  }
  return passed;
}

}  // namespace

std::size_t characterLength(std::string_view text) {
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) {
    return 1;
  }
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) {
    return 0;
  }
  // The second byte alone decides about overlong forms, surrogates and the end of Unicode.
  const unsigned char low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned char high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (byte(1) < low || byte(1) > high) {
    return 0;
  }
  for (std::size_t i = 2; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) {
      return 0;
    }
  }
  return length;
}

bool isUtf8(std::string_view bytes) {
  for (;;) {
    bytes.remove_prefix(lengthOfAscii(bytes));
    while (!bytes.empty() && static_cast<unsigned char>(bytes[0]) < 0x80) {
      bytes.remove_prefix(1);
    }
    if (bytes.empty()) {
      return true;
    }
    const std::size_t length = characterLength(bytes);
    if (length == 0) {
      return false;
    }
    bytes.remove_prefix(length);
  }
}

std::string repairedUtf8(std::string_view bytes) {
  std::string result;
  result.reserve(bytes.size());
  while (!bytes.empty()) {
    const std::size_t length = characterLength(bytes);
    if (length == 0) {
      appendUtf8(result, kReplacement);
      bytes.remove_prefix(1);
    } else {
      result.append(bytes.substr(0, length));
      bytes.remove_prefix(length);
    }
  }
  return result;
}

void appendUtf8(std::string& text, std::uint32_t character) {
  char bytes[4];
  text.append(bytes, writeUtf8(bytes, character));
}

std::uint32_t nextCharacter(std::string_view& text) {
  const std::size_t length = characterLength(text);
  if (length <= 1) {
    const std::uint32_t character =
        length == 1 ? static_cast<unsigned char>(text[0]) : kReplacement;
    text.remove_prefix(1);
    return character;
  }
  std::uint32_t character = static_cast<unsigned char>(text[0]) & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    character = (character << 6) | (static_cast<unsigned char>(text[i]) & 0x3FU);
  }
  text.remove_prefix(length);
  return character;
}

char* writeUtf8FromUtf16(std::string_view bytes, bool bigEndian, char* to) {
  const auto unit = [bytes, bigEndian](std::size_t at) -> std::uint32_t {
    const std::uint32_t first = static_cast<unsigned char>(bytes[at]);
    const std::uint32_t second = static_cast<unsigned char>(bytes[at + 1]);
    return bigEndian ? first << 8 | second : second << 8 | first;
  };
  const std::size_t ascii = copyAscii(bytes, bigEndian, to);
  to += ascii / 2;
  for (std::size_t at = ascii; at + 2 <= bytes.size(); at += 2) {
    std::uint32_t character = unit(at);
    if (character >= 0xD800 && character <= 0xDBFF && at + 4 <= bytes.size()) {
      const std::uint32_t low = unit(at + 2);
      if (low >= 0xDC00 && low <= 0xDFFF) {
        character = 0x10000 + ((character - 0xD800) << 10) + (low - 0xDC00);
        at += 2;
      }
    }
    to = writeUtf8(to, character);
  }
  return to;
}

std::string utf8FromUtf16(std::string_view bytes, bool bigEndian) {
  // No unit becomes more than three bytes.
  std::string result(bytes.size() / 2 * 3, '\0');
  const char* end = writeUtf8FromUtf16(bytes, bigEndian, result.data());
  result.resize(static_cast<std::size_t>(end - result.data()));
  return result;
}

}  // namespace mrziphoto::text

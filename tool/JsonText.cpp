#include "JsonText.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include <MRZiPhoto/platform/Text.h>

namespace mrziphoto::tool {
namespace {

// The 8-bit control characters are C2 80 to C2 9F.
constexpr unsigned char kLeadOfControls = 0xC2;
constexpr unsigned char kEndOfControls = 0xA0;

enum class Treatment : unsigned char { plain, escaped, perhapsControl };

constexpr std::array<Treatment, 256> kTreatments = [] {
  std::array<Treatment, 256> treatments{};
  for (std::size_t byte = 0; byte < 0x20; ++byte) {
    treatments.at(byte) = Treatment::escaped;
  }
  treatments['"'] = Treatment::escaped;
  treatments['\\'] = Treatment::escaped;
  treatments[0x7F] = Treatment::escaped;
  treatments[kLeadOfControls] = Treatment::perhapsControl;
  return treatments;
}();

constexpr std::array kShortEscapes{
    std::pair{'"', '"'},  std::pair{'\\', '\\'}, std::pair{'\n', 'n'}, std::pair{'\t', 't'},
    std::pair{'\r', 'r'}, std::pair{'\b', 'b'},  std::pair{'\f', 'f'},
};

void appendEscape(std::string& out, unsigned char character) {
  for (const auto& [plain, letter] : kShortEscapes) {
    if (static_cast<unsigned char>(plain) == character) {
      out += '\\';
      out += letter;
      return;
    }
  }
  constexpr std::string_view kDigits = "0123456789abcdef";
  out += "\\u00";
  out += kDigits[character >> 4U];
  out += kDigits[character & 0xFU];
}

bool isAscii(std::string_view text) {
  unsigned char bits = 0;
  for (const char c : text) {
    bits |= static_cast<unsigned char>(c);
  }
  return bits < 0x80;
}

/// How many of the bytes from `begin` on stand for themselves, counted by eight.
std::size_t plainEights(std::string_view text, std::size_t begin) {
  constexpr std::uint64_t kOnes = 0x0101010101010101U;
  constexpr std::uint64_t kHighBits = 0x80 * kOnes;
  // The high bit of a byte is set where the byte is zero, or where one before it is.
  const auto zeros = [](std::uint64_t bytes) { return (bytes - kOnes) & ~bytes & kHighBits; };
  std::size_t i = begin;
  for (std::uint64_t bytes = 0; text.size() - i >= sizeof bytes; i += sizeof bytes) {
    std::memcpy(&bytes, text.data() + i, sizeof bytes);
    const std::uint64_t below = (bytes - 0x20 * kOnes) & ~bytes & kHighBits;
    if ((below | zeros(bytes ^ '"' * kOnes) | zeros(bytes ^ '\\' * kOnes) |
         zeros(bytes ^ 0x7F * kOnes) | zeros(bytes ^ kLeadOfControls * kOnes)) != 0) {
      break;
    }
  }
  return i - begin;
}

void appendEscaped(std::string& out, std::string_view text) {
  std::size_t begin = 0;
  for (std::size_t i = plainEights(text, 0); i < text.size(); ++i) {
    auto byte = static_cast<unsigned char>(text[i]);
    const Treatment treatment = kTreatments.at(byte);
    if (treatment == Treatment::plain) {
      continue;
    }
    const std::size_t at = i;
    if (treatment == Treatment::perhapsControl) {
      byte = static_cast<unsigned char>(text[i + 1]);
      if (byte >= kEndOfControls) {
        continue;
      }
      ++i;
    }
    out.append(text, begin, at - begin);
    appendEscape(out, byte);
    begin = i + 1;
  }
  out.append(text, begin);
}

}  // namespace

void JsonText::appendQuoted(std::string& out, std::string_view text) {
  out += '"';
  if (isAscii(text) || text::isUtf8(text)) {
    appendEscaped(out, text);
  } else {
    appendEscaped(out, text::repairedUtf8(text));
  }
  out += '"';
}

void JsonText::separate() {
  if (std::exchange(_needsComma, true)) {
    *_out += ',';
  }
}

void JsonText::word(std::string_view word) {
  separate();
  *_out += word;
}

void JsonText::text(std::string_view text) {
  separate();
  appendQuoted(*_out, text);
}

void JsonText::open(char bracket) {
  separate();
  *_out += bracket;
  _needsComma = false;
}

void JsonText::close(char bracket) {
  *_out += bracket;
  _needsComma = true;
}

void JsonText::name(std::string_view name) {
  text(name);
  *_out += ':';
  _needsComma = false;
}

}  // namespace mrziphoto::tool

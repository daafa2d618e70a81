#include "JsonText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>

#include <MRZiPhoto/values/detail/Text.h>

#include "TerminalText.h"

namespace mrziphoto::tool {
namespace {

enum class Treatment : unsigned char { plain, escaped, perhapsSteering };

constexpr std::array<Treatment, 256> kTreatments = [] {
  std::array<Treatment, 256> treatments{};
  for (std::size_t byte = 0; byte < 0x20; ++byte) {
    treatments.at(byte) = Treatment::escaped;
  }
  treatments['"'] = Treatment::escaped;
  treatments['\\'] = Treatment::escaped;
  treatments[0x7F] = Treatment::escaped;
  // The first bytes of all other characters that steer terminals.
  for (const std::size_t lead : {0xC2, 0xD8, 0xE2, 0xF3}) {
    treatments.at(lead) = Treatment::perhapsSteering;
  }
  return treatments;
}();

constexpr std::array kShortEscapes{
    std::pair{'"', '"'},  std::pair{'\\', '\\'}, std::pair{'\n', 'n'}, std::pair{'\t', 't'},
    std::pair{'\r', 'r'}, std::pair{'\b', 'b'},  std::pair{'\f', 'f'},
};
constexpr std::size_t kAlwaysShort = 3;  // of these, from the first on

using ControlCharacters = JsonText::ControlCharacters;

void appendUnit(std::string& out, std::uint32_t unit) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  out += "\\u";
  for (const unsigned shift : {12U, 8U, 4U, 0U}) {
    out += kDigits[unit >> shift & 0xFU];
  }
}

void appendEscape(std::string& out, std::uint32_t character, ControlCharacters controls) {
  const bool isShort = controls == ControlCharacters::shortForms;
  for (const auto& [plain, letter] :
       std::span(kShortEscapes).first(isShort ? kShortEscapes.size() : kAlwaysShort)) {
    if (static_cast<unsigned char>(plain) == character) {
      out += '\\';
      out += letter;
      return;
    }
  }
  if (character >= 0x10000) {
    appendUnit(out, 0xD800 + ((character - 0x10000) >> 10U));
    appendUnit(out, 0xDC00 + (character & 0x3FFU));
  } else {
    appendUnit(out, character);
  }
}

/// How many bytes at the beginning stand for themselves, counted by eight.
std::size_t plainEights(std::string_view text) {
  constexpr std::uint64_t kOnes = 0x0101010101010101U;
  constexpr std::uint64_t kHighBits = 0x80 * kOnes;
  // The high bit of a byte is set where the byte is zero, or where one before it is.
  const auto zeros = [](std::uint64_t bytes) { return (bytes - kOnes) & ~bytes & kHighBits; };
  std::size_t i = 0;
  for (std::uint64_t bytes = 0; text.size() - i >= sizeof bytes; i += sizeof bytes) {
    std::memcpy(&bytes, text.data() + i, sizeof bytes);
    const std::uint64_t below = (bytes - 0x20 * kOnes) & ~bytes & kHighBits;
    const std::uint64_t outsideAscii = bytes & kHighBits;
    if ((below | outsideAscii | zeros(bytes ^ '"' * kOnes) | zeros(bytes ^ '\\' * kOnes) |
         zeros(bytes ^ 0x7F * kOnes)) != 0) {
      break;
    }
  }
  return i;
}

/// Appends well-formed text with the escapes that JSON asks for, and with all characters escaped
/// that steer a terminal where `isHarmless`. So many bytes at its beginning stand for themselves.
void appendWellFormed(std::string& out, std::string_view text, std::size_t plain,
                      ControlCharacters controls, bool isHarmless) {
  std::size_t begin = 0;
  for (std::size_t i = plain; i < text.size();) {
    const Treatment treatment = kTreatments.at(static_cast<unsigned char>(text[i]));
    if (treatment == Treatment::plain) {
      i += std::max<std::size_t>(plainEights(text.substr(i)), 1);
      continue;
    }
    std::string_view rest = text.substr(i);
    const std::uint32_t character = text::nextCharacter(rest);
    const std::size_t end = text.size() - rest.size();
    if (treatment == Treatment::escaped || (isHarmless && steersTerminal(character))) {
      out.append(text, begin, i - begin);
      appendEscape(out, character, controls);
      begin = end;
    }
    i = end;
  }
  out.append(text, begin);
}

void appendEscaped(std::string& out, std::string_view text, ControlCharacters controls,
                   bool isHarmless) {
  const std::size_t plain = plainEights(text);
  if (text::isUtf8(text.substr(plain))) {
    appendWellFormed(out, text, plain, controls, isHarmless);
  } else {
    appendWellFormed(out, text::repairedUtf8(text), 0, controls, isHarmless);
  }
}

}  // namespace

void JsonText::appendQuoted(std::string& out, std::string_view text, ControlCharacters controls) {
  out += '"';
  appendEscaped(out, text, controls, true);
  out += '"';
}

void JsonText::appendUnquoted(std::string& out, std::string_view text) {
  appendEscaped(out, text, ControlCharacters::numbered, false);
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
  appendQuoted(*_out, text, _controls);
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

#include "TerminalText.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include <MRZiPhoto/platform/Text.h>

namespace mrziphoto::tool {
namespace {

struct CharacterRange {
  std::uint32_t first;
  std::uint32_t last;
  std::size_t columns;
};

// Only what is not one column wide; in ascending order.
constexpr std::array kWidths{
    CharacterRange{0x0300, 0x036F, 0},    // combining marks, as Mac file names are full of
    CharacterRange{0x1100, 0x115F, 2},    // Hangul syllable beginnings
    CharacterRange{0x200B, 0x200F, 0},    // joiners and direction marks
    CharacterRange{0x20D0, 0x20F0, 0},    // combining marks for symbols
    CharacterRange{0x2E80, 0xA4CF, 2},    // CJK, Kana, Yi
    CharacterRange{0xAC00, 0xD7A3, 2},    // Hangul
    CharacterRange{0xF900, 0xFAFF, 2},    // CJK compatibility
    CharacterRange{0xFE00, 0xFE0F, 0},    // variation selectors
    CharacterRange{0xFE30, 0xFE4F, 2},    // CJK compatibility forms
    CharacterRange{0xFF00, 0xFF60, 2},    // full-width forms
    CharacterRange{0x1F300, 0x1FAFF, 2},  // pictographs
    CharacterRange{0x20000, 0x3FFFD, 2},  // further CJK
};
static_assert(std::ranges::is_sorted(kWidths, {}, &CharacterRange::first));

std::size_t columnsOf(std::uint32_t character) {
  const auto* range = std::ranges::lower_bound(kWidths, character, {}, &CharacterRange::last);
  return range != kWidths.end() && character >= range->first ? range->columns : 1;
}

constexpr bool isControl(std::uint32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

}  // namespace

std::string terminalText(std::string_view bytes) {
  const std::string repaired = text::repairedUtf8(bytes);
  std::string result;
  result.reserve(repaired.size());
  for (std::string_view rest = repaired; !rest.empty();) {
    const std::string_view before = rest;
    if (isControl(text::nextCharacter(rest))) {
      result += ' ';
    } else {
      result += before.substr(0, before.size() - rest.size());
    }
  }
  return result;
}

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    width += columnsOf(text::nextCharacter(text));
  }
  return width;
}

std::string cutToWidth(std::string_view text, std::size_t width) {
  if (displayWidth(text) <= width) {
    return std::string(text);
  }
  std::size_t taken = 0;
  std::string_view rest = text;
  while (!rest.empty()) {
    std::string_view behind = rest;
    taken += columnsOf(text::nextCharacter(behind));
    if (taken >= width) {
      break;
    }
    rest = behind;
  }
  return std::string(text.substr(0, text.size() - rest.size())) + "…";
}

}  // namespace mrziphoto::tool

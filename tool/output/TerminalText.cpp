#include "TerminalText.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include <MRZiPhoto/values/detail/Text.h>

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

/// What happens to a character that steers terminals.
enum class Treatment { kept, blank, leftOut };

struct Steering {
  std::uint32_t first;
  std::uint32_t last;
  Treatment treatment;
};

// In ascending order.
constexpr std::array kSteering{
    Steering{0x00, 0x1F, Treatment::blank},          // control characters
    Steering{0x7F, 0x9F, Treatment::blank},          // delete, and the control characters of 8 bits
    Steering{0x061C, 0x061C, Treatment::leftOut},    // Arabic letter mark
    Steering{0x200E, 0x200F, Treatment::leftOut},    // marks of direction
    Steering{0x2028, 0x2029, Treatment::blank},      // separators of lines and paragraphs
    Steering{0x202A, 0x202E, Treatment::leftOut},    // embeddings and overrides of direction
    Steering{0x2066, 0x2069, Treatment::leftOut},    // isolates of direction
    Steering{0xE0000, 0xE007F, Treatment::leftOut},  // tags
};
static_assert(std::ranges::is_sorted(kSteering, {}, &Steering::first));

Treatment treatmentOf(std::uint32_t character) {
  const auto* range = std::ranges::lower_bound(kSteering, character, {}, &Steering::last);
  return range != kSteering.end() && character >= range->first ? range->treatment : Treatment::kept;
}

bool isPrintableAscii(char c) { return c >= 0x20 && c < 0x7F; }

std::string harmless(std::string_view bytes, bool keepsLines) {
  if (std::ranges::all_of(bytes, isPrintableAscii)) {
    return std::string(bytes);
  }
  const std::string repaired = text::repairedUtf8(bytes);
  std::string result;
  result.reserve(repaired.size());
  for (std::string_view rest = repaired; !rest.empty();) {
    const std::string_view before = rest;
    const std::uint32_t character = text::nextCharacter(rest);
    const Treatment treatment = treatmentOf(character);
    if (treatment == Treatment::kept || (keepsLines && character == '\n')) {
      result += before.substr(0, before.size() - rest.size());
    } else if (treatment == Treatment::blank) {
      result += ' ';
    }
  }
  return result;
}

/// The length in bytes of as much of the text as `width` columns hold, combining marks included.
std::size_t bytesWithin(std::string_view text, std::size_t width) {
  std::string_view rest = text;
  for (std::size_t taken = 0; !rest.empty();) {
    std::string_view behind = rest;
    taken += columnsOf(text::nextCharacter(behind));
    if (taken > width) {
      break;
    }
    rest = behind;
  }
  return text.size() - rest.size();
}

}  // namespace

bool steersTerminal(std::uint32_t character) { return treatmentOf(character) != Treatment::kept; }

std::string terminalText(std::string_view bytes) { return harmless(bytes, false); }

std::string terminalLines(std::string_view bytes) { return harmless(bytes, true); }

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
  return std::string(text.substr(0, bytesWithin(text, std::max<std::size_t>(width, 1) - 1))) + "…";
}

std::string cutPathToWidth(std::string_view path, std::size_t width) {
  if (displayWidth(path) <= width || width < 2) {
    return cutToWidth(path, width);
  }
  // Half of the room is for each end, and more for a long name.
  const std::size_t room = width - 1;
  const std::size_t name = displayWidth(path.substr(path.rfind('/') + 1));
  const std::size_t end = std::min(std::max(name, room / 2), room);
  std::string_view behind = path;
  for (std::size_t left = displayWidth(path); left > end;) {
    left -= columnsOf(text::nextCharacter(behind));
  }
  return std::string(path.substr(0, bytesWithin(path, room - end))) + "…" + std::string(behind);
}

std::vector<std::string> wrapToWidth(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  do {
    std::size_t end = bytesWithin(text, width);
    if (end == 0 && !text.empty()) {
      std::string_view behind = text;
      static_cast<void>(text::nextCharacter(behind));
      end = text.size() - behind.size();
    }
    std::size_t next = end;
    if (end < text.size()) {
      const std::size_t blank = text.rfind(' ', end);
      if (blank != std::string_view::npos && 2 * blank >= end) {
        end = blank;
        next = blank + 1;
      }
    }
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(next);
  } while (!text.empty());
  return lines;
}

}  // namespace mrziphoto::tool

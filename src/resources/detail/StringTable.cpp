#include "StringTable.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "../../values/detail/Text.h"

namespace mrziphoto::detail {
namespace {

std::string utf8From(std::string_view bytes) {
  constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
  constexpr std::string_view kBigEndianMark = "\xFE\xFF";
  constexpr std::string_view kLittleEndianMark = "\xFF\xFE";
  if (bytes.starts_with(kBigEndianMark) || bytes.starts_with(kLittleEndianMark)) {
    return text::utf8FromUtf16(bytes.substr(2), bytes.starts_with(kBigEndianMark));
  }
  return text::repairedUtf8(bytes.starts_with(kUtf8Mark) ? bytes.substr(kUtf8Mark.size()) : bytes);
}

class Reader {
 public:
  explicit Reader(std::string_view text) : _left(text) {}

  /// Takes blanks and comments; false when a comment does not end.
  bool skipToNext() {
    for (;;) {
      _left.remove_prefix(std::min(_left.find_first_not_of(" \t\r\n"), _left.size()));
      if (_left.starts_with("//")) {
        _left.remove_prefix(std::min(_left.find('\n'), _left.size()));
      } else if (_left.starts_with("/*")) {
        const std::size_t end = _left.find("*/", 2);
        if (end == std::string_view::npos) {
          return false;
        }
        _left.remove_prefix(end + 2);
      } else {
        return true;
      }
    }
  }

  [[nodiscard]] bool atEnd() const { return _left.empty(); }

  bool take(char expected) {
    if (!skipToNext() || !_left.starts_with(expected)) {
      return false;
    }
    _left.remove_prefix(1);
    return true;
  }

  /// Takes a text in quotes; nothing when there is none, or it does not end.
  std::optional<std::string> takeQuoted() {
    if (!take('"')) {
      return std::nullopt;
    }
    std::string result;
    for (;;) {
      const std::size_t plain = _left.find_first_of("\"\\");
      if (plain == std::string_view::npos) {
        return std::nullopt;
      }
      result += _left.substr(0, plain);
      const bool ends = _left[plain] == '"';
      _left.remove_prefix(plain + 1);
      if (ends) {
        return result;
      }
      if (_left.empty()) {
        return std::nullopt;
      }
      takeEscape(result);
    }
  }

 private:
  /// Takes what follows a backslash.
  void takeEscape(std::string& out) {
    const char kind = _left.front();
    _left.remove_prefix(1);
    if (kind == 'U' || kind == 'u') {
      text::appendUtf8(out, takeCharacter());
      return;
    }
    constexpr std::string_view kLetters = "ntr";
    constexpr std::string_view kMeanings = "\n\t\r";
    const std::size_t found = kLetters.find(kind);
    out += found == std::string_view::npos ? kind : kMeanings[found];
  }

  /// The character that a unit, or two that belong together, stand for.
  std::uint32_t takeCharacter() {
    const std::uint32_t unit = takeUnit();
    const bool isHigh = unit >= 0xD800 && unit <= 0xDBFF;
    if (!isHigh || !(_left.starts_with("\\U") || _left.starts_with("\\u"))) {
      return unit;
    }
    const std::string_view before = _left;
    _left.remove_prefix(2);
    const std::uint32_t low = takeUnit();
    if (low < 0xDC00 || low > 0xDFFF) {
      _left = before;
      return unit;
    }
    return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
  }

  std::uint32_t takeUnit() {
    constexpr std::size_t kDigits = 4;
    std::uint32_t unit = 0;
    const std::string_view digits = _left.substr(0, kDigits);
    const char* end = std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16).ptr;
    _left.remove_prefix(static_cast<std::size_t>(end - digits.data()));
    return unit;
  }

  std::string_view _left;
};

}  // namespace

std::optional<StringTable> stringTableFromBytes(std::string_view bytes) {
  const std::string text = utf8From(bytes);
  Reader reader(text);
  StringTable table;
  while (reader.skipToNext()) {
    if (reader.atEnd()) {
      return table;
    }
    auto key = reader.takeQuoted();
    auto value = key && reader.take('=') ? reader.takeQuoted() : std::nullopt;
    if (!value || !reader.take(';')) {
      return std::nullopt;
    }
    table.insert_or_assign(std::move(*key), std::move(*value));
  }
  return std::nullopt;
}

}  // namespace mrziphoto::detail

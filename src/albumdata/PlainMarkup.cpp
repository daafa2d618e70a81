#include "detail/PlainMarkup.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "../values/detail/Text.h"

namespace mrziphoto {
namespace {

using detail::XmlFailure;
using detail::XmlScanner;

constexpr std::string_view kEndTag = "</";

/// The length of a character that stands for itself in a text without being printable ASCII; 0 for
/// others.
std::size_t foreignCharacter(std::string_view text) {
  if (text.empty()) {
    return 0;
  }
  if (detail::xml::isAscii(text.front())) {
    return text.front() == '\n' || text.front() == '\t' ? 1 : 0;
  }
  // Of the characters beyond ASCII, XML forbids only these two.
  const bool isNoCharacter = text.starts_with("\xEF\xBF\xBE") || text.starts_with("\xEF\xBF\xBF");
  return isNoCharacter ? 0 : text::characterLength(text);
}

/// The length of a name that is packed into a word.
unsigned lengthOf(PlainMarkup::Tag name) {
  return (static_cast<unsigned>(std::bit_width(name)) + 7) / 8;
}

/// Whether the end tag of that element stands there.
inline bool isEndTag(const char* at, PlainMarkup::Tag name, unsigned length) {
  return at[0] == '<' && at[1] == '/' &&
         detail::xml::lowest(detail::xml::load(at + 2), length) == name && at[2 + length] == '>';
}

}  // namespace

PlainMarkup::PlainMarkup(Read read, std::size_t window)
    : _read(std::move(read)), _window(new char[window + kMargin]), _size(window) {
  _at = _end = _tag = _window.get();
  std::fill_n(_window.get(), kMargin, '\0');
}

bool PlainMarkup::readOn() {
  ++_moves;
  const auto kept = static_cast<std::size_t>(_end - _tag);
  const std::size_t passed = static_cast<std::size_t>(_at - _tag);
  if (kept > _size / 2) {
    // Never much more than the longest text takes.
    std::unique_ptr<char[]> larger(new char[2 * _size + kMargin]);
    std::copy(_tag, _end, larger.get());
    _window = std::move(larger);
    _size *= 2;
  } else {
    std::copy(_tag, _end, _window.get());
  }
  char* end = _window.get() + kept;
  if (!_isAtEnd) {
    const std::size_t got = _read({end, _size - kept});
    _isAtEnd = got == 0;
    end += got;
  }
  std::fill_n(end, kMargin, '\0');
  _end = end;
  _tag = _window.get();
  _at = _tag + passed;
  return !_isAtEnd;
}

void PlainMarkup::prolog() {
  while (readOn()) {
    try {
      passProlog();
      return;
    } catch (const XmlFailure&) {
      // It may go on behind the window; no prolog is longer than `kWindow`.
      if (_size > kWindow) {
        break;
      }
    }
  }
  throw Unusual{};
}

void PlainMarkup::passProlog() {
  // No document in another encoding begins with '<' and goes on in ASCII as far as a declaration or
  // a tag does.
  XmlScanner scanner({_at, static_cast<std::size_t>(_end - _at)});
  const std::string_view encoding = scanner.declaration();
  constexpr std::string_view kUtf8 = "UTF-8";
  const auto isSame = [](char one, char upper) {
    return one == upper || (upper >= 'A' && one == (upper | 0x20));
  };
  if (!encoding.empty() && !std::ranges::equal(encoding, kUtf8, isSame)) {
    throw Unusual{};
  }
  const XmlScanner::Tag root = scanner.rootTag();
  if (root.name != "plist" || root.kind != XmlScanner::Tag::Kind::start) {
    throw Unusual{};
  }
  _at += scanner.offset();
  _tag = _at;
}

PlainMarkup::Tag PlainMarkup::unusualNext(const char* at) {
  _tag = _at = at;
  // White space may fill one window after the other.
  while (at == _end) {
    if (!readOn()) {
      throw Unusual{};
    }
    at = detail::xml::passAll(detail::xml::kSpace, _at, _end);
    _tag = _at = at;
  }
  const bool isEnd = at[0] == '<' && at[1] == '/';
  const std::uint64_t word = detail::xml::load(at + (isEnd ? 2 : 1));
  const unsigned length = detail::xml::lettersIn(word);
  const char* behind = at + (isEnd ? 2 : 1) + length;
  const bool isEmpty = !isEnd && *behind == '/';
  behind += isEmpty ? 1 : 0;
  if (*at == '<' && length != 0 && length < sizeof word && *behind == '>') {
    _at = behind + 1;
    return detail::xml::lowest(word, length) | (isEnd ? kEnd : isEmpty ? kEmpty : 0);
  }
  constexpr std::ptrdiff_t kLongestTag = 10;
  if (_end - at >= kLongestTag || !readOn()) {
    throw Unusual{};
  }
  return next();
}

std::string_view PlainMarkup::textOf(Tag element) {
  const unsigned length = lengthOf(element);
  const char* end = detail::xml::passPlain(_at);
  while (!isEndTag(end, element, length)) {
    const std::size_t passed = foreignCharacter({end, static_cast<std::size_t>(_end - end)});
    if (passed == 0) {
      return unusualTextOf(element);
    }
    end = detail::xml::passPlain(end + passed);
  }
  const std::string_view text(_at, static_cast<std::size_t>(end - _at));
  _at = end + kEndTag.size() + length + 1;
  return text;
}

std::string_view PlainMarkup::unusualTextOf(Tag element) {
  const unsigned length = lengthOf(element);
  const auto tagSize = static_cast<std::ptrdiff_t>(kEndTag.size() + length + 1);
  const char* end = nullptr;
  for (std::ptrdiff_t searched = 0; end == nullptr;) {
    end = static_cast<const char*>(
        std::memchr(_at + searched, '<', static_cast<std::size_t>(_end - _at - searched)));
    if (end == nullptr || _end - end < tagSize) {
      searched = (end == nullptr ? _end : end) - _at;
      end = nullptr;
      if (!readOn()) {
        throw Unusual{};
      }
    }
  }
  if (!isEndTag(end, element, length)) {
    throw Unusual{};
  }
  try {
    XmlScanner scanner({_tag, static_cast<std::size_t>(end + tagSize - _tag)});
    const XmlScanner::Text text = scanner.textOf(scanner.rootTag());
    _at = end + tagSize;
    if (!text.isVerbatim) {
      _text = text.characters;
    }
    return text.isVerbatim ? text.characters : std::string_view(_text);
  } catch (const XmlFailure&) {
    throw Unusual{};
  }
}

void PlainMarkup::keepPassedSince(const Place& place, Passage& passage) const {
  passage._bytes.clear();
  if (place.moves == _moves) {
    passage._bytes.assign(place.at, _at);
    passage._tag = static_cast<std::size_t>(_tag - place.at);
  }
}

void PlainMarkup::finish() {
  for (;;) {
    while (detail::xml::isOf(detail::xml::kSpace, *_at)) {
      ++_at;
    }
    _tag = _at;
    if (_at != _end) {
      throw Unusual{};
    }
    if (!readOn()) {
      return;
    }
  }
}

}  // namespace mrziphoto

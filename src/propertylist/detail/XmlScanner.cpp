#include "XmlScanner.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "../../values/detail/Text.h"
#include "XmlWords.h"

namespace mrziphoto::detail {

using namespace xml;

namespace {

struct Entity {
  std::string_view name;
  char character;
};

constexpr std::array kEntities{Entity{"amp", '&'}, Entity{"lt", '<'}, Entity{"gt", '>'},
                               Entity{"quot", '"'}, Entity{"apos", '\''}};

// Names of places where a document may end too early.
constexpr std::string_view kTag = "a tag";
constexpr std::string_view kReference = "a reference";

std::string shortened(std::string_view text) {
  constexpr std::size_t kShown = 60;
  if (text.size() <= kShown) {
    return std::string(text);
  }
  text = text.substr(0, kShown);
  while (!text::isUtf8(text)) {
    text.remove_suffix(1);
  }
  return std::string(text) + "...";
}

}  // namespace

std::string inBrackets(std::string_view name) { return "<" + shortened(name) + ">"; }

std::string inQuotes(std::string_view text) { return "\"" + shortened(text) + "\""; }

void XmlScanner::fail(std::string what) const { throw XmlFailure{std::move(what), offset()}; }

void XmlScanner::fail(const Tag& tag, std::string what) const {
  throw XmlFailure{std::move(what), static_cast<std::size_t>(tag.name.data() - 1 - _start)};
}

void XmlScanner::failAtEnd(std::string_view construct) const {
  fail("ends inside " + std::string(construct));
}

void XmlScanner::failInside(const Tag& element) const {
  if (_at == _end) {
    failAtEnd(inBrackets(element.name));
  }
  fail((isAhead('<') ? "has a CDATA section inside " : "has text inside ") +
       inBrackets(element.name));
}

void XmlScanner::failLacking(std::string_view what, std::string_view construct) const {
  if (_at == _end) {
    failAtEnd(construct);
  }
  fail("lacks " + std::string(what) + " in " + std::string(construct));
}

void XmlScanner::expectSpace(std::string_view construct) {
  if (!passSpace()) {
    failLacking("white space", construct);
  }
}

std::uint32_t XmlScanner::passCharacter() {
  const std::size_t length = text::characterLength(rest());
  if (length == 0) {
    fail("has bytes that are not UTF-8");
  }
  std::string_view passed(_at, length);
  const std::uint32_t character = text::nextCharacter(passed);
  if (!isAllowed(character)) {
    fail("has a character that XML does not allow");
  }
  _at += length;
  return character;
}

std::string_view XmlScanner::passUntil(std::string_view terminator, std::string_view construct) {
  const char* start = _at;
  while (!isAhead(terminator)) {
    if (_at == _end) {
      failAtEnd(construct);
    }
    passCharacter();
  }
  const char* end = _at;
  _at += terminator.size();
  return {start, static_cast<std::size_t>(end - start)};
}

std::string_view XmlScanner::name(std::string_view construct) {
  const char* start = _at;
  if (_at != _end && isOf(kNameStart, *_at)) {
    _at = passAll(kName, _at, _end);
  }
  if (_at != _end && !isAscii(*_at)) {
    passForeignName(start);
  }
  if (_at == start) {
    failLacking("a name", construct);
  }
  return {start, static_cast<std::size_t>(_at - start)};
}

/// Passes the rest of a name that is not all ASCII.
void XmlScanner::passForeignName(const char* start) {
  while (_at != _end) {
    const char* before = _at;
    if (!isNameCharacter(passCharacter(), before == start)) {
      _at = before;
      return;
    }
  }
}

char XmlScanner::openingQuote(std::string_view construct) {
  const char quote = next(construct);
  if (quote != '"' && quote != '\'') {
    failLacking("a quotation mark", construct);
  }
  ++_at;
  return quote;
}

std::string_view XmlScanner::quoted(std::string_view construct) {
  const char quote = openingQuote(construct);
  return passUntil({&quote, 1}, construct);
}

XmlScanner::Tag XmlScanner::rootTag() {
  passMiscellany();
  if (passIf("<!DOCTYPE")) {
    passDocumentType();
    passMiscellany();
  }
  if (_at == _end) {
    fail("has no element");
  }
  if (*_at != '<') {
    fail("has text before its root element");
  }
  return startTag();
}

XmlScanner::Tag XmlScanner::nextTag(const Tag& element) {
  passMiscellany();
  if (isAhead("</")) {
    passEndTag(element);
    return {element.name, element.word, Tag::Kind::end};
  }
  if (!isAhead('<') || isAhead("<!")) {
    failInside(element);
  }
  return startTag();
}

void XmlScanner::finish() {
  passMiscellany();
  if (_at != _end) {
    fail("goes on after its root element");
  }
}

inline void XmlScanner::passMiscellany() {
  passSpace();
  while ((isAhead("<!") || isAhead("<?")) && passCommentOrInstruction()) {
    passSpace();
  }
}

inline XmlScanner::Tag XmlScanner::startTag() {
  ++_at;
  if (rest().size() > sizeof(std::uint64_t)) {
    const std::uint64_t word = load(_at);
    const unsigned length = lettersIn(word);
    if (length != 0 && length < sizeof word && _at[length] == '>') {
      const std::string_view element(_at, length);
      _at += length + 1;
      return {element, lowest(word, length), Tag::Kind::start};
    }
  }
  return unusualStartTag();
}

XmlScanner::Tag XmlScanner::unusualStartTag() {
  const std::string_view element = name(kTag);
  Tag::Kind kind = Tag::Kind::start;
  if (!isAhead('>')) {
    passAttributes();
    kind = passIf("/") ? Tag::Kind::empty : kind;
  }
  expect('>', kTag);
  return {element, wordOf(element), kind};
}

void XmlScanner::passAttributes() {
  std::vector<std::string_view> names;
  for (;;) {
    const bool isSeparated = passSpace();
    const char character = next(kTag);
    if (character == '>' || character == '/') {
      break;
    }
    if (!isSeparated) {
      fail("lacks white space in a tag");
    }
    names.push_back(name(kTag));
    passSpace();
    expect('=', kTag);
    passSpace();
    passAttributeValue();
  }
  std::ranges::sort(names);
  if (const auto twice = std::ranges::adjacent_find(names); twice != names.end()) {
    fail("has the attribute " + inQuotes(*twice) + " twice in a tag");
  }
}

void XmlScanner::passAttributeValue() {
  const char quote = openingQuote(kTag);
  while (next(kTag) != quote) {
    if (*_at == '<') {
      fail("has a \"<\" in an attribute");
    }
    if (*_at == '&') {
      reference();
    } else {
      passCharacter();
    }
  }
  ++_at;
}

inline void XmlScanner::passEndTag(const Tag& element) {
  _at += std::string_view("</").size();
  const std::size_t length = element.name.size();
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  if (length < kWord && rest().size() > kWord &&
      lowest(load(_at), static_cast<unsigned>(length)) == element.word && _at[length] == '>') {
    _at += length + 1;
  } else {
    passUnusualEndTag(element);
  }
}

void XmlScanner::passUnusualEndTag(const Tag& element) {
  const std::string_view closed = name(kTag);
  if (closed != element.name) {
    _at = closed.data() - std::string_view("</").size();
    fail("closes " + inBrackets(element.name) + " with " + inBrackets("/" + std::string(closed)));
  }
  passSpace();
  expect('>', kTag);
}

XmlScanner::Text XmlScanner::textOf(const Tag& element) {
  const char* start = _at;
  _at = passPlain(_at, _end);
  const std::string_view text(start, static_cast<std::size_t>(_at - start));
  if (!isAhead("</")) {
    return unusualTextOf(element, start);
  }
  passEndTag(element);
  return {text, true};
}

/// `textOf` for a text that does not end with the plain characters from `start` on.
XmlScanner::Text XmlScanner::unusualTextOf(const Tag& element, const char* start) {
  _sawReturn = false;
  passCharacters(element);
  std::string_view run(start, static_cast<std::size_t>(_at - start));
  const bool isVerbatim = !_sawReturn && isAhead("</");
  if (!isVerbatim) {
    _rewritten.clear();
    rewrite(run);
    while (!isAhead("</")) {
      rewriteMarkup(element);
      rewrite(passCharacters(element));
    }
    run = _rewritten;
  }
  passEndTag(element);
  return {run, isVerbatim};
}

/// Passes characters that stand for themselves, or for the end of a line.
std::string_view XmlScanner::passCharacters(const Tag& element) {
  const char* start = _at;
  while (!isAhead('<') && !isAhead('&')) {
    if (_at == _end) {
      failAtEnd(inBrackets(element.name));
    }
    if (isAhead("]]>")) {
      fail("has \"]]>\" in a text");
    }
    _sawReturn = _sawReturn || *_at == '\r';
    passCharacter();
    _at = passPlain(_at, _end);
  }
  return {start, static_cast<std::size_t>(_at - start)};
}

/// Copies characters, with each end of a line as one line feed.
void XmlScanner::rewrite(std::string_view run) {
  for (std::size_t at = run.find('\r'); at != std::string_view::npos; at = run.find('\r')) {
    _rewritten.append(run.substr(0, at));
    _rewritten += '\n';
    run.remove_prefix(at + (run.substr(at).starts_with("\r\n") ? 2 : 1));
  }
  _rewritten.append(run);
}

/// Copies the text of a reference or a CDATA section, and skips comments.
void XmlScanner::rewriteMarkup(const Tag& element) {
  if (*_at == '&') {
    text::appendUtf8(_rewritten, reference());
  } else if (passIf("<![CDATA[")) {
    rewrite(passUntil("]]>", "a CDATA section"));
  } else if (!passCommentOrInstruction()) {
    fail("has an element inside " + inBrackets(element.name));
  }
}

std::uint32_t XmlScanner::reference() {
  ++_at;
  if (passIf("#")) {
    return characterReference();
  }
  const char* start = _at;
  const std::string_view entity = name(kReference);
  expect(';', kReference);
  const auto found = std::ranges::find(kEntities, entity, &Entity::name);
  if (found == kEntities.end()) {
    _at = start;
    fail("refers to the unknown entity " + inQuotes(entity));
  }
  return static_cast<std::uint32_t>(found->character);
}

std::uint32_t XmlScanner::characterReference() {
  const std::uint32_t base = passIf("x") ? 16 : 10;
  constexpr std::string_view kHexDigits = "0123456789abcdefABCDEF";
  constexpr std::uint32_t kBeyondUnicode = 0x110000;
  std::uint32_t character = 0;
  const char* start = _at;
  for (; next(kReference) != ';'; ++_at) {
    std::size_t digit = kHexDigits.find(*_at);
    digit -= digit >= 16 && digit < kHexDigits.size() ? 6 : 0;
    if (digit >= base) {
      fail("has a malformed character reference");
    }
    character = std::min(character * base + static_cast<std::uint32_t>(digit), kBeyondUnicode);
  }
  if (_at == start || !isAllowed(character)) {
    fail("refers to a character that XML does not allow");
  }
  ++_at;
  return character;
}

}  // namespace mrziphoto::detail

#include "XmlScanner.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <span>
#include <utility>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "../Text.h"

namespace mrziphoto::detail {
namespace {

// Classes of ASCII characters.
constexpr std::uint8_t kSpace = 1;
constexpr std::uint8_t kNameStart = 2;
constexpr std::uint8_t kName = 4;
constexpr std::uint8_t kPlain = 8;  // means nothing but itself in text, nor needs a check
constexpr std::uint8_t kPublicId = 16;
constexpr std::uint8_t kDeclared = 32;  // in the values of an XML declaration
constexpr std::uint8_t kLetter = 64;

constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr std::string_view kDigits = "0123456789";

constexpr auto kClasses = [] {
  std::array<std::uint8_t, 256> classes{};
  const auto add = [&classes](std::string_view characters, int bits) {
    for (const char character : characters) {
      classes[static_cast<unsigned char>(character)] |= static_cast<std::uint8_t>(bits);
    }
  };
  for (char character = ' '; character != '\x7F'; ++character) {
    add({&character, 1}, kPlain);
  }
  add("\t\n\x7F", kPlain);
  for (const char markup : std::string_view("<&]")) {
    classes[static_cast<unsigned char>(markup)] = 0;
  }
  add(" \t\r\n", kSpace);
  add(kLetters, kLetter | kNameStart | kName | kPublicId | kDeclared);
  add(kDigits, kName | kPublicId | kDeclared);
  add(":_", kNameStart | kName);
  add("-.", kName);
  add(" \r\n-'()+,./:=?;!*#@$_%", kPublicId);
  add("-._", kDeclared);
  return classes;
}();

constexpr bool isOf(std::uint8_t classes, char character) {
  return (kClasses[static_cast<unsigned char>(character)] & classes) != 0;
}

constexpr bool isAscii(char character) { return static_cast<unsigned char>(character) < 0x80; }

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

constexpr std::array kNameStartRanges{
    Range{0xC0, 0xD6},     Range{0xD8, 0xF6},     Range{0xF8, 0x2FF},    Range{0x370, 0x37D},
    Range{0x37F, 0x1FFF},  Range{0x200C, 0x200D}, Range{0x2070, 0x218F}, Range{0x2C00, 0x2FEF},
    Range{0x3001, 0xD7FF}, Range{0xF900, 0xFDCF}, Range{0xFDF0, 0xFFFD}, Range{0x10000, 0xEFFFF}};
constexpr std::array kFurtherNameRanges{Range{0xB7, 0xB7}, Range{0x300, 0x36F},
                                        Range{0x203F, 0x2040}};

constexpr bool isWithin(std::span<const Range> ranges, std::uint32_t character) {
  return std::ranges::any_of(ranges, [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

struct Entity {
  std::string_view name;
  char character;
};

constexpr std::array kEntities{Entity{"amp", '&'}, Entity{"lt", '<'}, Entity{"gt", '>'},
                               Entity{"quot", '"'}, Entity{"apos", '\''}};

constexpr std::array<std::string_view, 4> kMarkupDeclarations{"<!ELEMENT", "<!ATTLIST", "<!ENTITY",
                                                              "<!NOTATION"};

constexpr std::array<std::string_view, 3> kDeclarationParts{"version", "encoding", "standalone"};

// How the places are called where a document may end too early.
constexpr std::string_view kDeclaration = "its XML declaration";
constexpr std::string_view kDocumentType = "its document type";
constexpr std::string_view kTag = "a tag";
constexpr std::string_view kInstruction = "a processing instruction";
constexpr std::string_view kReference = "a reference";

/// The next eight bytes, the first one lowest.
inline std::uint64_t load(const char* at) {
  std::uint64_t word = 0;
  std::memcpy(&word, at, sizeof word);
  return std::endian::native == std::endian::little ? word : __builtin_bswap64(word);
}

/// A word that holds the same byte eight times.
constexpr std::uint64_t eightOf(std::uint8_t byte) {
  return std::uint64_t{0x0101010101010101} * byte;
}

/// How many of eight bytes, from the lowest on, are letters from a to z.
inline std::size_t lettersIn(std::uint64_t word) {
  constexpr std::uint64_t kTop = eightOf(0x80);
  const std::uint64_t low = word & ~kTop;
  const std::uint64_t reachesA = low + eightOf(0x80 - 'a');
  const std::uint64_t exceedsZ = low + eightOf(0x7F - 'z');
  const std::uint64_t others = ~(reachesA & ~exceedsZ & ~word) & kTop;
  return static_cast<std::size_t>(std::countr_zero(others)) / 8;
}

/// The lowest bytes of a word, fewer than eight.
inline std::uint64_t lowest(std::uint64_t word, std::size_t count) {
  return word & ((std::uint64_t{1} << (8 * count)) - 1);
}

/// The first character of another class.
inline const char* passAll(std::uint8_t classes, const char* at, const char* end) {
  while (at != end && isOf(classes, *at)) {
    ++at;
  }
  return at;
}

/// The first character that may mean something, or needs a check.
const char* passPlain(const char* at, const char* end) {
#ifdef __SSE2__
  while (end - at >= 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    // As signed numbers, control characters and the bytes of other characters lie below the blank.
    const __m128i found = _mm_or_si128(_mm_or_si128(_mm_cmplt_epi8(block, _mm_set1_epi8(' ')),
                                                    _mm_cmpeq_epi8(block, _mm_set1_epi8('<'))),
                                       _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8('&')),
                                                    _mm_cmpeq_epi8(block, _mm_set1_epi8(']'))));
    const auto places = static_cast<unsigned>(_mm_movemask_epi8(found));
    if (places != 0) {
      return at + std::countr_zero(places);
    }
    at += 16;
  }
#endif
  return passAll(kPlain, at, end);
}

constexpr bool isNameCharacter(std::uint32_t character, bool isFirst) {
  if (character < 0x80) {
    return isOf(isFirst ? kNameStart : kName, static_cast<char>(character));
  }
  return isWithin(kNameStartRanges, character) ||
         (!isFirst && isWithin(kFurtherNameRanges, character));
}

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

inline char XmlScanner::next(std::string_view construct) const {
  if (_at == _end) {
    failAtEnd(construct);
  }
  return *_at;
}

inline void XmlScanner::expect(char character, std::string_view construct) {
  if (!isAhead(character)) {
    failLacking(inQuotes({&character, 1}), construct);
  }
  ++_at;
}

inline bool XmlScanner::passSpace() {
  const char* before = _at;
  _at = passAll(kSpace, _at, _end);
  return _at != before;
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

inline std::string_view XmlScanner::name(std::string_view construct) {
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

std::string_view XmlScanner::declaration() {
  constexpr std::string_view kBegin = "<?xml";
  if (!isAhead(kBegin) || rest().size() == kBegin.size() || !isOf(kSpace, _at[kBegin.size()])) {
    return {};
  }
  _at += kBegin.size();
  std::array<std::string_view, kDeclarationParts.size()> values;
  bool isSeparated = false;
  for (std::size_t i = 0; i < values.size(); ++i) {
    isSeparated = passSpace() || isSeparated;
    if (isSeparated && passIf(kDeclarationParts[i])) {
      values[i] = declarationValue();
      isSeparated = false;
    } else if (i == 0) {
      fail("names no version in its XML declaration");
    }
  }
  const auto& [version, encoding, standalone] = values;
  passSpace();
  const bool isNamed =
      encoding.data() == nullptr || (!encoding.empty() && isOf(kLetter, encoding.front()));
  const bool isDecided = standalone.data() == nullptr || standalone == "yes" || standalone == "no";
  if (!passIf("?>") || !isNamed || !isDecided) {
    fail("has a malformed XML declaration");
  }
  return encoding;
}

std::string_view XmlScanner::declarationValue() {
  passSpace();
  expect('=', kDeclaration);
  passSpace();
  const std::string_view value = quoted(kDeclaration);
  if (!std::ranges::all_of(value, [](char each) { return isOf(kDeclared, each); })) {
    fail("has a malformed value in its XML declaration");
  }
  return value;
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

bool XmlScanner::passCommentOrInstruction() {
  if (passIf("<!--")) {
    passComment();
    return true;
  }
  if (passIf("<?")) {
    passInstruction();
    return true;
  }
  return false;
}

void XmlScanner::passComment() {
  passUntil("--", "a comment");
  if (next("a comment") != '>') {
    fail("has \"--\" inside a comment");
  }
  ++_at;
}

void XmlScanner::passInstruction() {
  const std::string_view target = name(kInstruction);
  if (target.size() == 3 && (target[0] | 0x20) == 'x' && (target[1] | 0x20) == 'm' &&
      (target[2] | 0x20) == 'l') {
    fail("has an XML declaration that does not stand at its beginning");
  }
  if (!passIf("?>")) {
    expectSpace(kInstruction);
    passUntil("?>", kInstruction);
  }
}

void XmlScanner::passDocumentType() {
  expectSpace(kDocumentType);
  name(kDocumentType);
  const bool isSeparated = passSpace();
  if (isSeparated && passIf("SYSTEM")) {
    expectSpace(kDocumentType);
    quoted(kDocumentType);
  } else if (isSeparated && passIf("PUBLIC")) {
    expectSpace(kDocumentType);
    const std::string_view identifier = quoted(kDocumentType);
    if (!std::ranges::all_of(identifier, [](char each) { return isOf(kPublicId, each); })) {
      fail("has a malformed public identifier in its document type");
    }
    expectSpace(kDocumentType);
    quoted(kDocumentType);
  }
  passSpace();
  if (passIf("[")) {
    passInternalSubset();
    passSpace();
  }
  expect('>', kDocumentType);
}

void XmlScanner::passInternalSubset() {
  while (!passIf("]")) {
    if (passIf("%")) {
      name(kDocumentType);
      expect(';', kDocumentType);
    } else if (!passSpace() && !passCommentOrInstruction()) {
      passMarkupDeclaration();
    }
  }
}

void XmlScanner::passMarkupDeclaration() {
  if (std::ranges::none_of(kMarkupDeclarations, [this](auto begin) { return passIf(begin); })) {
    failLacking("a declaration", kDocumentType);
  }
  expectSpace(kDocumentType);
  while (!passIf(">")) {
    const char character = next(kDocumentType);
    if (character == '"' || character == '\'') {
      quoted(kDocumentType);
    } else if (character == '<' || character == '&' || character == '[' || character == ']') {
      fail("has a stray " + inQuotes({&character, 1}) + " in its document type");
    } else {
      passCharacter();
    }
  }
}

inline XmlScanner::Tag XmlScanner::startTag() {
  ++_at;
  if (rest().size() > sizeof(std::uint64_t)) {
    const std::uint64_t word = load(_at);
    const std::size_t length = lettersIn(word);
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
  if (length < kWord && rest().size() > kWord && lowest(load(_at), length) == element.word &&
      _at[length] == '>') {
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

/// The same where the text does not end with the plain characters from `start` on.
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

/// Takes characters over, with each end of a line as one line feed.
void XmlScanner::rewrite(std::string_view run) {
  for (std::size_t at = run.find('\r'); at != std::string_view::npos; at = run.find('\r')) {
    _rewritten.append(run.substr(0, at));
    _rewritten += '\n';
    run.remove_prefix(at + (run.substr(at).starts_with("\r\n") ? 2 : 1));
  }
  _rewritten.append(run);
}

/// Takes over what a reference or a CDATA section means; comments mean nothing.
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

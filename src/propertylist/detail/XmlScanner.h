#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "XmlCharacters.h"

namespace mrziphoto::detail {

/// What is wrong with a document, to follow the words "the property list", and where.
struct XmlFailure {
  std::string what;
  std::size_t offset;  // in the text that the scanner walks over
};

/// A name as a tag, and a text in quotes, as failures show them: cut when they are long.
[[nodiscard]] std::string inBrackets(std::string_view name);
[[nodiscard]] std::string inQuotes(std::string_view text);

/// Walks over an XML document that is encoded in UTF-8, tag by tag, and checks that it is
/// well-formed. Every operation throws XmlFailure where it is not.
///
/// The caller knows the open elements, so the scanner needs no stack: the tag that an operation
/// takes is the start tag of the innermost open element.
///
/// Names may hold the characters that the fifth edition of XML 1.0 allows. A document type is
/// skipped: of an internal subset only characters and quotes are checked, and references to
/// entities that it defines are refused.
class XmlScanner {
 public:
  struct Tag {
    enum class Kind : std::uint8_t { start, empty, end };
    std::string_view name;  // lies in the document
    std::uint64_t word;     // `wordOf` the name
    Kind kind;
  };
  struct Text {
    std::string_view characters;
    bool isVerbatim;  // lies in the document; otherwise it lasts until the next text is asked for
  };

  /// The first eight characters of a name as one number, by which shorter names are told apart.
  static constexpr std::uint64_t wordOf(std::string_view name) {
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < name.size() && i < sizeof word; ++i) {
      word |= std::uint64_t{static_cast<unsigned char>(name[i])} << (8 * i);
    }
    return word;
  }

  /// Stands at the first character of a document, which must outlive the scanner.
  explicit XmlScanner(std::string_view document)
      : _start(document.data()), _at(_start), _end(_start + document.size()) {}

  /// Passes the XML declaration, if the document begins with one. Answers the encoding that it
  /// names, or an empty text.
  std::string_view declaration();
  /// Passes all that stands before the root element, and its start tag.
  Tag rootTag();
  /// Passes the next tag inside an element, which is its end tag when nothing is left in it.
  /// Between the two may stand white space, comments and processing instructions, but no text.
  Tag nextTag(const Tag& element);
  /// Passes the rest of an element that holds nothing but text, with its end tag.
  Text textOf(const Tag& element);
  /// Passes all that may follow the root element. Nothing else may.
  void finish();

  /// Bytes passed so far.
  [[nodiscard]] std::size_t offset() const { return static_cast<std::size_t>(_at - _start); }
  /// Throws an XmlFailure for the character that the scanner stands at.
  [[noreturn]] void fail(std::string what) const;
  /// Throws an XmlFailure for the place of a tag.
  [[noreturn]] void fail(const Tag& tag, std::string what) const;

 private:
  [[nodiscard]] std::string_view rest() const {
    return {_at, static_cast<std::size_t>(_end - _at)};
  }
  [[nodiscard]] bool isAhead(std::string_view text) const { return rest().starts_with(text); }
  [[nodiscard]] bool isAhead(char character) const { return _at != _end && *_at == character; }
  [[noreturn]] void failAtEnd(std::string_view construct) const;
  [[noreturn]] void failInside(const Tag& element) const;
  [[noreturn]] void failLacking(std::string_view what, std::string_view construct) const;
  [[nodiscard]] char next(std::string_view construct) const {
    if (_at == _end) {
      failAtEnd(construct);
    }
    return *_at;
  }
  bool passIf(std::string_view text) {
    const bool passes = isAhead(text);
    _at += passes ? text.size() : 0;
    return passes;
  }
  void expect(char character, std::string_view construct) {
    if (!isAhead(character)) {
      failLacking(inQuotes({&character, 1}), construct);
    }
    ++_at;
  }
  bool passSpace() {
    const char* before = _at;
    _at = xml::passAll(xml::kSpace, _at, _end);
    return _at != before;
  }
  void expectSpace(std::string_view construct);
  std::uint32_t passCharacter();
  std::string_view passUntil(std::string_view terminator, std::string_view construct);
  std::string_view name(std::string_view construct);
  void passForeignName(const char* start);
  char openingQuote(std::string_view construct);
  std::string_view quoted(std::string_view construct);

  void passMiscellany();
  bool passCommentOrInstruction();
  void passComment();
  void passInstruction();
  std::string_view declarationValue();
  void passDocumentType();
  void passInternalSubset();
  void passMarkupDeclaration();
  Tag startTag();
  Tag unusualStartTag();
  void passAttributes();
  void passAttributeValue();
  void passEndTag(const Tag& element);
  void passUnusualEndTag(const Tag& element);
  Text unusualTextOf(const Tag& element, const char* start);
  std::string_view passCharacters(const Tag& element);
  void rewrite(std::string_view run);
  void rewriteMarkup(const Tag& element);
  std::uint32_t reference();
  std::uint32_t characterReference();

  const char* _start;
  const char* _at;
  const char* _end;
  bool _sawReturn = false;  // among the characters of the present text
  std::string _rewritten;
};

}  // namespace mrziphoto::detail

#include <algorithm>
#include <array>

#include "XmlScanner.h"

namespace mrziphoto::detail {

using namespace xml;

namespace {

constexpr std::array<std::string_view, 4> kMarkupDeclarations{"<!ELEMENT", "<!ATTLIST", "<!ENTITY",
                                                              "<!NOTATION"};

constexpr std::array<std::string_view, 3> kDeclarationParts{"version", "encoding", "standalone"};

// Names of places where a document may end too early.
constexpr std::string_view kDeclaration = "its XML declaration";
constexpr std::string_view kDocumentType = "its document type";
constexpr std::string_view kInstruction = "a processing instruction";

}  // namespace

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

}  // namespace mrziphoto::detail

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "../../values/Data.h"

namespace mrziphoto::detail {

/// The characters of an XML document as UTF-8, whatever encoding it is written in, and the way back
/// from a character to its place in the file.
///
/// A byte order mark is taken off. Bytes that mean nothing in their encoding end the text; UTF-8 is
/// handed on as it is, for the scanner to check.
class XmlText {
 public:
  /// Recognises UTF-16 by its byte order mark or its first character. All other documents are taken
  /// as UTF-8 until `obeyDeclaration` says better.
  explicit XmlText(const Data& file);

  /// Reads the text anew when its XML declaration names another encoding than the one it was read
  /// in. Throws XmlFailure for a malformed declaration, an unknown encoding, and one in which the
  /// declaration itself would read differently.
  void obeyDeclaration();

  [[nodiscard]] const Data& utf8() const { return _utf8; }
  /// True when bytes that mean nothing in the encoding end the text before the file ends.
  [[nodiscard]] bool isCut() const { return _isCut; }
  /// The name of the encoding.
  [[nodiscard]] const std::string& encoding() const { return _encoding; }

  /// The line, counted from 1, of the character at that place in the text.
  [[nodiscard]] std::size_t lineOf(std::size_t place) const;
  /// The byte of the file, counted from 0, at which the character at that place in the text begins.
  [[nodiscard]] std::size_t byteOf(std::size_t place) const;

 private:
  /// False when nobody knows the encoding.
  bool readAs(const std::string& encoding);

  Data _file;           // behind the byte order mark
  std::size_t _marked;  // length of the byte order mark
  std::string _encoding;
  Data _utf8;
  bool _isCut = false;
};

}  // namespace mrziphoto::detail

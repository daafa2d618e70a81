#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "../values/Data.h"
#include "../values/Export.h"
#include "../values/Value.h"

namespace mrziphoto {

/// Reads an XML property list: one value, in a <plist> element or alone.
///
/// - <dict> and <array> become dictionaries and arrays. Of equal keys the later value counts. Empty
///   ones are one shared object, not to be changed.
/// - <string> and <data> become texts and bytes. A text that lies in `bytes` just as it is meant
///   (in UTF-8, without references, CDATA sections or carriage returns) is a slice of it and keeps
///   it alive.
/// - <integer>, decimal or after "0x" hexadecimal, becomes an integer of the archives' type "q", or
///   "Q" above its range; <real> a double ("nan", "inf" and "infinity" included); <true/> and
///   <false/> booleans; <date> an instant. White space around these is ignored.
///
/// The encoding is told by a byte order mark, by the zero bytes of UTF-16, or by the XML
/// declaration; otherwise it is UTF-8. Attributes are ignored. Entities that a document defines
/// for itself are not expanded.
///
/// Throws NSException "NSParseErrorException" when the document is not well-formed XML, when it is
/// no property list, and when it is nested deeper than `Limits::nesting`. The reason is
/// one sentence with line and byte, such as "the property list ends inside <dict> at line 7, byte
/// 312". Lines count from 1, bytes of the file from 0; the byte is also the exception's offset.
[[nodiscard]] MRZIPHOTO_EXPORT Value propertyListFromData(const Data& bytes);

/// Writes an XML property list in UTF-8 element by element, an element a line, indented by tabs.
///
/// Every operation throws NSException "NSInvalidArgumentException" for what a property list cannot
/// hold: nothing, objects, dates outside the years 1 to 9999, characters that XML does not allow,
/// and values nested deeper than a reader takes.
class MRZIPHOTO_EXPORT PropertyListWriter {
 public:
  /// What stands before and after the one value of a whole property list.
  void beginPropertyList();
  void endPropertyList();

  void beginDictionary() { begin("<dict>"); }
  void endDictionary() { end("</dict>"); }
  void beginArray() { begin("<array>"); }
  void endArray() { end("</array>"); }
  /// Before each value of a dictionary.
  void key(std::string_view text) { element("key", text); }

  void string(std::string_view text) { element("string", text); }
  void integer(std::int64_t number);
  /// A number in decimal digits.
  void real(std::string_view digits) { element("real", digits); }
  void boolean(bool value) { line(value ? "<true/>" : "<false/>"); }
  /// A value with all that is in it, dictionaries in the order of their entries. The fraction of a
  /// date's second is left out.
  void value(const Value& value);

  /// What has been written and not been taken yet. A long list is written out piece by piece.
  [[nodiscard]] std::string& text() { return _text; }

 private:
  void begin(std::string_view tag);
  void end(std::string_view tag);
  void line(std::string_view text);
  void element(std::string_view name, std::string_view text);
  void data(std::string_view bytes);

  std::string _text;
  std::uint32_t _nesting = 0;
};

/// A value as a whole XML property list. Throws as `PropertyListWriter` does.
[[nodiscard]] MRZIPHOTO_EXPORT std::string propertyListFromValue(const Value& value);

}  // namespace mrziphoto

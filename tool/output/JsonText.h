#pragma once

#include <string>
#include <string_view>

namespace mrziphoto::tool {

/// Appends one JSON value after the other to a text, with the commas that lists and objects need.
class JsonText {
 public:
  /// How control characters are escaped for which JSON has both a short form and a number: "\t" or
  /// "\u0009". A line feed always has its short form.
  enum class ControlCharacters : bool { shortForms, numbered };

  /// `out` outlives this object.
  explicit JsonText(std::string& out, ControlCharacters controls = ControlCharacters::shortForms)
      : _out(&out), _controls(controls) {}

  void null() { word("null"); }
  void boolean(bool value) { word(value ? "true" : "false"); }
  /// A number, already written as JSON writes numbers.
  void number(std::string_view digits) { word(digits); }
  void text(std::string_view text);
  void beginList() { open('['); }
  void endList() { close(']'); }
  void beginObject() { open('{'); }
  /// Before each value of an object.
  void name(std::string_view name);
  void endObject() { close('}'); }
  /// The next value follows other text, and takes no comma.
  void restart() { _needsComma = false; }

  /// Appends a text in quotes. What is no valid UTF-8 becomes U+FFFD; every character that would
  /// steer a terminal is escaped.
  static void appendQuoted(std::string& out, std::string_view text,
                           ControlCharacters controls = ControlCharacters::shortForms);
  /// Appends a text for a line that `terminalText` has yet to make harmless: without quotes, only
  /// with the escapes that JSON asks for, control characters numbered.
  static void appendUnquoted(std::string& out, std::string_view text);

 private:
  void separate();
  void word(std::string_view word);
  void open(char bracket);
  void close(char bracket);

  std::string* _out;
  ControlCharacters _controls;
  bool _needsComma = false;
};

}  // namespace mrziphoto::tool

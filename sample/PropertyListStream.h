#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "sample/OutputFile.h"

namespace mrziphoto::sample {

/// Writes an XML property list piece by piece, so that the longest list needs no memory.
class PropertyListStream {
 public:
  explicit PropertyListStream(std::string path);

  void beginDictionary() { open("<dict>\n"); }
  void endDictionary() { close("</dict>\n"); }
  void beginArray() { open("<array>\n"); }
  void endArray() { close("</array>\n"); }
  void key(std::string_view text) { element("key", text); }
  void string(std::string_view text) { element("string", text); }
  /// The number as a text.
  void string(std::uint32_t number);
  void integer(std::int64_t number);
  void real(double number);
  void boolean(bool value) { line(value ? "<true/>" : "<false/>"); }

  /// A key with its value.
  void string(std::string_view name, std::string_view text) { key(name), string(text); }
  void integer(std::string_view name, std::int64_t number) { key(name), integer(number); }
  void real(std::string_view name, double number) { key(name), real(number); }
  void beginDictionary(std::string_view name) { key(name), beginDictionary(); }
  void beginArray(std::string_view name) { key(name), beginArray(); }

  /// Ends the document. The file is not whole before.
  void finish();

 private:
  void open(std::string_view tag);
  void close(std::string_view tag);
  void indent() { _text.append(_depth, '\t'); }
  void line(std::string_view text);
  void element(std::string_view tag, std::string_view text);
  void writeText();

  OutputFile _file;
  std::string _text;  // not yet written
  std::size_t _depth = 0;
};

}  // namespace mrziphoto::sample

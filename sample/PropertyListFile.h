#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <MRZiPhoto/propertylist/PropertyList.h>

#include "sample/OutputFile.h"

namespace mrziphoto::sample {

/// An XML property list on its way into a file: the longest list needs no memory.
class PropertyListFile : public PropertyListWriter {
 public:
  explicit PropertyListFile(std::string path);

  using PropertyListWriter::beginArray;
  using PropertyListWriter::beginDictionary;
  using PropertyListWriter::integer;
  using PropertyListWriter::string;

  // A key with its value.
  void string(std::string_view name, std::string_view text) { key(name), string(text); }
  void integer(std::string_view name, std::int64_t number) { key(name), integer(number); }
  /// With six digits behind the point.
  void real(std::string_view name, double number);
  void beginDictionary(std::string_view name) { key(name), beginDictionary(); }
  void beginArray(std::string_view name) { key(name), beginArray(); }

  /// Writes out what has come together when it is much.
  void flushIfLarge();
  /// Ends the property list. The file is not whole before.
  void finish();

 private:
  void flush();

  OutputFile _file;
};

}  // namespace mrziphoto::sample

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "JsonText.h"
#include "RecordWriter.h"

namespace mrziphoto::tool {

/// Records as JSON objects, one a line: either one array, or lines that are a value each.
class JsonWriter final : public RecordWriter {
 public:
  enum class Layout { array, lines };

  JsonWriter(Output& output, const std::vector<std::string>& fields, Layout layout);

  void beginRecord() override;
  void endRecord() override;
  void finish() override;

  void null() override { value().null(); }
  void boolean(bool value) override { this->value().boolean(value); }
  void number(std::string_view digits) override { value().number(digits); }
  void text(std::string_view text) override { value().text(text); }
  void beginList() override;
  void endList() override;
  void beginObject() override;
  void name(std::string_view name) override { _json.name(name); }
  void endObject() override;

 private:
  JsonText& value();

  Output& _output;
  JsonText _json;
  // The text before the value of each field.
  std::vector<std::string> _labels;
  Layout _layout;
  std::size_t _nextField = 0;
  std::size_t _depth = 0;  // in lists and objects inside a record
  bool _hasRecords = false;
};

}  // namespace mrziphoto::tool

#include "JsonWriter.h"

#include <utility>

#include "Output.h"

namespace mrziphoto::tool {

JsonWriter::JsonWriter(Output& output, const std::vector<std::string>& fields, Layout layout)
    : _output(output), _json(output.text()), _layout(layout) {
  for (const std::string& field : fields) {
    std::string& label = _labels.emplace_back(1, _labels.empty() ? '{' : ',');
    JsonText::appendQuoted(label, field);
    label += ':';
  }
}

void JsonWriter::beginRecord() {
  const bool isFirst = !std::exchange(_hasRecords, true);
  if (_layout == Layout::array) {
    _output.text() += isFirst ? "[\n" : ",\n";
  }
  _nextField = 0;
}

void JsonWriter::endRecord() {
  _output.text() += _layout == Layout::array ? "}" : "}\n";
  _output.flushIfLarge();
}

void JsonWriter::finish() {
  if (_layout == Layout::array) {
    _output.text() += _hasRecords ? "\n]\n" : "[]\n";
  }
}

JsonText& JsonWriter::value() {
  if (_depth == 0) {
    _output.text() += _labels[_nextField++];
    _json.restart();
  }
  return _json;
}

void JsonWriter::beginList() {
  value().beginList();
  ++_depth;
}

void JsonWriter::endList() {
  _json.endList();
  --_depth;
}

void JsonWriter::beginObject() {
  value().beginObject();
  ++_depth;
}

void JsonWriter::endObject() {
  _json.endObject();
  --_depth;
}

}  // namespace mrziphoto::tool

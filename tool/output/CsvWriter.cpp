#include "CsvWriter.h"

#include <MRZiPhoto/values/detail/Text.h>

#include "Output.h"
#include "TerminalText.h"

namespace mrziphoto::tool {
namespace {

void appendQuoted(std::string& out, std::string_view text) {
  out += '"';
  for (const char c : text) {
    if (c == '"') {
      out += '"';
    }
    out += c;
  }
  out += '"';
}

}  // namespace

CsvWriter::CsvWriter(Output& output, const std::vector<std::string>& fields)
    : _output(output), _columns(fields.size()) {
  for (const std::string& field : fields) {
    cell(field, CellKind::text);
  }
  endRecord();
}

void CsvWriter::endRecord() {
  _output.text() += '\n';
  _output.flushIfLarge();
}

void CsvWriter::cell(std::string_view text, CellKind /*kind*/) {
  std::string& out = _output.text();
  if (_column++ > 0) {
    out += ',';
  }
  std::string shown;
  if (_output.terminal().isThere) {
    text = shown = terminalText(text);
  } else if (!text::isUtf8(text)) {
    text = shown = text::repairedUtf8(text);
  }
  // An empty line would be no record at all.
  const bool isEmptyLine = text.empty() && _columns == 1;
  if (isEmptyLine || text.find_first_of(",\"\r\n") != std::string_view::npos) {
    appendQuoted(out, text);
  } else {
    out += text;
  }
}

}  // namespace mrziphoto::tool

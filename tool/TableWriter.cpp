#include "TableWriter.h"

#include <algorithm>
#include <utility>

#include "Output.h"
#include "TerminalText.h"

namespace mrziphoto::tool {
namespace {

constexpr std::string_view kGap = "  ";
constexpr std::size_t kRowsThatSettleTheWidths = 200;
constexpr std::size_t kWidestCell = 48;

void appendBlanks(std::string& out, std::size_t used, std::size_t width) {
  if (used < width) {
    out.append(width - used, ' ');
  }
}

}  // namespace

TableWriter::TableWriter(Output& output, const std::vector<std::string>& fields)
    : _output(output), _isForTerminal(Output::isTerminal()), _widths(fields.size()) {
  for (const std::string& field : fields) {
    cell(field, CellKind::text);
  }
  endRecord();
}

void TableWriter::cell(std::string_view text, CellKind kind) {
  std::string shown = terminalText(text);
  const bool isLast = _row.size() + 1 == _widths.size();
  if (_isForTerminal && (!isLast || kind == CellKind::list)) {
    shown = cutToWidth(shown, kWidestCell);
  }
  const std::size_t width = displayWidth(shown);
  _row.push_back({std::move(shown), width, kind == CellKind::number});
}

void TableWriter::endRecord() {
  if (_isSettled) {
    write(_row);
    _output.flushIfLarge();
    return;
  }
  for (std::size_t i = 0; i < _row.size(); ++i) {
    _widths[i] = std::max(_widths[i], _row[i].width);
  }
  _keptRows.push_back(std::move(_row));
  if (_keptRows.size() == kRowsThatSettleTheWidths) {
    writeKeptRows();
  }
}

void TableWriter::writeKeptRows() {
  for (const Row& row : std::exchange(_keptRows, {})) {
    write(row);
  }
  _isSettled = true;
}

void TableWriter::write(const Row& row) {
  std::string& out = _output.text();
  for (std::size_t i = 0; i < row.size(); ++i) {
    const Cell& cell = row[i];
    if (i > 0) {
      out += kGap;
    }
    if (cell.isNumber) {
      appendBlanks(out, cell.width, _widths[i]);
    }
    out += cell.text;
    if (!cell.isNumber) {
      appendBlanks(out, cell.width, _widths[i]);
    }
  }
  out.erase(out.find_last_not_of(' ') + 1);
  out += '\n';
}

LineTableWriter::LineTableWriter(Output& output, std::vector<std::string> fields)
    : _output(output), _names(std::move(fields)) {
  for (const std::string& name : _names) {
    _width = std::max(_width, name.size());
  }
}

void LineTableWriter::cell(std::string_view text, CellKind /*kind*/) {
  std::string& out = _output.text();
  const std::string& name = _names[_column++];
  out += name;
  if (!text.empty()) {
    appendBlanks(out, name.size(), _width);
    out += kGap;
    out += terminalText(text);
  }
  out += '\n';
}

}  // namespace mrziphoto::tool

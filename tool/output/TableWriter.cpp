#include "TableWriter.h"

#include <algorithm>
#include <utility>

#include "TerminalText.h"

namespace mrziphoto::tool {
namespace {

constexpr std::string_view kGap = "  ";
constexpr std::string_view kIndent = "    ";
constexpr std::size_t kRowsThatSettleTheWidths = 200;
// No column of texts is cut to less, nor is a value wrapped in less room. Wider columns give way
// first, so that dates and short names stay whole while that does.
constexpr std::size_t kOrdinaryColumn = 20;
constexpr std::size_t kNarrowestWideColumn = 12;
constexpr std::size_t kNarrowestColumn = 8;
constexpr std::size_t kNarrowestValue = 20;

void appendBlanks(std::string& out, std::size_t used, std::size_t width) {
  if (used < width) {
    out.append(width - used, ' ');
  }
}

std::string cut(const std::string& text, std::size_t width) {
  return text.starts_with('/') ? cutPathToWidth(text, width) : cutToWidth(text, width);
}

}  // namespace

FieldLines::FieldLines(const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    _nameWidth = std::max(_nameWidth, displayWidth(name));
  }
}

void FieldLines::write(Output& output, std::string_view name, std::string_view value) const {
  std::string& out = output.text();
  const std::string shown = terminalText(value);
  out += output.heading(std::string(name));
  const std::size_t column = _nameWidth + kGap.size();
  const std::size_t width = output.terminal().width;
  if (!shown.empty() && output.terminal().isThere && column + displayWidth(shown) > width) {
    const bool isBeside = column + kNarrowestValue <= width;
    const std::size_t indent = isBeside ? column : kIndent.size();
    const std::size_t room = std::max(width, indent + kNarrowestColumn) - indent;
    bool isFirst = isBeside;
    for (const std::string& line : wrapToWidth(shown, room)) {
      if (std::exchange(isFirst, false)) {
        appendBlanks(out, displayWidth(name), indent);
      } else {
        out += '\n' + std::string(indent, ' ');
      }
      out += line;
    }
  } else if (!shown.empty()) {
    appendBlanks(out, displayWidth(name), column);
    out += shown;
  }
  out += '\n';
}

TableWriter::TableWriter(Output& output, const std::vector<std::string>& fields)
    : _output(output), _lines(fields) {
  for (const std::string& field : fields) {
    _columns.push_back({terminalText(field), displayWidth(field), false});
  }
}

void TableWriter::cell(std::string_view text, CellKind kind) {
  std::string shown = terminalText(text);
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
    _columns[i].width = std::max(_columns[i].width, _row[i].width);
    _columns[i].holdsNumbers |= _row[i].isNumber;
  }
  _keptRows.push_back(std::move(_row));
  if (_keptRows.size() == kRowsThatSettleTheWidths) {
    settle();
  }
}

std::size_t TableWriter::widthOfRows() const {
  std::size_t width = (_columns.size() - 1) * kGap.size();
  for (const Column& column : _columns) {
    width += column.width;
  }
  return width;
}

bool TableWriter::fit(std::size_t width) {
  std::vector<Column*> texts;
  std::vector<Column*> wideTexts;
  for (Column& column : _columns) {
    if (!column.holdsNumbers) {
      texts.push_back(&column);
      if (column.width > kOrdinaryColumn) {
        wideTexts.push_back(&column);
      }
      column.width = std::min(column.width, width);
    }
  }
  std::size_t whole = widthOfRows();
  const auto narrow = [&](const std::vector<Column*>& columns, std::size_t narrowest) {
    while (whole > width && !columns.empty()) {
      Column& widest = **std::ranges::max_element(columns, {}, &Column::width);
      if (widest.width <= narrowest) {
        return;
      }
      --widest.width;
      --whole;
    }
  };
  narrow(wideTexts, kNarrowestWideColumn);
  narrow(texts, kNarrowestColumn);
  // Rows to come may need what is left over.
  if (whole < width && !_columns.back().holdsNumbers) {
    _columns.back().width += width - whole;
  }
  return whole <= width;
}

void TableWriter::settle() {
  if (std::exchange(_isSettled, true)) {
    return;
  }
  if (_output.terminal().isThere && !_columns.empty()) {
    _isStacked = !fit(_output.terminal().width);
  }
  if (!_isStacked || _keptRows.empty()) {
    Row names;
    for (const Column& column : _columns) {
      names.push_back({column.name, displayWidth(column.name), false});
    }
    _output.text() += _output.heading(lineOf(names)) + '\n';
  }
  for (const Row& row : std::exchange(_keptRows, {})) {
    write(row);
  }
}

void TableWriter::write(const Row& row) {
  if (!_isStacked) {
    _output.text() += lineOf(row) + '\n';
    return;
  }
  if (std::exchange(_hasStacked, true)) {
    _output.text() += '\n';
  }
  for (std::size_t i = 0; i < row.size(); ++i) {
    _lines.write(_output, _columns[i].name, row[i].text);
  }
}

std::string TableWriter::lineOf(const Row& row) const {
  std::string line;
  for (std::size_t i = 0; i < row.size(); ++i) {
    const Cell& cell = row[i];
    const std::size_t width = _columns[i].width;
    if (i > 0) {
      line += kGap;
    }
    if (cell.isNumber) {
      appendBlanks(line, cell.width, width);
      line += cell.text;
    } else {
      const bool isCut = _output.terminal().isThere && !_isStacked && cell.width > width;
      const std::string text = isCut ? cut(cell.text, width) : cell.text;
      line += text;
      appendBlanks(line, isCut ? displayWidth(text) : cell.width, width);
    }
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

LineTableWriter::LineTableWriter(Output& output, std::vector<std::string> fields)
    : _output(output), _names(std::move(fields)), _lines(_names) {}

void LineTableWriter::cell(std::string_view text, CellKind /*kind*/) {
  _lines.write(_output, _names[_column++], text);
}

}  // namespace mrziphoto::tool

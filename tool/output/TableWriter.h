#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "CellWriter.h"
#include "Output.h"

namespace mrziphoto::tool {

/// One field a line, name and value. On a terminal long values go on below themselves.
class FieldLines {
 public:
  explicit FieldLines(const std::vector<std::string>& names);

  void write(Output& output, std::string_view name, std::string_view value) const;

 private:
  std::size_t _nameWidth = 0;
};

/// Records as the rows of a table for people to read. The first rows are kept until they have shown
/// how wide the columns are; later rows are written as they come.
///
/// On a terminal the rows fit its width: the widest columns of texts are cut, paths in the middle.
/// Where that would leave too little of them, the records stand one below the other, a field a
/// line.
class TableWriter final : public CellWriter {
 public:
  TableWriter(Output& output, const std::vector<std::string>& fields);

  void beginRecord() override { _row.clear(); }
  void endRecord() override;
  void finish() override { settle(); }

 private:
  struct Cell {
    std::string text;
    std::size_t width;
    bool isNumber;
  };
  using Row = std::vector<Cell>;
  struct Column {
    std::string name;
    std::size_t width;
    bool holdsNumbers;
  };

  void cell(std::string_view text, CellKind kind) override;
  [[nodiscard]] std::size_t widthOfRows() const;
  void settle();
  /// Narrows columns of texts until the rows have that width; false where it cannot be done.
  bool fit(std::size_t width);
  void write(const Row& row);
  [[nodiscard]] std::string lineOf(const Row& row) const;

  Output& _output;
  FieldLines _lines;
  std::vector<Column> _columns;
  Row _row;
  // Empty again once the widths are settled.
  std::vector<Row> _keptRows;
  bool _isSettled = false;
  bool _isStacked = false;
  bool _hasStacked = false;
};

/// One record, a field a line.
class LineTableWriter final : public CellWriter {
 public:
  LineTableWriter(Output& output, std::vector<std::string> fields);

  void beginRecord() override { _column = 0; }
  void endRecord() override {}
  void finish() override {}

 private:
  void cell(std::string_view text, CellKind kind) override;

  Output& _output;
  std::vector<std::string> _names;
  FieldLines _lines;
  std::size_t _column = 0;
};

}  // namespace mrziphoto::tool

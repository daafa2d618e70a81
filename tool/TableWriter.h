#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "CellWriter.h"

namespace mrziphoto::tool {

/// Records as the rows of a table for people to read. The first rows are kept until they have shown
/// how wide the columns are; later rows are written as they come. On a terminal, long cells end in
/// "…".
class TableWriter final : public CellWriter {
 public:
  TableWriter(Output& output, const std::vector<std::string>& fields);

  void beginRecord() override { _row.clear(); }
  void endRecord() override;
  void finish() override { writeKeptRows(); }

 private:
  struct Cell {
    std::string text;
    std::size_t width;
    bool isNumber;
  };
  using Row = std::vector<Cell>;

  void cell(std::string_view text, CellKind kind) override;
  void writeKeptRows();
  void write(const Row& row);

  Output& _output;
  bool _isForTerminal;
  std::vector<std::size_t> _widths;
  Row _row;
  // Empty again once the widths are settled.
  std::vector<Row> _keptRows;
  bool _isSettled = false;
};

/// One record, a field a line: name and value.
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
  std::size_t _width = 0;
  std::size_t _column = 0;
};

}  // namespace mrziphoto::tool

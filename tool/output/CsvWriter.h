#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "CellWriter.h"

namespace mrziphoto::tool {

/// Records as lines of comma-separated fields, below a line of field names. Quoted as RFC 4180
/// says; a line ends in a line feed. An absent value is an empty field. The texts are written as
/// they are, made harmless on a terminal only.
class CsvWriter final : public CellWriter {
 public:
  CsvWriter(Output& output, const std::vector<std::string>& fields);

  void beginRecord() override { _column = 0; }
  void endRecord() override;
  void finish() override {}

 private:
  void cell(std::string_view text, CellKind kind) override;

  Output& _output;
  std::size_t _columns;
  std::size_t _column = 0;
};

}  // namespace mrziphoto::tool

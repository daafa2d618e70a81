#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace mrziphoto {

using MarkdownRow = std::vector<std::string>;

/// The cells of a line "| a | b |", without the blanks and backquotes around them.
inline MarkdownRow markdownCells(const std::string& line) {
  MarkdownRow cells;
  std::istringstream rest(line.substr(1));
  for (std::string cell; std::getline(rest, cell, '|');) {
    constexpr std::string_view kAround = " `\r";
    const std::size_t first = cell.find_first_not_of(kAround);
    const std::size_t last = cell.find_last_not_of(kAround);
    cells.push_back(first == std::string::npos ? "" : cell.substr(first, last - first + 1));
  }
  return cells;
}

/// The rows of the first table below a heading of a page, the row of titles left out; none when
/// there is no such page, heading or table.
inline std::vector<MarkdownRow> markdownTable(const std::string& page, std::string_view heading) {
  std::ifstream file(page);
  std::vector<MarkdownRow> rows;
  bool isBelowHeading = false;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('#')) {
      isBelowHeading = line.substr(line.find_first_not_of("# ")) == heading;
    } else if (isBelowHeading && line.starts_with("| ")) {
      rows.push_back(markdownCells(line));
    } else if (isBelowHeading && !rows.empty() && !line.starts_with('|')) {
      break;
    }
  }
  if (!rows.empty()) {
    rows.erase(rows.begin());
  }
  return rows;
}

}  // namespace mrziphoto

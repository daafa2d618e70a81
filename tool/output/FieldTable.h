#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "RecordWriter.h"

namespace mrziphoto::tool {

/// One field of the records that a command answers about a `T`.
template <class T>
struct FieldRow {
  std::string_view name;
  void (*write)(RecordWriter& out, const T& item);
};

template <class T>
std::vector<std::string> fieldNames(std::span<const FieldRow<T>> table) {
  std::vector<std::string> names;
  for (const FieldRow<T>& row : table) {
    names.emplace_back(row.name);
  }
  return names;
}

/// Writes one record with the fields of the table.
template <class T>
void writeRecord(RecordWriter& out, std::span<const FieldRow<T>> table, const T& item) {
  out.beginRecord();
  for (const FieldRow<T>& row : table) {
    row.write(out, item);
  }
  out.endRecord();
}

}  // namespace mrziphoto::tool

#pragma once

#include <bit>
#include <cstdint>
#include <string>

#include <MRZiPhoto/catalogue/detail/CodedFields.h>
#include <MRZiPhoto/values/Value.h>

namespace mrziphoto::sample {

/// Builds items of a coded stream: code, size, and the value as its typed read takes it. Sizes are
/// an array of width and height; fields without a typed read take bytes.
class CodedItems {
 public:
  /// Archived values are written in that byte order.
  explicit CodedItems(std::endian byteOrder) : _byteOrder(byteOrder) {}

  /// Adds the item of a table's row, unless the value is nothing.
  template <class Row>
  void add(const Row& row, const Value& value) {
    if (!value.isNothing()) {
      addItem(row.code, row.read, value);
    }
  }
  /// Adds the item of a table's row with some value that its read takes, for fields that readers
  /// drop.
  template <class Row>
  void addDropped(const Row& row) {
    addItem(row.code, row.read, anyValue(row.read));
  }
  /// Adds bytes that are no item.
  void addBytes(std::string_view bytes) { _bytes += bytes; }

  [[nodiscard]] const std::string& bytes() const { return _bytes; }

 private:
  void addItem(std::uint32_t code, CodedRead read, const Value& value);
  void addValue(CodedRead read, const Value& value);
  [[nodiscard]] static Value anyValue(CodedRead read);

  std::endian _byteOrder;
  std::string _bytes;
};

}  // namespace mrziphoto::sample

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Export.h"
#include "Object.h"
#include "Value.h"

namespace mrziphoto {

/// An ordered collection of values, shared by reference. Only the code that makes one fills it.
class MRZIPHOTO_EXPORT Array final : public Object {
 public:
  static const Class kClass;

  Array() = default;
  explicit Array(std::vector<Value> values) : _values(std::move(values)) {}

  [[nodiscard]] const std::vector<Value>& values() const { return _values; }
  [[nodiscard]] std::size_t size() const { return _values.size(); }
  [[nodiscard]] bool empty() const { return _values.empty(); }
  [[nodiscard]] auto begin() const { return _values.begin(); }
  [[nodiscard]] auto end() const { return _values.end(); }
  const Value& operator[](std::size_t position) const { return _values[position]; }

  void append(Value value) { _values.push_back(std::move(value)); }
  void reserve(std::size_t count) { _values.reserve(count); }

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  /// Lines in round brackets, an element a line; "(\n)" when empty.
  [[nodiscard]] std::string description() const override;
  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;

 private:
  std::vector<Value> _values;
};

}  // namespace mrziphoto

#pragma once

#include <string_view>

#include "../../values/Object.h"
#include "../../values/Value.h"

namespace mrziphoto::detail {

/// How objects of one of the platform's classes are read from archives. Exactly one of the two is
/// set.
struct FoundationClass {
  std::string_view name;
  const Class* container;          // read as an object of that class
  Value (*decode)(NSUnarchiver&);  // read as a plain value
};

/// nullptr for classes that are not the platform's, or whose form in archives nobody knows.
[[nodiscard]] const FoundationClass* foundationClass(std::string_view name);

/// The class that plain values of that kind are archived as; nullptr for other kinds.
[[nodiscard]] const Class* archivedClassOf(Value::Kind kind);
/// Writes the contents of a plain value, as an object of `archivedClassOf` its kind.
void encodeContents(const Value& value, NSArchiver& coder);

}  // namespace mrziphoto::detail

#pragma once

#include <string_view>

#include "../../values/Object.h"
#include "../../values/Value.h"

namespace mrziphoto::detail {

/// How objects of one of the platform's classes are read from archives: as plain values, or as
/// objects that are filled once references from inside them find them.
struct FoundationClass {
  std::string_view name;
  Value (*decode)(NSUnarchiver&);             // of a plain value, else nullptr
  const Class* container = nullptr;           // else what is made
  void (*fill)(Object&, NSUnarchiver&) = {};  // and how it is filled
};

/// nullptr for classes that are not the platform's, or whose form in archives nobody knows.
[[nodiscard]] const FoundationClass* foundationClass(std::string_view name);

/// The class that values of that kind are archived as; nullptr for nothing and for objects of
/// classes that write themselves.
[[nodiscard]] const Class* archivedClassOf(Value::Kind kind);
/// Writes the contents of a value, as an object of `archivedClassOf` its kind.
void encodeContents(const Value& value, NSArchiver& coder);

}  // namespace mrziphoto::detail

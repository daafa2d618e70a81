#pragma once

#include <algorithm>
#include <span>
#include <string_view>

#include "Object.h"
#include "Value.h"

namespace mrziphoto {

/// One named operation of a class that key-value access may call.
struct Accessor {
  std::string_view name;
  Value (*get)(const Object& object);
};

/// The row of that name in a table sorted by name; nullptr when there is none.
[[nodiscard]] inline const Accessor* findAccessor(std::span<const Accessor> table,
                                                  std::string_view name) {
  const auto found = std::ranges::lower_bound(table, name, {}, &Accessor::name);
  return found != table.end() && found->name == name ? &*found : nullptr;
}

/// For a `static_assert` beside each table.
[[nodiscard]] constexpr bool accessorsAreSorted(std::span<const Accessor> table) {
  return std::ranges::adjacent_find(table, std::ranges::greater_equal{}, &Accessor::name) ==
         table.end();
}

}  // namespace mrziphoto

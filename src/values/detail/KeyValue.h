#pragma once

#include <algorithm>
#include <span>
#include <string_view>
#include <type_traits>

#include "../Array.h"
#include "../Object.h"
#include "../Value.h"

namespace mrziphoto {

/// One named operation of a class that key-value access may call.
struct Accessor {
  std::string_view name;
  Value (*get)(const Object& object);
};

namespace detail {

template <class Kind, class Answer>
Kind kindOf(Answer (Kind::*operation)() const);

template <class Answer>
Value valueOf(Answer&& answer) {
  if constexpr (requires { typename std::remove_cvref_t<Answer>::Items; }) {
    return answer.value();
  } else {
    return Value(std::forward<Answer>(answer));
  }
}

}  // namespace detail

/// The row of an operation of that name.
template <auto operation>
[[nodiscard]] constexpr Accessor accessor(std::string_view name) {
  return {name, [](const Object& object) {
            using Kind = decltype(detail::kindOf(operation));
            return detail::valueOf((static_cast<const Kind&>(object).*operation)());
          }};
}

/// For a `static_assert` beside each table.
[[nodiscard]] constexpr bool accessorsAreSorted(std::span<const Accessor> table) {
  return std::ranges::adjacent_find(table, std::ranges::greater_equal{}, &Accessor::name) ==
         table.end();
}

/// The row of that name in a table sorted by name, else what the base class has for it.
template <const auto& table>
[[nodiscard]] const Accessor* findAccessor(std::string_view name, const Accessor* inherited) {
  static_assert(accessorsAreSorted(table));
  const auto found = std::ranges::lower_bound(table, name, {}, &Accessor::name);
  return found != table.end() && found->name == name ? &*found : inherited;
}

}  // namespace mrziphoto

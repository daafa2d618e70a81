#pragma once

#include <fmt/format.h>
#include <string>
#include <string_view>

#include "../Value.h"

namespace mrziphoto::detail {

[[nodiscard]] std::string formattedArguments(fmt::string_view text, fmt::format_args arguments);

/// A text for people, put together as {fmt} does; a value or an object stands as its description.
/// What is no valid UTF-8 becomes U+FFFD, and all descriptions share one budget.
template <class... Arguments>
[[nodiscard]] std::string formatted(fmt::format_string<const Arguments&...> text,
                                    const Arguments&... arguments) {
  return formattedArguments(text, fmt::make_format_args(arguments...));
}

}  // namespace mrziphoto::detail

template <>
struct fmt::formatter<mrziphoto::Value> : fmt::formatter<std::string_view> {
  template <class Context>
  auto format(const mrziphoto::Value& value, Context& context) const {
    return fmt::formatter<std::string_view>::format(value.description(), context);
  }
};

template <class T>
struct fmt::formatter<mrziphoto::Ref<T>> : fmt::formatter<mrziphoto::Value> {};

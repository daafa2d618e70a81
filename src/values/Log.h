#pragma once

#include <concepts>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "Export.h"
#include "Value.h"

namespace mrziphoto {

/// What is printed by its description.
template <class T>
concept Described = !std::is_arithmetic_v<T> && std::is_constructible_v<Value, const T&>;

/// One argument of `stringWithFormat`: a number, or what `%@` and `%s` print.
class FormatArgument {
 public:
  // NOLINTBEGIN(google-explicit-constructor): arguments convert silently
  template <std::integral T>
  FormatArgument(T value)
      : integer(static_cast<std::int64_t>(value)),
        real(static_cast<double>(value)),
        value(Value(value)) {}
  FormatArgument(double value) : real(value), value(Value(value)) {}
  template <Described T>
  FormatArgument(const T& value) : value(value) {}
  // NOLINTEND(google-explicit-constructor)

  std::int64_t integer = 0;
  double real = 0;
  Value value;
};

/// Formats as the platform's strings do, for texts that are kept in that form: the lines of the log
/// and the string tables. `%@` prints a value's description ("(null)" for nothing),
/// `%d` `%u` `%x` `%c` and `%f` numbers, `%s` a text, `%%` a percent sign, with the usual flags,
/// widths and precisions. Integers are printed as 32-bit ones. The locale is not used. A
/// directive without an argument, or an unknown one, is printed as it is.
[[nodiscard]] MRZIPHOTO_EXPORT std::string formatArguments(
    std::string_view text, std::initializer_list<FormatArgument> arguments);

template <class... Arguments>
[[nodiscard]] std::string stringWithFormat(std::string_view text, const Arguments&... arguments) {
  return formatArguments(text, {FormatArgument(arguments)...});
}

/// Where log lines go.
using LogSink = std::function<void(std::string_view line)>;

/// Sends the lines of the log to `sink` from now on; an empty sink drops them. Without a sink of
/// the host's they go to standard error. Answers the sink that was set before.
MRZIPHOTO_EXPORT LogSink setLogSink(LogSink sink);

/// Writes one line, as it is, to the log.
MRZIPHOTO_EXPORT void logLine(std::string_view line);

/// Writes one line to the log, formatted as `stringWithFormat` does.
template <class... Arguments>
void log(std::string_view text, const Arguments&... arguments) {
  logLine(stringWithFormat(text, arguments...));
}

}  // namespace mrziphoto

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

#include "Log.h"
#include "detail/Description.h"
#include "detail/Text.h"

namespace mrziphoto {
namespace {

/// One directive of a format text, such as "%08x".
struct Directive {
  bool leftAligned = false;
  bool zeroFilled = false;
  std::size_t width = 0;
  std::optional<int> precision;
  char conversion = 0;
};

// Keeps a form from a file from filling the memory.
constexpr std::size_t kWidest = 4096;

std::size_t takeNumber(std::string_view& text) {
  std::size_t number = 0;
  while (!text.empty() && text::isDigit(text.front())) {
    number = std::min(number * 10 + static_cast<std::size_t>(text.front() - '0'), kWidest);
    text.remove_prefix(1);
  }
  return number;
}

/// Takes a directive behind its percent sign off the front of `text`.
Directive takeDirective(std::string_view& text) {
  Directive directive;
  for (; !text.empty() && std::string_view("-0+ #").find(text.front()) != std::string_view::npos;
       text.remove_prefix(1)) {
    directive.leftAligned |= text.front() == '-';
    directive.zeroFilled |= text.front() == '0';
  }
  directive.width = takeNumber(text);
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    directive.precision = static_cast<int>(takeNumber(text));
  }
  while (text.starts_with('l') || text.starts_with('h') || text.starts_with('q')) {
    text.remove_prefix(1);
  }
  if (!text.empty()) {
    directive.conversion = text.front();
    text.remove_prefix(1);
  }
  return directive;
}

std::string converted(std::int64_t value, const char* conversion) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), conversion, static_cast<int>(value));
  return text.data();
}

std::string fixed(double value, int precision) {
  std::array<char, kWidest + 512> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                 std::chars_format::fixed, precision);
  return {text.data(), end.ptr};
}

/// The argument as the directive prints it, before it is filled up to its width.
std::optional<std::string> printed(const Directive& directive, const FormatArgument& argument) {
  switch (directive.conversion) {
    case '@':
    case 's':
      return argument.value.description();
    case 'd':
    case 'i':
      return converted(argument.integer, "%d");
    case 'u':
      return converted(argument.integer, "%u");
    case 'x':
      return converted(argument.integer, "%x");
    case 'X':
      return converted(argument.integer, "%X");
    case 'c': {
      std::string character;  // of the 8-bit set that Unicode begins with
      text::appendUtf8(character, static_cast<unsigned char>(argument.integer));
      return character;
    }
    case 'f':
      return fixed(argument.real, directive.precision.value_or(6));
    default:
      return std::nullopt;
  }
}

void appendFilled(std::string& out, const Directive& directive, const std::string& text) {
  const std::size_t fill = directive.width > text.size() ? directive.width - text.size() : 0;
  if (directive.leftAligned) {
    out += text;
    out.append(fill, ' ');
    return;
  }
  const std::size_t sign = directive.zeroFilled && text.starts_with('-') ? 1 : 0;
  out.append(text, 0, sign);
  out.append(fill, directive.zeroFilled ? '0' : ' ');
  out.append(text, sign);
}

}  // namespace

std::string formatArguments(std::string_view text,
                            std::initializer_list<FormatArgument> arguments) {
  const DescriptionBudget budget;  // one for all arguments
  std::string out;
  const FormatArgument* next = arguments.begin();
  while (!text.empty()) {
    const std::size_t percent = std::min(text.find('%'), text.size());
    out += text.substr(0, percent);
    text.remove_prefix(percent);
    if (text.empty()) {
      break;
    }
    const std::string_view start = text;
    text.remove_prefix(1);
    const Directive directive = takeDirective(text);
    if (directive.conversion == '%') {
      out += '%';
      continue;
    }
    const auto shown =
        next != arguments.end() ? printed(directive, *next) : std::optional<std::string>();
    if (shown) {
      appendFilled(out, directive, *shown);
      ++next;
    } else {
      out += start.substr(0, start.size() - text.size());
    }
  }
  return out;
}

}  // namespace mrziphoto

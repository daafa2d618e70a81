#include "ComposedText.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <utf8proc.h>

namespace mrziphoto::tool {

namespace {

bool isAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string mapped(std::string_view text, unsigned options, utf8proc_custom_func change) {
  utf8proc_uint8_t* result = nullptr;
  const utf8proc_ssize_t size = utf8proc_map_custom(
      reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
      static_cast<utf8proc_ssize_t>(text.size()), &result,
      static_cast<utf8proc_option_t>(UTF8PROC_STABLE | options), change, nullptr);
  if (size < 0) {
    return std::string(text);
  }
  const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(result, &std::free);
  return {reinterpret_cast<const char*>(result), static_cast<std::size_t>(size)};
}

}  // namespace

std::string composedText(std::string_view text) {
  return isAscii(text) ? std::string(text) : mapped(text, UTF8PROC_COMPOSE, nullptr);
}

std::string foldedFileName(std::string_view name) {
  if (!isAscii(name)) {
    const auto toLower = [](utf8proc_int32_t character, void*) {
      return utf8proc_tolower(character);
    };
    return mapped(name, UTF8PROC_DECOMPOSE, toLower);
  }
  std::string folded(name);
  for (char& c : folded) {
    c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return folded;
}

}  // namespace mrziphoto::tool

#include "ComposedText.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <utf8proc.h>

namespace mrziphoto::tool {

std::string composedText(std::string_view text) {
  if (std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
    return std::string(text);
  }
  utf8proc_uint8_t* composed = nullptr;
  const utf8proc_ssize_t size =
      utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                   static_cast<utf8proc_ssize_t>(text.size()), &composed,
                   static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE));
  if (size < 0) {
    return std::string(text);
  }
  const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(composed, &std::free);
  return {reinterpret_cast<const char*>(composed), static_cast<std::size_t>(size)};
}

}  // namespace mrziphoto::tool

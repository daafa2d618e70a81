#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mrziphoto::tool {

/// The bytes as a terminal may show them: well-formed UTF-8 in one line, with a blank for every
/// control character, so that no text of a library steers the terminal.
[[nodiscard]] std::string terminalText(std::string_view bytes);

/// How many columns of a terminal the text takes: none for a combining mark, two for the wide
/// characters of East Asia and for pictographs.
[[nodiscard]] std::size_t displayWidth(std::string_view text);

/// The text, or its beginning and "…" where it takes more than `width` columns.
[[nodiscard]] std::string cutToWidth(std::string_view text, std::size_t width);

}  // namespace mrziphoto::tool

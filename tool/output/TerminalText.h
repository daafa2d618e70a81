#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mrziphoto::tool {

// What a text of a library may do to a terminal, and how wide it is there. Everything that the tool
// shows goes through here, be it a table, a sentence or a log line; JSON, which must keep its
// values, asks `steersTerminal` and escapes.

/// True for a character that would steer a terminal or hide what stands around it: control
/// characters (those of 8 bits, too), separators of lines, marks of direction, and tags.
[[nodiscard]] bool steersTerminal(std::uint32_t character);

/// The bytes as a terminal may show them: well-formed UTF-8 in one line. A blank stands for each
/// control character and each separator of lines; invisible marks of direction and tags are left
/// out.
[[nodiscard]] std::string terminalText(std::string_view bytes);
/// `terminalText` for a text of several lines, which it keeps.
[[nodiscard]] std::string terminalLines(std::string_view bytes);

/// How many columns of a terminal the text takes: none for a combining mark, two for the wide
/// characters of East Asia and for pictographs.
[[nodiscard]] std::size_t displayWidth(std::string_view text);

/// The text, or its beginning and "…" where it takes more than `width` columns.
[[nodiscard]] std::string cutToWidth(std::string_view text, std::size_t width);
/// The path, or its beginning, "…" and its end, with as much of the file's name as there is room
/// for.
[[nodiscard]] std::string cutPathToWidth(std::string_view path, std::size_t width);
/// The text as lines of `width` columns at most, broken at blanks where that leaves no line half
/// empty. At least one line; a character wider than `width` has a line of its own.
[[nodiscard]] std::vector<std::string> wrapToWidth(std::string_view text, std::size_t width);

}  // namespace mrziphoto::tool

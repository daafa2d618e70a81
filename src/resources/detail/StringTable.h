#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "../../values/KeyedHash.h"

namespace mrziphoto::detail {

/// Texts by key.
using StringTable = TextMap<std::string>;

/// Reads a table of lines `"key" = "text";` with comments as in C. Between quotes, `\"`, `\\`,
/// `\n`, `\t`, `\r` and `\Uxxxx` (a UTF-16 unit in hexadecimal) stand for characters. The bytes are
/// UTF-8, or UTF-16 with a byte order mark. Of equal keys the later text counts. Answers
/// nothing when the table is damaged.
[[nodiscard]] std::optional<StringTable> stringTableFromBytes(std::string_view bytes);

}  // namespace mrziphoto::detail

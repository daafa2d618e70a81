#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace mrziphoto::detail {

/// Appends bytes as base64, with "=" at the end where their number is no multiple of three.
void appendBase64(std::string& out, std::string_view bytes);

/// The bytes of a text in base64, white space ignored. Answers nothing for a text with other
/// characters or without its end.
[[nodiscard]] std::optional<std::string> bytesFromBase64(std::string_view text);

}  // namespace mrziphoto::detail

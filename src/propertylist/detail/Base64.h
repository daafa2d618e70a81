#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace mrziphoto::detail {

/// Appends bytes as base64, with "=" at the end where their number is no multiple of three.
void appendBase64(std::string& out, std::string_view bytes);

/// The bytes that a text in base64 stands for. White space in it means nothing. Nothing when any
/// other character stands in it, or when its end is missing.
[[nodiscard]] std::optional<std::string> bytesFromBase64(std::string_view text);

}  // namespace mrziphoto::detail

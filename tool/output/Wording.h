#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace mrziphoto::tool {

/// The text in single quotes, as sentences name words and paths.
[[nodiscard]] inline std::string inQuotes(std::string_view text) {
  return "'" + std::string(text) + "'";
}

/// The word that was most likely meant: one that differs in case only, begins with what was
/// written, or is a slip or two of the fingers away; nothing when none is near.
[[nodiscard]] std::optional<std::string_view> nearestWord(std::string_view written,
                                                          std::span<const std::string_view> words);

/// ": did you mean 'format'?" for the nearest word, with `mark` before it inside the quotes, or
/// `otherwise` when none is near; the end of a sentence about a wrong word.
[[nodiscard]] std::string didYouMean(std::string_view written,
                                     std::span<const std::string_view> words,
                                     std::string_view otherwise, std::string_view mark = "");

}  // namespace mrziphoto::tool

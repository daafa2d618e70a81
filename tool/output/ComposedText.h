#pragma once

#include <string>
#include <string_view>

namespace mrziphoto::tool {

/// The text in Unicode's composed form, as people type it; Macs often store texts decomposed. What
/// is no valid UTF-8 stays as it is.
[[nodiscard]] std::string composedText(std::string_view text);

/// A text that is equal for names of files which are equal on a Mac file system: those that differ
/// in case and Unicode form only. What is no valid UTF-8 stays as it is.
[[nodiscard]] std::string foldedFileName(std::string_view name);

}  // namespace mrziphoto::tool

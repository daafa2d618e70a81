#pragma once

#include <string>

namespace mrziphoto::detail {

/// The file that this code was loaded from, a shared library or the program, links resolved; empty
/// when nobody can tell. The path by which it was loaded may be relative to a folder that the
/// program has left since.
[[nodiscard]] const std::string& ownFile();
/// A path made absolute, a relative one from the folder that the program was in at that time.
[[nodiscard]] std::string fromOwnStart(const std::string& path);

}  // namespace mrziphoto::detail

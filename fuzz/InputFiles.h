#pragma once

#include <span>
#include <string>
#include <string_view>

#include "support/TemporaryFolder.h"

namespace mrziphoto {

/// Stands between the files of which an input is made up.
inline constexpr std::string_view kNextFile = "\n==next==\n";

/// Writes the parts of an input to the files of these names, one after the other. There are fewer
/// files where the input has fewer parts; an empty part leaves its file out.
inline void writeInputFiles(const TemporaryFolder& folder, std::string_view input,
                            std::span<const std::string_view> names) {
  for (const std::string_view name : names) {
    const std::string_view part = input.substr(0, input.find(kNextFile));
    if (!part.empty()) {
      folder.write(std::string(name), part);
    }
    if (part.size() == input.size()) {
      return;
    }
    input.remove_prefix(part.size() + kNextFile.size());
  }
}

}  // namespace mrziphoto

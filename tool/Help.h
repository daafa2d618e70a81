#pragma once

#include <string>

#include "CommandTable.h"

namespace mrziphoto::tool {

/// What `mrziphoto --help` shows, in lines of 80 columns at most: all commands.
[[nodiscard]] std::string helpText();
/// What `mrziphoto COMMAND --help` shows: the command's options and examples.
[[nodiscard]] std::string helpText(const Command& command);

}  // namespace mrziphoto::tool

#pragma once

#include "commands/Session.h"

namespace mrziphoto::tool {

/// Runs the command that the command line names, or answers its questions for help. Throws
/// `Failure` when that cannot be done, or when the command line is wrong.
void runCommandLine(int argc, const char* const* argv, Session& session);

}  // namespace mrziphoto::tool

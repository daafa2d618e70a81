#pragma once

#include "Session.h"

namespace mrziphoto::tool {

/// Tells on standard error what of the open library was missing, repaired or left out, each notice
/// once in the life of the session; `--quiet` keeps it silent. True when anything was found so far.
/// With `--strict` nothing is told, and the answer is false.
bool tellNotices(Session& session);

}  // namespace mrziphoto::tool

#pragma once

#include <string_view>

#include "../Data.h"
#include "../Export.h"
#include "../String.h"

namespace mrziphoto {

/// The text of bytes in Mac OS Roman. Pure ASCII is a slice of the bytes; other texts are copied.
[[nodiscard]] MRZIPHOTO_EXPORT String stringFromMacRoman(const Data& bytes);

}  // namespace mrziphoto

#pragma once

#include <string_view>

#include "Data.h"
#include "Export.h"
#include "String.h"

namespace mrziphoto {

/// The text that the bytes stand for in Mac OS Roman, the 8-bit encoding of the system that the
/// libraries were written on. Pure ASCII stays a slice of the bytes; other texts are copied.
[[nodiscard]] MRZIPHOTO_EXPORT String stringFromMacRoman(const Data& bytes);

}  // namespace mrziphoto

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Value.h"

namespace mrziphoto {

/// Appends a value as it stands inside the description of a container that is nested `level` deep:
/// texts that are not plain words in quotes, containers indented by four blanks a level.
void appendNestedDescription(std::string& out, const Value& value, std::size_t level);

/// Appends a text as it stands inside a container: plain words as they are, all other texts in
/// quotes, with characters outside ASCII as "\Uxxxx".
void appendQuoted(std::string& out, std::string_view text);

/// The descriptions of containers that are nested `level` deep (0 for one that stands alone).
std::string describe(const Array& array, std::size_t level);
std::string describe(const Dictionary& dictionary, std::size_t level);

}  // namespace mrziphoto

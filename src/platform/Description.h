#pragma once

#include <string>

namespace mrziphoto {

class Array;
class Dictionary;

/// The descriptions of containers, in the platform's customary form: an element a line, four blanks
/// more for each container around it. Inside them, words of ASCII letters and digits and bytes
/// stand as they are, everything else in quotes, with characters outside ASCII as "\Uxxxx". The
/// entries of a dictionary are sorted by key. An element whose text would be longer than 16 MiB is
/// cut, which
/// "..." shows.
[[nodiscard]] std::string describe(const Array& array);
[[nodiscard]] std::string describe(const Dictionary& dictionary);

}  // namespace mrziphoto

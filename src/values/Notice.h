#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace mrziphoto {

/// Something of a library that was missing, repaired or left out. Programs that show the library
/// should show its notices, too.
struct Notice {
  /// One whole sentence for people, without a full stop at its end. It names what is missing, the
  /// file, how many, and where in the file: "the catalogue '/L/Library6.iPhoto' holds 9 of 40
  /// photos: the field 'idCP' at offset 1234 has the size -5".
  std::string sentence;
  /// The full path of the file that the sentence names; empty when it names none.
  std::string file;
  /// The place in the file, in bytes from its start, where one is known.
  std::optional<std::uint64_t> offset;

  bool operator==(const Notice&) const = default;
};

}  // namespace mrziphoto

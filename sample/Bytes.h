#pragma once

#include <bit>
#include <climits>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>

namespace mrziphoto::sample {

/// Appends a number, its most significant byte first.
template <std::integral Number>
void appendBigEndian(std::string& bytes, Number number) {
  for (std::size_t left = sizeof(Number); left > 0; --left) {
    bytes += static_cast<char>(number >> ((left - 1) * CHAR_BIT));
  }
}
inline void appendBigEndian(std::string& bytes, float number) {
  appendBigEndian(bytes, std::bit_cast<std::uint32_t>(number));
}
inline void appendBigEndian(std::string& bytes, double number) {
  appendBigEndian(bytes, std::bit_cast<std::uint64_t>(number));
}

/// Appends a number, its least significant byte first.
inline void appendLittleEndian(std::string& bytes, std::uint32_t number) {
  for (std::size_t i = 0; i < sizeof number; ++i) {
    bytes += static_cast<char>(number >> (i * CHAR_BIT));
  }
}

}  // namespace mrziphoto::sample

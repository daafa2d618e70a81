#pragma once

#include <array>
#include <cstdint>

namespace mrziphoto::detail {

/// An integer type as archives name it.
struct IntegerType {
  char code;
  bool isSigned;
  std::uint8_t bits;
};

// clang-format off
inline constexpr std::array kIntegerTypes{
    IntegerType{'c', true, 8},  IntegerType{'C', false, 8},
    IntegerType{'s', true, 16}, IntegerType{'S', false, 16},
    IntegerType{'i', true, 32}, IntegerType{'I', false, 32},
    IntegerType{'l', true, 32}, IntegerType{'L', false, 32},
    IntegerType{'q', true, 64}, IntegerType{'Q', false, 64},
    IntegerType{'B', false, 8},
};
// clang-format on

/// nullptr for codes that mean no integer.
constexpr const IntegerType* integerType(char code) {
  for (const IntegerType& type : kIntegerTypes) {
    if (type.code == code) {
      return &type;
    }
  }
  return nullptr;
}

}  // namespace mrziphoto::detail

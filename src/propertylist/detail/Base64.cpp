#include "Base64.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace mrziphoto::detail {
namespace {

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNoDigit = 0xFF;

constexpr auto kValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(kNoDigit);
  for (std::size_t i = 0; i < kDigits.size(); ++i) {
    values[static_cast<unsigned char>(kDigits[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}();

}  // namespace

void appendBase64(std::string& out, std::string_view bytes) {
  for (; !bytes.empty(); bytes.remove_prefix(bytes.size() < 3 ? bytes.size() : 3)) {
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      group = group << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
    }
    for (std::size_t i = 0; i < 4; ++i) {
      out += i <= bytes.size() ? kDigits[group >> (18 - 6 * i) & 0x3F] : '=';
    }
  }
}

std::optional<std::string> bytesFromBase64(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  std::uint32_t group = 0;
  std::size_t digits = 0;
  std::size_t padding = 0;
  for (const char character : text) {
    if (character == ' ' || character == '\t' || character == '\r' || character == '\n') {
      continue;
    }
    const std::uint8_t value = kValues[static_cast<unsigned char>(character)];
    if (character == '=') {
      ++padding;
    } else if (value == kNoDigit || padding != 0) {
      return std::nullopt;
    }
    group = group << 6 | (character == '=' ? 0U : value);
    if (++digits % 4 == 0) {
      bytes += static_cast<char>(group >> 16);
      bytes += static_cast<char>(group >> 8);
      bytes += static_cast<char>(group);
    }
  }
  if (digits % 4 != 0 || padding > 2) {
    return std::nullopt;
  }
  bytes.resize(bytes.size() - padding);
  return bytes;
}

}  // namespace mrziphoto::detail

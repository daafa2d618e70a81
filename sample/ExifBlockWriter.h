#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "sample/Bytes.h"

namespace mrziphoto::sample {

/// Builds a camera block, record by record.
class ExifBlockWriter {
 public:
  /// A record with these bytes behind its header.
  ExifBlockWriter& raw(std::uint32_t code, std::string_view payload) {
    constexpr std::uint32_t kHeaderSize = 8;
    return rawOfSize(kHeaderSize + static_cast<std::uint32_t>(payload.size()), code, payload);
  }
  /// The same with a header that states any size, for damaged blocks.
  ExifBlockWriter& rawOfSize(std::uint32_t size, std::uint32_t code, std::string_view payload) {
    appendBigEndian(_bytes, size);
    appendBigEndian(_bytes, code);
    _bytes += payload;
    return *this;
  }
  /// At most 65535 bytes, in Mac OS Roman.
  ExifBlockWriter& text(std::uint32_t code, std::string_view text, std::uint16_t type = 0) {
    std::string payload;
    appendBigEndian(payload, static_cast<std::uint16_t>(text.size()));
    appendBigEndian(payload, type);
    return raw(code, payload += text);
  }
  ExifBlockWriter& number(std::uint32_t code, std::uint16_t number) {
    std::string payload;
    appendBigEndian(payload, number);
    return raw(code, payload);
  }
  /// A fraction, or an exposure time in APEX.
  ExifBlockWriter& fraction(std::uint32_t code, std::uint32_t numerator,
                            std::uint32_t denominator) {
    std::string payload;
    appendBigEndian(payload, numerator);
    appendBigEndian(payload, denominator);
    return raw(code, payload);
  }

  /// The block so far.
  [[nodiscard]] const std::string& bytes() const { return _bytes; }

 private:
  std::string _bytes;
};

}  // namespace mrziphoto::sample

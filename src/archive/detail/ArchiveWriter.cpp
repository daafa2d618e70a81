#include "ArchiveWriter.h"

#include <limits>

#include "../../values/detail/NumberTypes.h"

namespace mrziphoto::detail {
namespace {

template <class Integer>
constexpr bool fits(std::int64_t value) {
  return value >= std::numeric_limits<Integer>::min() &&
         value <= std::numeric_limits<Integer>::max();
}

}  // namespace

ArchiveWriter::ArchiveWriter(std::endian byteOrder, std::int32_t systemVersion)
    : _bytes(1, kStreamerVersion), _byteOrder(byteOrder) {
  writeBytes(byteOrder == std::endian::big ? kBigEndianSignature : kLittleEndianSignature);
  writeShortest(systemVersion);
}

void ArchiveWriter::writeShared(std::string_view text) {
  const auto [found, isNew] = _strings.try_emplace(std::string(text), _strings.size());
  if (isNew) {
    writeHead(kHeadNew);
    writeBytes(text);
  } else {
    writeReference(found->second);
  }
}

void ArchiveWriter::writeUnsigned(std::uint64_t value, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t byte = _byteOrder == std::endian::little ? i : size - 1 - i;
    _bytes += static_cast<char>(value >> (8 * byte) & 0xFF);
  }
}

void ArchiveWriter::writeShortest(std::int64_t value) {
  if (value >= kFirstNumber && value <= std::numeric_limits<std::int8_t>::max()) {
    _bytes += static_cast<char>(value);
  } else if (fits<std::int16_t>(value)) {
    writeHead(kHead2Bytes);
    writeUnsigned(static_cast<std::uint64_t>(value), 2);
  } else if (fits<std::int32_t>(value)) {
    writeHead(kHead4Bytes);
    writeUnsigned(static_cast<std::uint64_t>(value), 4);
  } else {
    writeHead(kHead8Bytes);
    writeUnsigned(static_cast<std::uint64_t>(value), 8);
  }
}

void ArchiveWriter::writeInteger(std::int64_t value, char code) {
  const IntegerType* type = integerType(code);
  if (type == nullptr) {
    writeShortest(value);
  } else if (type->bits == 8) {
    _bytes += static_cast<char>(value);
  } else {
    // Taken as a signed number of its size, whatever its type says.
    const int unused = 64 - type->bits;
    const std::uint64_t atTop = static_cast<std::uint64_t>(value) << unused;
    writeShortest(static_cast<std::int64_t>(atTop) >> unused);
  }
}

void ArchiveWriter::writeReal(double value, char code) {
  const bool isInRange = value >= std::numeric_limits<std::int32_t>::min() &&
                         value <= std::numeric_limits<std::int32_t>::max();
  if (isInRange && static_cast<std::int32_t>(value) == value) {
    writeShortest(static_cast<std::int32_t>(value));
  } else if (code == 'f') {
    writeRealBits(std::bit_cast<std::uint32_t>(static_cast<float>(value)), code);
  } else {
    writeRealBits(std::bit_cast<std::uint64_t>(value), code);
  }
}

void ArchiveWriter::writeRealBits(std::uint64_t bits, char code) {
  writeHead(kHeadReal);
  writeUnsigned(bits, code == 'f' ? sizeof(float) : sizeof(double));
}

void ArchiveWriter::writeBytes(std::string_view bytes) {
  writeShortest(static_cast<std::int64_t>(bytes.size()));
  _bytes += bytes;
}

std::size_t ArchiveWriter::writeNew() {
  writeHead(kHeadNew);
  return _entries++;
}

void ArchiveWriter::writeReference(std::size_t number) {
  writeShortest(static_cast<std::int64_t>(number) + kFirstNumber);
}

}  // namespace mrziphoto::detail

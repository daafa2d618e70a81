#include <bit>

#include "../archive/NSUnarchiver.h"
#include "../values/NSException.h"
#include "../values/detail/Formatted.h"
#include "TVQStreamData.h"
#include "detail/CodedRead.h"

namespace mrziphoto {

std::uint32_t TVQiPhotoCodedStreamData::readCode() { return static_cast<std::uint32_t>(readInt()); }

std::int32_t TVQiPhotoCodedStreamData::peekInt() {
  const std::int32_t value = readInt();
  seekByDataOffset(-4);
  return value;
}

void TVQiPhotoCodedStreamData::expectSizeOf(CodedRead read) {
  const CodedReadKind& kind = codedReadKind(read);
  if (static_cast<std::uint32_t>(readInt()) != kind.requiredSize) {
    raiseUnexpectedCodeSizeExceptionDuring(kind.operation);
  }
}

void TVQiPhotoCodedStreamData::raiseUnexpectedCodeSizeExceptionDuring(std::string_view operation) {
  seekByDataOffset(-4);
  const std::int32_t size = readInt();
  throw NSException(kNSInternalInconsistencyException,
                    detail::formatted("Unexpected datasize {} during {}", size, operation),
                    offsetInData());
}

std::int16_t TVQiPhotoCodedStreamData::readCodedShort() {
  expectSizeOf(CodedRead::shortNumber);
  return readShort();
}

std::int32_t TVQiPhotoCodedStreamData::readCodedInt() {
  expectSizeOf(CodedRead::intNumber);
  return readInt();
}

std::int64_t TVQiPhotoCodedStreamData::readCodedLongLong() {
  expectSizeOf(CodedRead::longLong);
  return readLongLong();
}

float TVQiPhotoCodedStreamData::readCodedFloat() {
  expectSizeOf(CodedRead::floatNumber);
  return readFloat();
}

double TVQiPhotoCodedStreamData::readCodedDouble() {
  expectSizeOf(CodedRead::doubleNumber);
  return readDouble();
}

NSSize TVQiPhotoCodedStreamData::readCodedNSSize() {
  expectSizeOf(CodedRead::size);
  NSSize size;
  size.width = readFloat();
  size.height = readFloat();
  return size;
}

/// A negative size, taken as unsigned, is larger than any buffer and fails at the next read.
std::uint32_t TVQiPhotoCodedStreamData::readItemSize() {
  return static_cast<std::uint32_t>(readInt());
}

std::vector<std::int32_t> TVQiPhotoCodedStreamData::readCodedIntArray() {
  const std::uint32_t count = readItemSize() / 4;
  // Taken as a whole first, so that an absurd count fails before memory is allocated.
  TVQStreamData numbers(readDataWithLength(count * 4));
  numbers.setShouldSwapMode(shouldSwapMode());
  std::vector<std::int32_t> result;
  result.reserve(count);
  while (!numbers.isAtEndOfData()) {
    result.push_back(numbers.readInt());
  }
  return result;
}

String TVQiPhotoCodedStreamData::readCodedUTF16String() {
  return readUTF16StringWithCharacterCount(static_cast<std::uint32_t>(readInt() / 2));
}

String TVQiPhotoCodedStreamData::readCodedUTF16StringShort() {
  return readUTF16StringWithCharacterCount(static_cast<std::uint16_t>(readShort()) / 2U);
}

Data TVQiPhotoCodedStreamData::readCodedData() { return readDataWithLength(readItemSize()); }

Value TVQiPhotoCodedStreamData::readCodedArchive() {
  const std::uint32_t size = readItemSize();
  const auto reader = NSUnarchiver::initForReadingWithData(dataInRange(offsetInData(), size));
  if (!reader) {
    throw NSException(kNSInvalidArgumentException,
                      detail::formatted("no typed-object archive at offset {}", offsetInData()),
                      offsetInData());
  }
  return reader->decodeObject();
}

String TVQiPhotoCodedStreamData::readUTF16StringWithCharacterCount(std::uint32_t count) {
  if (count == 0) {
    return {};
  }
  // A count whose bytes do not fit 32 bits fails at the read.
  constexpr std::uint32_t kMost = 0x7FFFFFFF;
  const Data units = readDataWithLength(count > kMost ? 0xFFFFFFFF : count * 2);
  return {units.owner(), units.bytes(), encodingOf(units.bytes())};
}

String::Encoding TVQiPhotoCodedStreamData::encodingOf(std::string_view units) const {
  const bool hasMark = units.starts_with("\xFE\xFF") || units.starts_with("\xFF\xFE");
  const bool streamIsBigEndian = shouldSwapMode() == opposite || shouldSwapMode() == bigEndian;
  const bool bigEndianUnits = hasMark ? std::endian::native == std::endian::big : streamIsBigEndian;
  return bigEndianUnits ? String::Encoding::utf16BigEndian : String::Encoding::utf16LittleEndian;
}

std::string TVQiPhotoCodedStreamData::description() const {
  return detail::formatted("{} bytes offset = {} remaining = {}", length(), offsetInData(),
                           static_cast<std::int64_t>(length()) - offsetInData());
}

}  // namespace mrziphoto

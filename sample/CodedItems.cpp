#include "sample/CodedItems.h"

#include <cstddef>
#include <string_view>

#include <MRZiPhoto/values/Array.h>
#include <MRZiPhoto/values/detail/Text.h>

#include "sample/ArchivedFiles.h"
#include "sample/Bytes.h"
#include "sample/SampleRecord.h"

namespace mrziphoto::sample {
namespace {

void appendUtf16(std::string& bytes, std::string_view utf8) {
  while (!utf8.empty()) {
    const std::uint32_t character = text::nextCharacter(utf8);
    if (character < 0x10000) {
      appendBigEndian(bytes, static_cast<std::uint16_t>(character));
    } else {
      const std::uint32_t rest = character - 0x10000;
      appendBigEndian(bytes, static_cast<std::uint16_t>(0xD800 + (rest >> 10)));
      appendBigEndian(bytes, static_cast<std::uint16_t>(0xDC00 + (rest & 0x3FF)));
    }
  }
}

}  // namespace

void CodedItems::addItem(std::uint32_t code, CodedRead read, const Value& value) {
  appendBigEndian(_bytes, code);
  const std::size_t sizeOffset = _bytes.size();
  appendBigEndian(_bytes, std::uint32_t{0});
  const std::size_t start = _bytes.size();
  addValue(read, value);
  std::string size;
  appendBigEndian(size, static_cast<std::uint32_t>(_bytes.size() - start));
  _bytes.replace(sizeOffset, size.size(), size);
}

void CodedItems::addValue(CodedRead read, const Value& value) {
  switch (read) {
    case CodedRead::shortNumber:
      appendBigEndian(_bytes, static_cast<std::int16_t>(value.intValue()));
      break;
    case CodedRead::intNumber:
      appendBigEndian(_bytes, value.intValue());
      break;
    case CodedRead::longLong:
      appendBigEndian(_bytes, value.integer().value_or(0));
      break;
    case CodedRead::floatNumber:
      appendBigEndian(_bytes, static_cast<float>(value.doubleValue()));
      break;
    case CodedRead::doubleNumber:
      appendBigEndian(_bytes, value.doubleValue());
      break;
    case CodedRead::size:
      for (const Value& side : *value.array()) {
        appendBigEndian(_bytes, static_cast<float>(side.doubleValue()));
      }
      break;
    case CodedRead::intArray:
      for (const Value& number : *value.array()) {
        appendBigEndian(_bytes, number.intValue());
      }
      break;
    case CodedRead::text:
      value.string()->withUtf8([this](std::string_view utf8) { appendUtf16(_bytes, utf8); });
      break;
    case CodedRead::archive:
      _bytes += archiveOf({value}, _byteOrder);
      break;
    case CodedRead::data:
    case CodedRead::none:
    case CodedRead::count:
      _bytes += value.data()->bytes();
      break;
  }
}

Value CodedItems::anyValue(CodedRead read) {
  switch (read) {
    case CodedRead::text:
      return "dropped";
    case CodedRead::data:
    case CodedRead::none:
    case CodedRead::count:
      return Data::copyOf("dropped");
    case CodedRead::archive:
      return archivedKey(1);
    case CodedRead::size:
    case CodedRead::intArray:
      return make<Array>(std::vector<Value>{1, 2});
    default:
      return 1;
  }
}

}  // namespace mrziphoto::sample

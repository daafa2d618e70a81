#include "Values.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include <MRZiPhoto/albums/Keyword.h>
#include <MRZiPhoto/photos/Key.h>
#include <MRZiPhoto/values/Array.h>
#include <MRZiPhoto/values/Dictionary.h>
#include <MRZiPhoto/values/NSException.h>
#include <MRZiPhoto/values/detail/Text.h>

namespace mrziphoto::tool {
namespace {

// With longer exponents the plain digits of a decimal would be mostly zeros.
constexpr std::int32_t kLongestExponent = 100;

void writeDecimal(RecordWriter& out, const Decimal& decimal) {
  if (std::abs(decimal.exponent) <= kLongestExponent) {
    out.number(decimal.description());
  } else {
    out.real(decimal.doubleValue());
  }
}

void writeArray(RecordWriter& out, const Array& array) {
  out.beginList();
  for (const Value& element : array) {
    writeValue(out, element);
  }
  out.endList();
}

void writeDictionary(RecordWriter& out, const Dictionary& dictionary) {
  out.beginObject();
  for (const Dictionary::Entry& entry : dictionary) {
    out.name(entry.key.text());
    writeValue(out, entry.value);
  }
  out.endObject();
}

void writeNumber(RecordWriter& out, const Value& number) {
  if (number.numberType() == 'B') {
    out.boolean(number.intValue() != 0);
  } else if (number.numberType() == 'f') {
    out.real(static_cast<float>(number.doubleValue()));
  } else if (number.kind() == Value::Kind::floating) {
    out.real(number.doubleValue());
  } else if (const std::optional<Decimal> decimal = number.decimal()) {
    writeDecimal(out, *decimal);
  } else {
    out.number(number.description());
  }
}

}  // namespace

void writeValue(RecordWriter& out, const Value& value) {
  // A weak value may lead back to what it stands in.
  const bool mayFollow = !value.isWeak();
  if (value.isNothing()) {
    out.null();
  } else if (value.isNumber()) {
    writeNumber(out, value);
  } else if (value.kind() == Value::Kind::date) {
    out.date(value.date());
  } else if (const Ref<Array> array = value.array(); array && mayFollow) {
    writeArray(out, *array);
  } else if (const Ref<Dictionary> dictionary = value.dictionary(); dictionary && mayFollow) {
    writeDictionary(out, *dictionary);
  } else if (value.object<Key>()) {
    writeKey(out, value);
  } else if (const Ref<Keyword> keyword = value.object<Keyword>()) {
    out.text(keyword->keyword());
  } else {
    out.text(value.description());
  }
}

Value numberOfKey(const Value& key) {
  if (const std::optional<std::string> text = key.text()) {
    const bool isNumber = !text->empty() && std::ranges::all_of(*text, text::isDigit);
    return isNumber ? Value(key.unsignedIntValue()) : Value();
  }
  try {
    return keyNumber(key);
  } catch (const NSException&) {
    return {};
  }
}

void writeKey(RecordWriter& out, const Value& key) {
  const Value number = numberOfKey(key);
  if (number.isNumber()) {
    writeValue(out, number);
  } else {
    out.null();
  }
}

void writeImageKeys(RecordWriter& out, const Ref<KeyMgr>& keys) {
  out.beginList();
  if (keys) {
    for (const std::uint32_t number : keys->keyNumbers()) {
      out.unsignedInteger(number);
    }
  }
  out.endList();
}

std::optional<std::string> keywordText(const Value& keyword) {
  if (const Ref<Keyword> record = keyword.object<Keyword>()) {
    return record->keyword();
  }
  if (const Value number = numberOfKey(keyword); !keyword.isString() && !number.isNothing()) {
    return number.description();
  }
  return keyword.isNothing() ? std::nullopt : std::optional(keyword.description());
}

}  // namespace mrziphoto::tool

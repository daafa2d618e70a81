#include "Values.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include <MRZiPhoto/albums/Keyword.h>
#include <MRZiPhoto/photos/Key.h>
#include <MRZiPhoto/platform/Array.h>
#include <MRZiPhoto/platform/Dictionary.h>
#include <MRZiPhoto/platform/NSException.h>
#include <MRZiPhoto/platform/Text.h>

namespace mrziphoto::tool {
namespace {

// The parts of a value may be shared, and may refer back to what is around them. Both limits are
// far beyond what libraries hold, and keep an odd one from being written without end.
constexpr std::size_t kDeepest = 64;
constexpr std::size_t kMostParts = 1'000'000;

// With longer exponents the plain digits of a decimal would be mostly zeros.
constexpr std::int32_t kLongestExponent = 100;

class ValueWalk {
 public:
  explicit ValueWalk(RecordWriter& out) : _out(out) {}

  void write(const Value& value, std::size_t depth = 0);

 private:
  void writeDecimal(const Decimal& decimal);
  void writeObject(const Value& value);

  RecordWriter& _out;
  std::size_t _parts = 0;
};

void ValueWalk::write(const Value& value, std::size_t depth) {
  if (depth > kDeepest || ++_parts > kMostParts) {
    _out.null();
    return;
  }
  switch (value.kind()) {
    case Value::Kind::nothing:
      _out.null();
      return;
    case Value::Kind::integer:
      if (value.numberType() == 'B') {
        _out.boolean(value.intValue() != 0);
      } else {
        _out.number(value.description());
      }
      return;
    case Value::Kind::floating:
      if (value.numberType() == 'f') {
        _out.real(static_cast<float>(value.doubleValue()));
      } else {
        _out.real(value.doubleValue());
      }
      return;
    case Value::Kind::decimal:
      writeDecimal(*value.decimal());
      return;
    case Value::Kind::date:
      _out.date(value.date());
      return;
    case Value::Kind::array:
      _out.beginList();
      for (const Value& element : *value.array()) {
        write(element, depth + 1);
      }
      _out.endList();
      return;
    case Value::Kind::dictionary:
      _out.beginObject();
      for (const Dictionary::Entry& entry : *value.dictionary()) {
        _out.name(entry.key.text());
        write(entry.value, depth + 1);
      }
      _out.endObject();
      return;
    case Value::Kind::string:
      value.string()->withUtf8([this](std::string_view text) { _out.text(text); });
      return;
    case Value::Kind::data:
      _out.text(value.data()->description());
      return;
    case Value::Kind::object:
      writeObject(value);
      return;
  }
}

void ValueWalk::writeDecimal(const Decimal& decimal) {
  if (std::abs(decimal.exponent) <= kLongestExponent) {
    _out.number(decimal.description());
  } else {
    _out.real(decimal.doubleValue());
  }
}

void ValueWalk::writeObject(const Value& value) {
  if (value.object<Key>()) {
    writeKey(_out, value);
  } else if (const Ref<Keyword> keyword = value.object<Keyword>()) {
    _out.text(keyword->keyword());
  } else {
    _out.text(value.description());
  }
}

}  // namespace

void writeValue(RecordWriter& out, const Value& value) { ValueWalk(out).write(value); }

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

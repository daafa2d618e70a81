#include <algorithm>
#include <array>
#include <string>

#include "../values/Array.h"
#include "../values/Dictionary.h"
#include "../values/NSException.h"
#include "../values/detail/Text.h"
#include "NSArchiver.h"
#include "NSUnarchiver.h"
#include "detail/FoundationClasses.h"

namespace mrziphoto {
namespace {

// The fewest bytes of an element: its type string and the object, each a reference.
constexpr std::size_t kLeastBytes = 2;
// A count may be wrong; room for more elements is made as they come.
constexpr std::size_t kMostReserved = 1024;

Value decodeString(NSUnarchiver& coder) {
  const std::optional<Data> bytes = coder.decodeBytes().data();
  if (!bytes) {
    coder.fail("*** Incorrect archive: a string without characters");
  }
  return text::isUtf8(bytes->bytes()) ? String(bytes->owner(), bytes->bytes())
                                      : String(bytes->bytes());
}

Value decodePlainValue(NSUnarchiver& coder) {
  coder.decodeValueOfObjCType("*");  // the type, which the value itself has before it, too
  return coder.decodeGroup();
}

Value decodeNumber(NSUnarchiver& coder) {
  Value number = decodePlainValue(coder);
  if (!number.isNumber()) {
    coder.fail("*** Incorrect archive: a number without a value");
  }
  return number;
}

Value decodeData(NSUnarchiver& coder) { return coder.decodeDataObject(); }

Value decodeDate(NSUnarchiver& coder) {
  return Date{coder.decodeValueOfObjCType("d").doubleValue()};
}

/// The instant; time zone and format, which follow, say nothing about it.
Value decodeCalendarDate(NSUnarchiver& coder) {
  Value date = decodeDate(coder);
  coder.skipGroups();
  return date;
}

Value decodeNull(NSUnarchiver& /*coder*/) { return {}; }

Value decodeText(NSUnarchiver& coder) {
  Value text = coder.decodeElement();
  if (!text.isString()) {
    coder.fail("*** Incorrect archive: another object where a string is expected");
  }
  return text;
}

/// The address as it was written: relative to its base where it has one.
Value decodeUrl(NSUnarchiver& coder) {
  if (coder.decodeValueOfObjCType("c").intValue() != 0) {
    coder.decodeElement();
  }
  return decodeText(coder);
}

/// The text without its attributes.
Value decodeAttributedString(NSUnarchiver& coder) {
  Value text = decodeText(coder);
  coder.skipGroups();
  return text;
}

/// An object of the root class, which has no contents.
class PlainObject final : public Object {
 public:
  static const Class kClass;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  void encodeWithCoder(NSArchiver& /*coder*/) const override {}
};
const Class PlainObject::kClass{"NSObject", nullptr, 0, &makeEmpty<PlainObject>};

void fillNothing(Object& /*object*/, NSUnarchiver& /*coder*/) {}

void fillArray(Object& object, NSUnarchiver& coder) {
  auto& array = static_cast<Array&>(object);
  const std::size_t count = coder.decodeCount(kLeastBytes);
  array.reserve(std::min(count, kMostReserved));
  for (std::size_t i = 0; i < count; ++i) {
    array.append(coder.decodeElement());
  }
}

void fillDictionary(Object& object, NSUnarchiver& coder) {
  auto& dictionary = static_cast<Dictionary&>(object);
  const std::size_t count = coder.decodeCount(2 * kLeastBytes);
  dictionary.reserve(std::min(count, kMostReserved));
  for (std::size_t i = 0; i < count; ++i) {
    const DictionaryKey key = coder.decodeKey();
    dictionary.set(key, coder.decodeElement());
  }
}

using detail::FoundationClass;

constexpr std::array kFoundationClasses{
    FoundationClass{"NSObject", nullptr, &PlainObject::kClass, fillNothing},
    FoundationClass{"NSString", decodeString},
    FoundationClass{"NSMutableString", decodeString},
    FoundationClass{"NSNumber", decodeNumber},
    FoundationClass{"NSValue", decodePlainValue},
    FoundationClass{"NSArray", nullptr, &Array::kClass, fillArray},
    FoundationClass{"NSMutableArray", nullptr, &Array::kClass, fillArray},
    FoundationClass{"NSDictionary", nullptr, &Dictionary::kClass, fillDictionary},
    FoundationClass{"NSMutableDictionary", nullptr, &Dictionary::kClass, fillDictionary},
    FoundationClass{"NSSet", nullptr, &Array::kClass, fillArray},
    FoundationClass{"NSMutableSet", nullptr, &Array::kClass, fillArray},
    FoundationClass{"NSData", decodeData},
    FoundationClass{"NSMutableData", decodeData},
    FoundationClass{"NSDate", decodeDate},
    FoundationClass{"NSCalendarDate", decodeCalendarDate},
    FoundationClass{"NSNull", decodeNull},
    FoundationClass{"NSURL", decodeUrl},
    FoundationClass{"NSAttributedString", decodeAttributedString},
    FoundationClass{"NSMutableAttributedString", decodeAttributedString}};

constexpr Class kStringClass{"NSString", nullptr, 1};
constexpr Class kValueClass{"NSValue"};
constexpr Class kNumberClass{"NSNumber", &kValueClass};
constexpr Class kDateClass{"NSDate"};
constexpr Class kDataClass{"NSData"};

void encodeString(const Value& value, NSArchiver& coder) { coder.encodeBytes(*value.text()); }

void encodeNumber(const Value& value, NSArchiver& coder) {
  const std::string type(1, value.numberType());
  coder.encodeValueOfObjCType("*", type);
  coder.encodeValueOfObjCType(type, value);
}

void encodeDate(const Value& value, NSArchiver& coder) {
  coder.encodeValueOfObjCType("d", value.date()->secondsSinceReferenceDate);
}

void encodeData(const Value& value, NSArchiver& coder) {
  coder.encodeDataObject(value.data()->bytes());
}

void checkElement(const Value& element) {
  if (element.isNothing()) {
    NSException::raise(kNSInvalidArgumentException, "an archived collection cannot hold nothing");
  }
}

void encodeArray(const Value& value, NSArchiver& coder) {
  const Ref<Array> array = value.array();
  coder.encodeInt(static_cast<std::int32_t>(array->size()));
  for (const Value& element : *array) {
    checkElement(element);
    coder.encodeObject(element);
  }
}

void encodeDictionary(const Value& value, NSArchiver& coder) {
  const Ref<Dictionary> dictionary = value.dictionary();
  coder.encodeInt(static_cast<std::int32_t>(dictionary->size()));
  for (const auto& [key, element] : *dictionary) {
    checkElement(element);
    coder.encodeKey(key.text());
    coder.encodeObject(element);
  }
}

struct ArchivedKind {
  Value::Kind kind;
  const Class* archivedClass;
  void (*encode)(const Value&, NSArchiver&);
};

constexpr std::array kArchivedKinds{
    ArchivedKind{Value::Kind::string, &kStringClass, encodeString},
    ArchivedKind{Value::Kind::integer, &kNumberClass, encodeNumber},
    ArchivedKind{Value::Kind::floating, &kNumberClass, encodeNumber},
    ArchivedKind{Value::Kind::decimal, &kNumberClass, encodeNumber},
    ArchivedKind{Value::Kind::date, &kDateClass, encodeDate},
    ArchivedKind{Value::Kind::data, &kDataClass, encodeData},
    ArchivedKind{Value::Kind::array, &Array::kClass, encodeArray},
    ArchivedKind{Value::Kind::dictionary, &Dictionary::kClass, encodeDictionary}};

const ArchivedKind* archivedKind(Value::Kind kind) {
  const auto* found = std::ranges::find(kArchivedKinds, kind, &ArchivedKind::kind);
  return found != kArchivedKinds.end() ? found : nullptr;
}

}  // namespace

const detail::FoundationClass* detail::foundationClass(std::string_view name) {
  const auto* found = std::ranges::find(kFoundationClasses, name, &FoundationClass::name);
  return found != kFoundationClasses.end() ? found : nullptr;
}

const Class* detail::archivedClassOf(Value::Kind kind) {
  const ArchivedKind* found = archivedKind(kind);
  return found != nullptr ? found->archivedClass : nullptr;
}

void detail::encodeContents(const Value& value, NSArchiver& coder) {
  archivedKind(value.kind())->encode(value, coder);
}

}  // namespace mrziphoto

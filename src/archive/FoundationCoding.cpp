#include <algorithm>
#include <array>
#include <string>

#include "../values/Array.h"
#include "../values/Dictionary.h"
#include "../values/NSException.h"
#include "../values/Text.h"
#include "NSArchiver.h"
#include "NSUnarchiver.h"
#include "detail/FoundationClasses.h"

namespace mrziphoto {
namespace {

// The fewest bytes of an element: its type string and the object, each a reference.
constexpr std::size_t kLeastBytes = 2;
// A count is only a promise; room for more elements is made as they come.
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

/// An object of the root class, which says nothing.
class PlainObject final : public Object {
 public:
  static const Class kClass;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  void initWithCoder(NSUnarchiver& /*coder*/) override {}
  void encodeWithCoder(NSArchiver& /*coder*/) const override {}
};
const Class PlainObject::kClass{"NSObject", nullptr, 0, &makeEmpty<PlainObject>};

using detail::FoundationClass;

constexpr std::array kFoundationClasses{
    FoundationClass{"NSObject", &PlainObject::kClass, nullptr},
    FoundationClass{"NSString", nullptr, decodeString},
    FoundationClass{"NSMutableString", nullptr, decodeString},
    FoundationClass{"NSNumber", nullptr, decodeNumber},
    FoundationClass{"NSValue", nullptr, decodePlainValue},
    FoundationClass{"NSArray", &Array::kClass, nullptr},
    FoundationClass{"NSMutableArray", &Array::kClass, nullptr},
    FoundationClass{"NSDictionary", &Dictionary::kClass, nullptr},
    FoundationClass{"NSMutableDictionary", &Dictionary::kClass, nullptr},
    FoundationClass{"NSSet", &Array::kClass, nullptr},
    FoundationClass{"NSMutableSet", &Array::kClass, nullptr},
    FoundationClass{"NSData", nullptr, decodeData},
    FoundationClass{"NSMutableData", nullptr, decodeData},
    FoundationClass{"NSDate", nullptr, decodeDate},
    FoundationClass{"NSCalendarDate", nullptr, decodeCalendarDate},
    FoundationClass{"NSNull", nullptr, decodeNull},
    FoundationClass{"NSURL", nullptr, decodeUrl},
    FoundationClass{"NSAttributedString", nullptr, decodeAttributedString},
    FoundationClass{"NSMutableAttributedString", nullptr, decodeAttributedString}};

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
    ArchivedKind{Value::Kind::data, &kDataClass, encodeData}};

const ArchivedKind* archivedKind(Value::Kind kind) {
  const auto* found = std::ranges::find(kArchivedKinds, kind, &ArchivedKind::kind);
  return found != kArchivedKinds.end() ? found : nullptr;
}

void checkElement(const Value& element) {
  if (element.isNothing()) {
    NSException::raise(kNSInvalidArgumentException, "an archived collection cannot hold nothing");
  }
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

void Array::initWithCoder(NSUnarchiver& coder) {
  const std::size_t count = coder.decodeCount(kLeastBytes);
  _values.reserve(std::min(count, kMostReserved));
  for (std::size_t i = 0; i < count; ++i) {
    _values.push_back(coder.decodeElement());
  }
}

void Array::encodeWithCoder(NSArchiver& coder) const {
  coder.encodeInt(static_cast<std::int32_t>(size()));
  for (const Value& element : _values) {
    checkElement(element);
    coder.encodeObject(element);
  }
}

void Dictionary::initWithCoder(NSUnarchiver& coder) {
  const std::size_t count = coder.decodeCount(2 * kLeastBytes);
  reserve(std::min(count, kMostReserved));
  for (std::size_t i = 0; i < count; ++i) {
    const DictionaryKey key = coder.decodeKey();
    set(key, coder.decodeElement());
  }
}

void Dictionary::encodeWithCoder(NSArchiver& coder) const {
  coder.encodeInt(static_cast<std::int32_t>(size()));
  for (const Entry& entry : _entries) {
    checkElement(entry.value);
    coder.encodeKey(entry.key.text());
    coder.encodeObject(entry.value);
  }
}

}  // namespace mrziphoto

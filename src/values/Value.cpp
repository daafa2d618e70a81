#include "Value.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "Array.h"
#include "Dictionary.h"
#include "KeyedHash.h"
#include "detail/NumberTypes.h"
#include "detail/Text.h"

namespace mrziphoto {
namespace {

constexpr bool isSigned(char code) {
  const detail::IntegerType* type = detail::integerType(code);
  return type == nullptr || type->isSigned;
}

template <class Integer>
Integer clamped(double value) {
  if (std::isnan(value)) {
    return 0;
  }
  if (value <= static_cast<double>(std::numeric_limits<Integer>::min())) {
    return std::numeric_limits<Integer>::min();
  }
  if (value >= static_cast<double>(std::numeric_limits<Integer>::max())) {
    return std::numeric_limits<Integer>::max();
  }
  return static_cast<Integer>(value);
}

/// The text from the number on that it begins with, without a plus sign; empty when it begins with
/// none. Words such as "nan" and "infinity" are no numbers.
std::string_view fromNumberOn(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\r"), text.size()));
  std::string_view digits = text;
  if (digits.starts_with('+') || digits.starts_with('-')) {
    digits.remove_prefix(1);
  }
  if (digits.empty() || !(text::isDigit(digits.front()) || digits.front() == '.')) {
    return {};
  }
  return text.starts_with('+') ? digits : text;
}

/// The decimal integer that a text begins with, cut off at the ends of the 64-bit range.
std::int64_t leadingInteger(std::string_view text) {
  text = fromNumberOn(text);
  std::int64_t result = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), result).ec ==
      std::errc::result_out_of_range) {
    result = text.starts_with('-') ? std::numeric_limits<std::int64_t>::min()
                                   : std::numeric_limits<std::int64_t>::max();
  }
  return result;
}

double leadingReal(std::string_view text) {
  text = fromNumberOn(text);
  double result = 0;
  std::from_chars(text.data(), text.data() + text.size(), result);
  return result;
}

std::string realDescription(double value, int digits) {
  if (std::isnan(value)) {
    return "nan";  // its sign means nothing
  }
  std::array<char, 64> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                 std::chars_format::general, digits);
  return {text.data(), end.ptr};
}

/// Equal numbers have equal bits, zeros of both signs included.
std::uint64_t bitsForHash(double value) {
  return value == 0 ? 0 : std::bit_cast<std::uint64_t>(value);
}

constexpr int kFloatDigits = 7;
constexpr int kDoubleDigits = 16;

}  // namespace

Value::Value(const Decimal& value)
    : _held{.integer = value.mantissa},
      _size(static_cast<std::uint32_t>(value.exponent)),
      _kind(Kind::decimal) {}

Value::Value(Date value) : _held{.floating = value.secondsSinceReferenceDate}, _kind(Kind::date) {}

Value::Value(const String& text)
    : _kind(Kind::string), _detail(static_cast<char>(text.encoding())) {
  holdSlice(text.owner(), text.bytes());
}

Value::Value(String&& text) : _kind(Kind::string), _detail(static_cast<char>(text.encoding())) {
  holdSlice(std::move(text._owner), text.bytes());
}

Value::Value(const Data& bytes) : _kind(Kind::data) { holdSlice(bytes.owner(), bytes.bytes()); }

Value::Value(Ref<Object> object) {
  if (!object) {
    return;
  }
  const Class& kind = object->objectClass();
  _kind = &kind == &Array::kClass        ? Kind::array
          : &kind == &Dictionary::kClass ? Kind::dictionary
                                         : Kind::object;
  _holds = Holds::object;
  _held.object = object.detach();
}

Value Value::weak(const Object& object) {
  Value result{Ref<Object>(const_cast<Object*>(&object))};
  result._held.link = WeakLink::to(object);
  result._holds = Holds::weakLink;
  object.release();
  return result;
}

void Value::holdSlice(Ref<Object> owner, std::string_view bytes) {
  if (bytes.size() > std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error("a value holds less than 4 GiB");
  }
  _bytes = bytes.data();
  _size = static_cast<std::uint32_t>(bytes.size());
  if (owner) {
    _held.object = owner.detach();
    _holds = Holds::object;
  }
}

Value::Value(const Value& other) noexcept
    : _held(other._held),
      _bytes(other._bytes),
      _size(other._size),
      _kind(other._kind),
      _holds(other._holds),
      _detail(other._detail) {
  if (_holds == Holds::object) {
    _held.object->retain();
  } else if (_holds == Holds::weakLink) {
    _held.link->retain();
  }
}

Value& Value::operator=(Value other) noexcept {
  clear();
  return *new (this) Value(std::move(other));
}

void Value::release() const noexcept {
  if (_holds == Holds::object) {
    _held.object->release();
  } else {
    _held.link->release();
  }
}

Value::Kind Value::kind() const {
  return _holds == Holds::weakLink && _held.link->target() == nullptr ? Kind::nothing : _kind;
}

Object* Value::target() const {
  if (_kind < Kind::array) {
    return nullptr;
  }
  return _holds == Holds::weakLink ? _held.link->target() : _held.object;
}

char Value::numberType() const {
  return _kind == Kind::integer || _kind == Kind::floating ? _detail
         : _kind == Kind::decimal                          ? 'd'
                                                           : '\0';
}

std::optional<std::int64_t> Value::integer() const {
  if (_kind != Kind::integer || (!isSigned(_detail) && _held.integer < 0)) {
    return std::nullopt;
  }
  return _held.integer;
}

double Value::asDouble() const {
  if (_kind == Kind::floating) {
    return _held.floating;
  }
  if (_kind == Kind::decimal) {
    return decimal()->doubleValue();
  }
  return isSigned(_detail) ? static_cast<double>(_held.integer)
                           : static_cast<double>(static_cast<std::uint64_t>(_held.integer));
}

std::int32_t Value::intValue() const {
  if (_kind == Kind::integer) {
    return static_cast<std::int32_t>(_held.integer);
  }
  if (_kind == Kind::string) {
    return clamped<std::int32_t>(
        static_cast<double>(string()->withUtf8([](auto text) { return leadingInteger(text); })));
  }
  return isNumber() ? clamped<std::int32_t>(asDouble()) : 0;
}

std::uint32_t Value::unsignedIntValue() const {
  if (_kind == Kind::integer) {
    return static_cast<std::uint32_t>(_held.integer);
  }
  if (_kind == Kind::string) {
    return clamped<std::uint32_t>(
        static_cast<double>(string()->withUtf8([](auto text) { return leadingInteger(text); })));
  }
  return isNumber() ? clamped<std::uint32_t>(asDouble()) : 0;
}

double Value::doubleValue() const {
  if (_kind == Kind::string) {
    return string()->withUtf8([](auto text) { return leadingReal(text); });
  }
  return isNumber() ? asDouble() : 0;
}

std::optional<Decimal> Value::decimal() const {
  if (_kind != Kind::decimal) {
    return std::nullopt;
  }
  return Decimal{_held.integer, static_cast<std::int32_t>(_size)};
}

std::optional<Date> Value::date() const {
  return _kind == Kind::date ? std::optional(Date{_held.floating}) : std::nullopt;
}

std::optional<String> Value::string() const {
  if (_kind != Kind::string) {
    return std::nullopt;
  }
  return String(_holds == Holds::object ? Ref<Object>(_held.object) : Ref<Object>(), bytes(),
                static_cast<String::Encoding>(_detail));
}

std::optional<std::string> Value::text() const {
  if (_kind != Kind::string) {
    return std::nullopt;
  }
  return static_cast<String::Encoding>(_detail) == String::Encoding::utf8 ? std::string(bytes())
                                                                          : string()->utf8();
}

std::optional<Data> Value::data() const {
  if (_kind != Kind::data) {
    return std::nullopt;
  }
  return Data(_holds == Holds::object ? Ref<Object>(_held.object) : Ref<Object>(), bytes());
}

Ref<Array> Value::array() const {
  return _kind == Kind::array ? Ref<Array>(static_cast<Array*>(target())) : Ref<Array>();
}

Ref<Dictionary> Value::dictionary() const {
  return _kind == Kind::dictionary ? Ref<Dictionary>(static_cast<Dictionary*>(target()))
                                   : Ref<Dictionary>();
}

std::string Value::description() const {
  switch (kind()) {
    case Kind::nothing:
      return "(null)";
    case Kind::integer:
      return isSigned(_detail) ? std::to_string(_held.integer)
                               : std::to_string(static_cast<std::uint64_t>(_held.integer));
    case Kind::floating:
      return realDescription(_held.floating, _detail == 'f' ? kFloatDigits : kDoubleDigits);
    case Kind::decimal:
      return decimal()->description();
    case Kind::string:
      return *text();
    case Kind::date:
      return date()->description();
    case Kind::data:
      return data()->description();
    case Kind::array:
    case Kind::dictionary:
    case Kind::object:
      break;
  }
  // Following a reference back to an object around it would not end.
  return isWeak() ? "<" + std::string(className()) + ">" : target()->description();
}

std::string_view Value::className() const {
  switch (kind()) {
    case Kind::nothing:
      return "<nil>";
    case Kind::integer:
    case Kind::floating:
      return "NSNumber";
    case Kind::decimal:
      return "NSDecimalNumber";
    case Kind::string:
      return "NSString";
    case Kind::date:
      return "NSDate";
    case Kind::data:
      return "NSData";
    case Kind::array:
    case Kind::dictionary:
    case Kind::object:
      break;
  }
  return target()->className();
}

bool Value::equalsNumber(const Value& other) const {
  if (_kind == Kind::integer && other._kind == Kind::integer) {
    // The same bits mean the same number unless one is negative and the other above the range.
    return _held.integer == other._held.integer &&
           (_held.integer >= 0 || isSigned(_detail) == isSigned(other._detail));
  }
  if (_kind == Kind::decimal && other._kind == Kind::decimal) {
    return *decimal() == *other.decimal();
  }
  return asDouble() == other.asDouble();
}

bool Value::operator==(const Value& other) const {
  if (isNumber() && other.isNumber()) {
    return equalsNumber(other);
  }
  const Kind mine = kind();
  if (mine != other.kind()) {
    return false;
  }
  switch (mine) {
    case Kind::string:
      return *string() == *other.string();
    case Kind::data:
      return bytes() == other.bytes();
    case Kind::date:
      return _held.floating == other._held.floating;
    case Kind::array:
    case Kind::dictionary:
    case Kind::object:
      // A reference back to an object around it is compared by identity: following it would not
      // end.
      return target() == other.target() ||
             (_holds == Holds::object && other._holds == Holds::object &&
              target()->isEqual(*other.target()));
    default:
      return true;
  }
}

std::size_t Value::hash() const {
  switch (kind()) {
    case Kind::integer:
    case Kind::floating:
    case Kind::decimal:
      return KeyedHash{}(bitsForHash(asDouble()));
    case Kind::string:
      return string()->withUtf8(KeyedHash{});
    case Kind::data:
      return KeyedHash{}(bytes());
    case Kind::date:
      return KeyedHash{}(bitsForHash(_held.floating));
    case Kind::array:
    case Kind::dictionary:
    case Kind::object:
      // Ends where objects refer to each other, for no container's hash looks at its values.
      return target()->hash();
    default:
      return 0;
  }
}

}  // namespace mrziphoto

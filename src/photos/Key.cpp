#include "Key.h"

#include <array>
#include <cmath>

#include "../values/KeyedHash.h"
#include "../values/NSException.h"
#include "../values/detail/Formatted.h"
#include "../values/detail/KeyValue.h"

namespace mrziphoto {
Ref<Key> Key::initWithKeyValue(Value value) {
  Ref<Key> result = make<Key>();
  result->_number = std::move(value);
  return result;
}

Ref<Key> Key::initWithKey(std::uint32_t key) { return initWithKeyValue(key); }

Ref<Key> Key::initWithKeyString(std::string_view text) {
  return initWithKey(Value(String({}, text)).unsignedIntValue());
}

Ref<Dictionary> Key::storedDictionary() const {
  if (!_number.isNothing()) {
    // The text of the one entry is shared by all keys.
    static const DictionaryKey kName(kKey);
    _dictionary = make<Dictionary>(std::vector<Dictionary::Entry>{{kName, std::move(_number)}});
    _number = {};
  }
  return _dictionary;
}

Value Key::number() const { return _number.isNothing() ? entry(kKey) : _number; }

Value Key::value() const {
  Value result = number();
  if (result.isNothing()) {
    NSException::raise(kNSInternalInconsistencyException,
                       detail::formatted("{} with no Key value", className()));
  }
  return result;
}

std::string Key::stringValue() const { return value().description(); }

std::optional<std::int64_t> Key::plainNumber() const {
  if (!_number.isNothing()) {
    return wholeNumber(_number);
  }
  const Value* only = _dictionary && _dictionary->size() == 1 ? _dictionary->find(kKey) : nullptr;
  return only != nullptr ? wholeNumber(*only) : std::nullopt;
}

bool Key::isEqual(const Object& other) const {
  const auto* key = dynamic_cast<const Key*>(&other);
  if (key == nullptr) {
    return false;
  }
  const std::optional<std::int64_t> mine = plainNumber();
  const std::optional<std::int64_t> theirs = key->plainNumber();
  return mine || theirs ? mine == theirs
                        : Value(storedDictionary()) == Value(key->storedDictionary());
}

std::size_t Key::hash() const {
  const std::optional<std::int64_t> number = plainNumber();
  return number ? KeyedHash{}(static_cast<std::uint64_t>(*number))
                : Value(storedDictionary()).hash();
}

const Accessor* Key::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      accessor<&Key::key>("key"),
      accessor<&Key::stringValue>("stringValue"),
      accessor<&Key::value>("value"),
  };
  return findAccessor<kAccessors>(name, ArchivedRecord::accessorNamed(name));
}

Value keyNumber(const Value& key) {
  const Ref<Key> object = key.object<Key>();
  return object ? object->value() : findKeyNumber(key);
}

Value findKeyNumber(const Value& key) {
  if (key.isNumber()) {
    return key;
  }
  const Ref<Key> object = key.object<Key>();
  return object ? object->number() : Value();
}

std::optional<std::int64_t> wholeNumber(const Value& number) {
  if (number.kind() == Value::Kind::integer) {
    return number.integer();
  }
  // A whole floating number equals the integer; beyond 2^53 neighbours would look alike.
  const double real = number.doubleValue();
  constexpr double kExact = 9007199254740992.0;
  if (!number.isNumber() || !(std::fabs(real) <= kExact) || std::trunc(real) != real) {
    return std::nullopt;
  }
  return static_cast<std::int64_t>(real);
}

}  // namespace mrziphoto

#include <algorithm>
#include <array>

#include "../photos/RecordDatabase.h"
#include "../stream/TVQStreamData.h"
#include "../values/Array.h"
#include "../values/Log.h"
#include "../values/detail/KeyValue.h"
#include "Album.h"

namespace mrziphoto {
namespace {

List<Key> keysOf(const std::vector<std::uint32_t>& numbers) {
  List<Key>::Items keys;
  keys.reserve(numbers.size());
  for (const std::uint32_t number : numbers) {
    keys.push_back(Key::initWithKey(number));
  }
  return List<Key>(std::move(keys));
}

}  // namespace

Ref<KeyMgr> KeyMgr::initWithKeys(List<Key> keys) {
  Ref<KeyMgr> result = make<KeyMgr>();
  result->_keys = keys.isNothing() ? List<Key>::makeEmpty() : std::move(keys);
  return result;
}

Ref<KeyMgr> KeyMgr::initWithKeyNumbers(std::vector<std::uint32_t> numbers) {
  Ref<KeyMgr> result = make<KeyMgr>();
  result->_numbers = std::move(numbers);
  return result;
}

Ref<Dictionary> KeyMgr::storedDictionary() const {
  return _dictionary ? _dictionary
                     : make<Dictionary>(std::initializer_list<std::pair<std::string_view, Value>>{
                           {kKeys, imageKeys().value()}});
}

List<Key> KeyMgr::imageKeys() const {
  if (_numbers) {
    _keys = keysOf(*_numbers);
    _numbers.reset();
  }
  if (!_dictionary) {
    return _keys;
  }
  const Ref<Array> stored = entry(kKeys).array();
  if (!stored) {
    return keysOf(packedNumbers());
  }
  List<Key>::Items keys;
  keys.reserve(stored->size());
  for (const Value& element : *stored) {
    // A weak element refers back to an object around this one; to own it would close a circle.
    if (!element.isWeak()) {
      keys.push_back(element.object<Key>());
    }
  }
  return List<Key>(std::move(keys));
}

std::vector<std::uint32_t> KeyMgr::keyNumbers() const {
  if (_numbers) {
    return *_numbers;
  }
  if (_dictionary && !entry(kKeys).array()) {
    return packedNumbers();
  }
  std::vector<std::uint32_t> numbers;
  for (const Ref<Key>& key : imageKeys()) {
    if (const Value number = key->number(); !number.isNothing()) {
      numbers.push_back(number.unsignedIntValue());
    }
  }
  return numbers;
}

/// "KeyList": the count of keys and the keys, big-endian words.
std::vector<std::uint32_t> KeyMgr::packedNumbers() const {
  TVQStreamData words(entry(kKeyList).data().value_or(Data()));
  words.setShouldSwapMode(TVQStreamData::bigEndian);
  const std::uint32_t present = words.length() / 4;
  std::vector<std::uint32_t> numbers;
  if (present == 0) {
    return numbers;
  }
  const auto count = static_cast<std::uint32_t>(words.readInt());
  if (std::uint64_t{count} + 1 != present) {
    log("%@ count = %d, but entries = %d", className(), count, present);
  }
  numbers.resize(std::min(count, present - 1));
  for (std::uint32_t& number : numbers) {
    number = static_cast<std::uint32_t>(words.readInt());
  }
  return numbers;
}

List<ImageRecRef> KeyMgr::photos() const {
  if (_database == nullptr) {
    return {};
  }
  // A large album's keys are made for this one question and not kept.
  return _database->photosForKeys(_numbers ? keysOf(*_numbers) : imageKeys());
}

const Accessor* KeyMgr::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      Accessor{"database",
               [](const Object& o) { return static_cast<const KeyMgr&>(o)._database.value(); }},
      accessor<&KeyMgr::imageKeys>("imageKeys"),
      accessor<&KeyMgr::photos>("photos"),
  };
  return findAccessor<kAccessors>(name, ArchivedRecord::accessorNamed(name));
}

}  // namespace mrziphoto

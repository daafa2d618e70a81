#include "KeyMgr.h"

#include <algorithm>

#include "../photos/RecordDatabase.h"
#include "../platform/Array.h"
#include "../platform/Log.h"
#include "../stream/TVQStreamData.h"

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

/// A key may hold more than its number.
const Value* storedNumber(const Key& key) {
  const Ref<Dictionary>& stored = key.storedDictionary();
  return stored ? stored->find(Key::kKey) : nullptr;
}

}  // namespace

Ref<KeyMgr> KeyMgr::initWithKeys(List<Key> keys) {
  Ref<KeyMgr> result = make<KeyMgr>();
  result->_keys = std::move(keys);
  return result;
}

Ref<KeyMgr> KeyMgr::initWithKeyNumbers(std::vector<std::uint32_t> numbers) {
  Ref<KeyMgr> result = make<KeyMgr>();
  result->_numbers = std::move(numbers);
  return result;
}

void KeyMgr::initWithCoder(NSUnarchiver& coder) {
  ArchivedRecord::initWithCoder(coder);
  if (const Ref<Array> stored = entry(kKeys).array()) {
    List<Key>::Items keys;
    keys.reserve(stored->size());
    for (const Value& element : *stored) {
      // A weak element refers back to an object around this one; to own it would close a circle.
      if (const Ref<Key> key = element.object<Key>(); key && !element.isWeak()) {
        keys.push_back(key);
      }
    }
    _keys = List<Key>(std::move(keys));
  }
}

const Ref<Dictionary>& KeyMgr::storedDictionary() const {
  if (!_dictionary && (_numbers || !_keys.isNothing())) {
    _dictionary = make<Dictionary>();
    _dictionary->set(kKeys, imageKeys().value());
  }
  return _dictionary;
}

List<Key> KeyMgr::imageKeys() const {
  if (_keys.isNothing() && _numbers) {
    _keys = keysOf(*_numbers);
  }
  return _keys.isNothing() ? keysOf(packedNumbers()) : _keys;
}

std::vector<std::uint32_t> KeyMgr::keyNumbers() const {
  if (_numbers) {
    return *_numbers;
  }
  if (_keys.isNothing()) {
    return packedNumbers();
  }
  std::vector<std::uint32_t> numbers;
  numbers.reserve(_keys.size());
  for (const Ref<Key>& key : _keys) {
    if (const Value* number = storedNumber(*key)) {
      numbers.push_back(number->unsignedIntValue());
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
  return _database->photosForKeys(_numbers && _keys.isNothing() ? keysOf(*_numbers) : imageKeys());
}

}  // namespace mrziphoto

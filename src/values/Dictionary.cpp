#include "Dictionary.h"

#include <algorithm>
#include <bitset>

#include "KeyedHash.h"
#include "detail/Description.h"

namespace mrziphoto {
namespace {

class KeyText final : public Object {
 public:
  explicit KeyText(std::string_view text) : _hash(KeyedHash{}(text)), _text(text) {}

  [[nodiscard]] const Class& objectClass() const override {
    static constexpr Class kClass{"NSString"};
    return kClass;
  }
  [[nodiscard]] std::size_t textHash() const { return _hash; }
  [[nodiscard]] std::string_view text() const { return _text; }

 private:
  std::size_t _hash;
  std::string _text;
};

// Below this size a scan is faster than an index and needs no memory.
constexpr std::size_t kScanned = 24;
// From this size on, an index is also the fastest way to see whether new entries repeat a key.
constexpr std::size_t kIndexedAtOnce = 256;

}  // namespace

DictionaryKey::DictionaryKey(std::string_view text) : _text(make<KeyText>(text)) {}

std::string_view DictionaryKey::text() const {
  return static_cast<const KeyText*>(_text.get())->text();
}

std::size_t DictionaryKey::hash() const {
  return static_cast<const KeyText*>(_text.get())->textHash();
}

/// Positions of entries by the hash of their keys, open addressing.
class Dictionary::Index {
 public:
  explicit Index(const std::vector<Entry>& entries) : _entries(entries) { rebuild(); }

  [[nodiscard]] std::size_t find(std::string_view key, std::size_t hash) const {
    for (std::size_t slot = hash & _mask;; slot = (slot + 1) & _mask) {
      const std::uint32_t position = _slots[slot];
      if (position == kEmpty) {
        return kNotFound;
      }
      const DictionaryKey& candidate = _entries[position].key;
      if (candidate.hash() == hash && candidate.text() == key) {
        return position;
      }
    }
  }

  /// True when two entries have equal keys; such an index finds no entry.
  [[nodiscard]] bool metKeyTwice() const { return _metKeyTwice; }

  /// Takes in the entry that was appended last.
  void added() {
    if (_entries.size() * 2 > _slots.size()) {
      rebuild();
    } else {
      insert(_entries.size() - 1);
    }
  }

 private:
  static constexpr std::uint32_t kEmpty = 0xFFFFFFFF;

  void rebuild() {
    std::size_t size = 64;
    while (size < _entries.size() * 2) {
      size *= 2;
    }
    _slots.assign(size, kEmpty);
    _mask = size - 1;
    // Going on would take a longer search for each further equal key.
    for (std::size_t i = 0; i < _entries.size() && !_metKeyTwice; ++i) {
      insert(i);
    }
  }

  void insert(std::size_t position) {
    std::size_t slot = _entries[position].key.hash() & _mask;
    for (; _slots[slot] != kEmpty; slot = (slot + 1) & _mask) {
      if (_entries[_slots[slot]].key == _entries[position].key) {
        _metKeyTwice = true;
        return;
      }
    }
    _slots[slot] = static_cast<std::uint32_t>(position);
  }

  const std::vector<Entry>& _entries;
  std::vector<std::uint32_t> _slots;
  std::size_t _mask = 0;
  bool _metKeyTwice = false;
};

namespace {

/// For few entries. Compares keys only where some bits of their hashes agree.
bool holdsKeyTwice(const std::vector<Dictionary::Entry>& entries) {
  constexpr std::size_t kBits = 1024;
  std::bitset<kBits> seen;
  for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
    const auto isSame = [entry](const auto& earlier) { return earlier.key == entry->key; };
    const std::size_t bit = entry->key.hash() % kBits;
    if (seen[bit] && std::any_of(entries.begin(), entry, isSame)) {
      return true;
    }
    seen[bit] = true;
  }
  return false;
}

}  // namespace

const Class Dictionary::kClass{"NSDictionary", nullptr, 0, &makeEmpty<Dictionary>};

Dictionary::Dictionary() = default;
Dictionary::~Dictionary() = default;

Dictionary::Dictionary(std::vector<Entry> entries) : _entries(std::move(entries)) {
  bool repeatsKey = false;
  if (_entries.size() < kIndexedAtOnce) {
    repeatsKey = holdsKeyTwice(_entries);
  } else {
    _index = std::make_unique<Index>(_entries);
    repeatsKey = _index->metKeyTwice();
  }
  if (repeatsKey) {
    _index.reset();
    for (Entry& entry : std::exchange(_entries, {})) {
      set(entry.key, std::move(entry.value));
    }
  }
}

Dictionary::Dictionary(std::initializer_list<std::pair<std::string_view, Value>> entries) {
  for (const auto& [key, value] : entries) {
    set(key, value);
  }
}

bool Dictionary::isScanned() const { return _entries.size() < kScanned; }

std::size_t Dictionary::indexed(std::string_view key, std::size_t hash) const {
  if (!_index) {
    _index = std::make_unique<Index>(_entries);
  }
  return _index->find(key, hash);
}

const Value* Dictionary::find(std::string_view key) const {
  if (isScanned()) {
    const auto found =
        std::ranges::find(_entries, key, [](const Entry& entry) { return entry.key.text(); });
    return found != _entries.end() ? &found->value : nullptr;
  }
  const std::size_t found = indexed(key, KeyedHash{}(key));
  return found == kNotFound ? nullptr : &_entries[found].value;
}

Value Dictionary::get(std::string_view key) const {
  const Value* found = find(key);
  return found != nullptr ? *found : Value();
}

void Dictionary::set(const DictionaryKey& key, Value value) {
  const std::size_t found =
      isScanned() ? static_cast<std::size_t>(std::ranges::find(_entries, key, &Entry::key) -
                                             _entries.begin())
                  : indexed(key.text(), key.hash());
  if (found < _entries.size()) {
    _entries[found].value = std::move(value);
    return;
  }
  _entries.push_back({key, std::move(value)});
  if (_index) {
    _index->added();
  }
}

std::string Dictionary::description() const { return describe(*this); }

bool Dictionary::isEqual(const Object& other) const {
  const auto* dictionary = dynamic_cast<const Dictionary*>(&other);
  if (dictionary == nullptr || dictionary->size() != size()) {
    return false;
  }
  for (const Entry& entry : _entries) {
    const Value* theirs = dictionary->find(entry.key.text());
    if (theirs == nullptr || !(*theirs == entry.value)) {
      return false;
    }
  }
  return true;
}

std::size_t Dictionary::hash() const {
  // Independent of the order of the entries. Values are left out: they may refer back to this
  // dictionary.
  std::size_t result = _entries.size();
  for (const Entry& entry : _entries) {
    result += entry.key.hash();
  }
  return result;
}

}  // namespace mrziphoto

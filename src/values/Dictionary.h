#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Export.h"
#include "Object.h"
#include "Value.h"

namespace mrziphoto {

namespace detail {
class KeyCache;
}

/// The text of a dictionary key with its hash, shared by all entries that bear it.
class MRZIPHOTO_EXPORT DictionaryKey {
 public:
  explicit DictionaryKey(std::string_view text);

  [[nodiscard]] std::string_view text() const;
  [[nodiscard]] std::size_t hash() const;
  bool operator==(const DictionaryKey& other) const {
    return _text == other._text || (hash() == other.hash() && text() == other.text());
  }

 private:
  friend class detail::KeyCache;
  explicit DictionaryKey(Ref<Object> text) : _text(std::move(text)) {}

  Ref<Object> _text;
};

/// A collection of values by key text, in the order in which the keys were first set. A key stands
/// in it once. Shared by reference; only the code that makes one fills it.
class MRZIPHOTO_EXPORT Dictionary final : public Object {
 public:
  static const Class kClass;

  struct Entry {
    DictionaryKey key;
    Value value;
  };

  Dictionary();
  /// The pairs in order; of equal keys the later value counts, in the earlier place.
  explicit Dictionary(std::vector<Entry> entries);
  Dictionary(std::initializer_list<std::pair<std::string_view, Value>> entries);
  ~Dictionary() override;

  /// The value of that key, which lives as long as the entry does; nullptr when there is none.
  /// A few entries are scanned, many are found by an index.
  [[nodiscard]] const Value* find(std::string_view key) const;
  /// A copy of the value of that key; nothing when there is none.
  [[nodiscard]] Value get(std::string_view key) const;
  [[nodiscard]] bool contains(std::string_view key) const { return find(key) != nullptr; }

  /// Sets or replaces.
  void set(std::string_view key, Value value) { set(DictionaryKey(key), std::move(value)); }
  void set(const DictionaryKey& key, Value value);
  /// Room for that many entries.
  void reserve(std::size_t count) { _entries.reserve(count); }

  [[nodiscard]] const std::vector<Entry>& entries() const { return _entries; }
  [[nodiscard]] std::size_t size() const { return _entries.size(); }
  [[nodiscard]] bool empty() const { return _entries.empty(); }
  [[nodiscard]] auto begin() const { return _entries.begin(); }
  [[nodiscard]] auto end() const { return _entries.end(); }

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  /// Lines "key = value;" in braces, sorted by key; "{\n}" when empty.
  [[nodiscard]] std::string description() const override;
  /// Equal keys with equal values, whatever their order.
  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;

 private:
  class Index;
  static constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

  [[nodiscard]] bool isScanned() const;
  [[nodiscard]] std::size_t indexed(std::string_view key, std::size_t hash) const;

  std::vector<Entry> _entries;
  mutable std::unique_ptr<Index> _index;  // only above a size where scanning costs more
};

}  // namespace mrziphoto

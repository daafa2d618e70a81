#pragma once

#include <compare>
#include <cstddef>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Export.h"
#include "Object.h"
#include "Value.h"

namespace mrziphoto {

/// An ordered collection of values, shared by reference. Only the code that makes one fills it.
class MRZIPHOTO_EXPORT Array final : public Object {
 public:
  static const Class kClass;

  Array() = default;
  explicit Array(std::vector<Value> values) : _values(std::move(values)) {}

  [[nodiscard]] const std::vector<Value>& values() const { return _values; }
  [[nodiscard]] std::size_t size() const { return _values.size(); }
  [[nodiscard]] bool empty() const { return _values.empty(); }
  [[nodiscard]] auto begin() const { return _values.begin(); }
  [[nodiscard]] auto end() const { return _values.end(); }
  const Value& operator[](std::size_t position) const { return _values[position]; }

  void append(Value value) { _values.push_back(std::move(value)); }
  void reserve(std::size_t count) { _values.reserve(count); }

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  /// Lines in round brackets, an element a line; "(\n)" when empty.
  [[nodiscard]] std::string description() const override;
  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;

 private:
  std::vector<Value> _values;
};

/// A read-only view of a list of objects of one class, or of no list, which is empty. It shows what
/// the list's owner adds and removes later, and keeps the objects alive. An iteration visits the
/// objects that the list held when it began.
template <class T>
class List {
 public:
  /// The objects, none of them empty.
  using Items = std::vector<Ref<T>>;
  class Iterator;

  /// A view of no list.
  List() = default;
  /// A list of these objects that never changes. Empty references are left out.
  explicit List(Items items) : _shared(std::make_shared<Shared>(std::move(items))) {}
  /// An empty list.
  static List makeEmpty() { return List(Items()); }

  [[nodiscard]] bool isNothing() const { return _shared == nullptr; }
  [[nodiscard]] std::size_t size() const { return _shared != nullptr ? current().size() : 0; }
  [[nodiscard]] bool empty() const { return size() == 0; }
  [[nodiscard]] Iterator begin() const { return Iterator(_shared, 0); }
  [[nodiscard]] Iterator end() const { return Iterator(_shared, size()); }
  /// The object at that position, below `size`.
  Ref<T> operator[](std::size_t position) const { return current()[position]; }
  /// The objects that the list holds now.
  [[nodiscard]] std::shared_ptr<const Items> items() const {
    static const auto kNone = std::make_shared<const Items>();
    return _shared != nullptr ? _shared->shownItems() : kNone;
  }
  /// True for two views of one list.
  [[nodiscard]] bool isSameList(const List& other) const { return _shared == other._shared; }

  /// The items as an array value, for key-value access; nothing without a list.
  [[nodiscard]] Value value() const {
    return isNothing() ? Value() : Value(make<Array>(std::vector<Value>(begin(), end())));
  }

 protected:
  /// The objects of one moment. Each one's count lies wherever the object does; it is fetched while
  /// others are let go.
  struct Owned {
    Items items;

    Owned() = default;
    explicit Owned(Items owned) : items(std::move(owned)) { std::erase(items, nullptr); }
    Owned(const Owned&) = default;
    Owned& operator=(const Owned&) = delete;
    ~Owned() {
      constexpr std::size_t kAhead = 16;
      for (std::size_t i = 0; i < items.size(); ++i) {
        if (i + kAhead < items.size()) {
          __builtin_prefetch(items[i + kAhead].get(), 1);
        }
        items[i] = nullptr;
      }
    }
  };

  /// What all views of one list share.
  struct Shared {
    std::shared_ptr<Owned> owned;

    explicit Shared(Items items) : owned(std::make_shared<Owned>(std::move(items))) {}
    [[nodiscard]] std::shared_ptr<const Items> shownItems() const { return {owned, &owned->items}; }
  };

  [[nodiscard]] const Items& current() const { return _shared->owned->items; }

  std::shared_ptr<Shared> _shared;
};

/// A position in an iteration, which keeps the objects alive.
template <class T>
class List<T>::Iterator {
 public:
  using iterator_category = std::random_access_iterator_tag;
  using value_type = Ref<T>;
  using difference_type = std::ptrdiff_t;
  using reference = const Ref<T>&;
  using pointer = const Ref<T>*;

  Iterator() = default;

  reference operator*() const { return *_at; }
  pointer operator->() const { return _at; }
  reference operator[](difference_type steps) const { return _at[steps]; }
  Iterator& operator++() { return *this += 1; }
  Iterator operator++(int) { return std::exchange(*this, *this + 1); }
  Iterator& operator--() { return *this -= 1; }
  Iterator operator--(int) { return std::exchange(*this, *this - 1); }
  Iterator& operator+=(difference_type steps) {
    _at += steps;
    return *this;
  }
  Iterator& operator-=(difference_type steps) { return *this += -steps; }
  friend Iterator operator+(Iterator from, difference_type steps) { return from += steps; }
  friend Iterator operator+(difference_type steps, Iterator from) { return from += steps; }
  friend Iterator operator-(Iterator from, difference_type steps) { return from -= steps; }
  friend difference_type operator-(const Iterator& a, const Iterator& b) { return a._at - b._at; }
  bool operator==(const Iterator& other) const { return _at == other._at; }
  auto operator<=>(const Iterator& other) const { return _at <=> other._at; }

 private:
  friend class List;
  Iterator(const std::shared_ptr<Shared>& list, std::size_t position) {
    if (list != nullptr) {
      _walked = list->owned;
      _at = _walked->items.data() + position;
    }
  }

  std::shared_ptr<const Owned> _walked;
  pointer _at = nullptr;
};

/// A list that its owner changes and hands out as `List`.
template <class T>
class OwnedList final : public List<T> {
 public:
  using typename List<T>::Items;

  /// No list until an item is added.
  OwnedList() = default;
  explicit OwnedList(Items items) : List<T>(std::move(items)) {}
  static OwnedList makeEmpty() { return OwnedList(Items()); }
  OwnedList(const OwnedList&) = delete;
  OwnedList& operator=(const OwnedList&) = delete;
  OwnedList(OwnedList&&) noexcept = default;
  OwnedList& operator=(OwnedList&&) noexcept = default;

  /// Ignores an empty reference.
  void append(Ref<T> item) {
    if (item) {
      changed().push_back(std::move(item));
    }
  }
  /// Puts the item in front of the one at that position, which is `size` at most. Ignores an empty
  /// reference.
  void insert(Ref<T> item, std::size_t position) {
    if (item) {
      Items& items = changed();
      items.insert(items.begin() + static_cast<std::ptrdiff_t>(position), std::move(item));
    }
  }
  void clear() {
    if (!this->isNothing()) {
      this->_shared->owned = std::make_shared<Owned>();
    }
  }

 private:
  using typename List<T>::Owned;
  using typename List<T>::Shared;

  /// The items, to be changed: a copy while an iteration goes on.
  Items& changed() {
    if (this->isNothing()) {
      this->_shared = std::make_shared<Shared>(Items());
    }
    std::shared_ptr<Owned>& owned = this->_shared->owned;
    if (owned.use_count() > 1) {
      owned = std::make_shared<Owned>(*owned);
    }
    return owned->items;
  }
};

}  // namespace mrziphoto

#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "Array.h"
#include "Object.h"

namespace mrziphoto {

/// A list of objects of one class, or nothing. Copies share one list, so that an owner's list
/// shows its later additions to whoever asked for it before. Walking nothing is walking an empty
/// list.
template <class T>
class List {
 public:
  using Items = std::vector<Ref<T>>;

  /// Nothing.
  List() = default;
  /// A new list of these items.
  explicit List(Items items) : _items(std::make_shared<Owned>(std::move(items))) {}
  /// A new empty list.
  static List makeEmpty() { return List(Items()); }

  [[nodiscard]] bool isNothing() const { return _items == nullptr; }
  [[nodiscard]] std::size_t size() const { return items().size(); }
  [[nodiscard]] bool empty() const { return items().empty(); }
  [[nodiscard]] auto begin() const { return items().begin(); }
  [[nodiscard]] auto end() const { return items().end(); }
  const Ref<T>& operator[](std::size_t position) const { return items()[position]; }
  [[nodiscard]] const Items& items() const {
    static const Items kNone;
    return _items != nullptr ? _items->items : kNone;
  }

  /// The changes below are for the list's owner, and not for nothing.
  void append(Ref<T> item) { _items->items.push_back(std::move(item)); }
  void insert(Ref<T> item, std::size_t position) {
    Items& items = _items->items;
    items.insert(items.begin() + static_cast<std::ptrdiff_t>(position), std::move(item));
  }
  void clear() { _items->items.clear(); }
  void reserve(std::size_t count) { _items->items.reserve(count); }

  /// The items as an array value, for key-value access; nothing for nothing.
  [[nodiscard]] Value value() const {
    return isNothing() ? Value() : Value(make<Array>(std::vector<Value>(begin(), end())));
  }

 private:
  struct Owned {
    Items items;

    explicit Owned(Items owned) : items(std::move(owned)) {}
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    /// Each item's count lies wherever the item does; it is fetched while others are let go.
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

  std::shared_ptr<Owned> _items;
};

}  // namespace mrziphoto

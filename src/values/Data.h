#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Export.h"
#include "Object.h"

namespace mrziphoto {

/// An unchangeable run of bytes: a buffer of its own, or a slice of one, which it keeps alive.
class MRZIPHOTO_EXPORT Data {
 public:
  /// No bytes.
  Data() = default;
  /// A slice of bytes that `owner` keeps alive.
  Data(Ref<Object> owner, std::string_view bytes) : _owner(std::move(owner)), _bytes(bytes) {}
  /// A buffer of its own with a copy of the bytes.
  static Data copyOf(std::string_view bytes);
  /// A buffer of its own with room for `size` bytes, all of them zero, that `fill` may write to.
  /// Throws std::bad_alloc when there is no memory for it.
  template <class Fill>
  static Data filled(std::size_t size, Fill&& fill);

  [[nodiscard]] std::string_view bytes() const { return _bytes; }
  [[nodiscard]] std::size_t size() const { return _bytes.size(); }
  [[nodiscard]] bool empty() const { return _bytes.empty(); }
  [[nodiscard]] const Ref<Object>& owner() const { return _owner; }
  /// The part that begins at `offset`, cut at the end.
  [[nodiscard]] Data slice(std::size_t offset, std::size_t count) const {
    return offset >= size() ? Data() : Data(_owner, _bytes.substr(offset, count));
  }
  /// "<68656c6c 6f>": groups of four bytes in hexadecimal.
  [[nodiscard]] std::string description() const;

  bool operator==(const Data& other) const { return _bytes == other._bytes; }

 private:
  static Data zeros(std::size_t size, char*& start);

  Ref<Object> _owner;
  std::string_view _bytes;
};

template <class Fill>
Data Data::filled(std::size_t size, Fill&& fill) {
  char* start = nullptr;
  Data result = zeros(size, start);
  fill(start);
  return result;
}

}  // namespace mrziphoto

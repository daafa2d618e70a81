#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "../../photos/ImageRecRef.h"
#include "../../table/detail/RowIndex.h"
#include "../../values/Array.h"

namespace mrziphoto {

/// The first record of a list with a given key, as a walk over the list would find it.
class RecordIndex {
 public:
  explicit RecordIndex(const List<ImageRecRef>& records)
      : _records(records.items()), _positions(_records->size(), [this](std::size_t position) {
          return (*_records)[position]->plainKeyNumber();
        }) {}

  /// False once some record has another key than when the index was made.
  [[nodiscard]] bool isUpToDate() const { return _keyChanges == ImageRecRef::keyChanges(); }

  /// Where the list holds the record; nullptr when it holds none. The records of a catalogue have
  /// plain numbers for keys, which equal no other key.
  [[nodiscard]] const Ref<ImageRecRef>* find(std::optional<std::int64_t> key) const {
    const auto position = key ? _positions.find(*key) : std::nullopt;
    return position ? &(*_records)[*position] : nullptr;
  }
  /// Starts fetching the memory that `find` will read for that key.
  void prefetch(std::optional<std::int64_t> key) const {
    if (key) {
      _positions.prefetch(*key);
    }
  }

 private:
  std::shared_ptr<const List<ImageRecRef>::Items> _records;
  RowIndex _positions;
  std::uint64_t _keyChanges = ImageRecRef::keyChanges();
};

}  // namespace mrziphoto

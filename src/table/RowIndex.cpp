#include "detail/RowIndex.h"

#include <algorithm>

namespace mrziphoto {
namespace {

// A table may have this many places for each row: as much memory as the index would take.
constexpr std::size_t kPlacesPerRow = 4;

}  // namespace

RowIndex::RowIndex(std::span<const std::uint32_t> keys) {
  if (keys.empty()) {
    return;
  }
  const auto [least, most] = std::ranges::minmax_element(keys);
  _least = *least;
  const std::size_t places = std::size_t{*most} - *least + 1;
  _isDirect = places / kPlacesPerRow <= keys.size();
  if (_isDirect) {
    _rows.assign(places, kNone);
  } else {
    _scattered = FirstIndex<std::uint32_t>(keys.size());
  }
  for (std::uint32_t row = 0; row < keys.size(); ++row) {
    std::uint32_t stands = row;
    if (!_isDirect) {
      stands = _scattered.add(keys[row], row);
    } else if (std::uint32_t& place = _rows[keys[row] - _least]; place == kNone) {
      place = row;
    } else {
      stands = place;
    }
    _hasEqualKeys = _hasEqualKeys || stands != row;
  }
}

}  // namespace mrziphoto

#include "detail/PhotoFacts.h"

#include <algorithm>

namespace mrziphoto {

std::string lastComponent(const FactText& path) {
  // A folder ends in a slash.
  const bool isInRest = !path.rest.empty() && path.rest.back() != '/';
  return isInRest ? path::lastComponent(path.rest) : path::lastComponent(path.text());
}

Fact PhotoFacts::operator[](PhotoField field) const {
  const char* at = _table->_facts[_row];
  if ((static_cast<unsigned char>(*at++) & PhotoTable::kIsLong) != 0) {
    const auto& rows = _table->_longRows;
    const char* fact =
        std::ranges::lower_bound(rows, _row, {}, &PhotoTable::LongRow::row)->facts[indexOf(field)];
    return fact != nullptr ? Fact(*_table, static_cast<FactKind>(*fact), fact + 1) : Fact();
  }
  while (const std::uint64_t each = facts::readNumber(at)) {
    const auto kind = static_cast<FactKind>(*at++);
    if (each == indexOf(field)) {
      return {*_table, kind, at};
    }
    at = facts::behind(kind, at);
  }
  return {};
}

Ref<Dictionary> PhotoFacts::dictionary(PhotoStore store) const {
  if (!has(store)) {
    return {};
  }
  std::vector<Dictionary::Entry> entries;
  forEach([&](std::uint32_t field, const Fact& fact) {
    // Only the image info has entries of names that the program does not know.
    const PhotoStore itsStore =
        field < kKnownFields ? kPhotoFields[field].store : PhotoStore::imageInfo;
    if (itsStore == store) {
      entries.push_back({_table->name(field), fact.value()});
    }
  });
  return make<Dictionary>(std::move(entries));
}

}  // namespace mrziphoto

#include "KeywordAlbum.h"

#include <array>

#include "../photos/RecordDatabase.h"
#include "../platform/KeyValue.h"
#include "../platform/Log.h"

namespace mrziphoto {

std::optional<std::string> KeywordAlbum::comments() const {
  const Ref<ImageRecRef> record =
      database() != nullptr ? database()->rollRecRefForKey(key()) : Ref<ImageRecRef>();
  std::optional<std::string> found = record ? record->comments() : std::nullopt;
  log("%@ %@ '%@'", className(), key(), found);
  return found;
}

const Accessor* KeywordAlbum::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      Accessor{"archiveDate",
               [](const Object& o) -> Value { return static_cast<const Album&>(o).archiveDate(); }},
      Accessor{"date",
               [](const Object& o) -> Value { return static_cast<const Album&>(o).date(); }},
  };
  static_assert(accessorsAreSorted(kAccessors));
  const Accessor* own = findAccessor(kAccessors, name);
  return own != nullptr ? own : Album::accessorNamed(name);
}

}  // namespace mrziphoto

#include <array>

#include "../photos/RecordDatabase.h"
#include "../values/Log.h"
#include "../values/detail/KeyValue.h"
#include "AlbumKinds.h"

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
      accessor<&KeywordAlbum::archiveDate>("archiveDate"),
      accessor<&KeywordAlbum::date>("date"),
  };
  return findAccessor<kAccessors>(name, Album::accessorNamed(name));
}

}  // namespace mrziphoto

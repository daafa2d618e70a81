#include <array>

#include "../photos/RecordDatabase.h"
#include "../values/detail/KeyValue.h"
#include "AlbumKinds.h"

namespace mrziphoto {

void RollAlbum::takeAlbumData(const Dictionary& albumData) {
  Album::takeAlbumData(albumData);
  if (!attributes()) {
    setAttributes(AttributeMgr::init());
  }
  if (const Value* name = albumData.find(kRollName); name != nullptr && name->isString()) {
    setAlbumName(*name);
  }
  const Value* seconds = albumData.find(kRollDateAsTimerInterval);
  if (seconds != nullptr && seconds->isNumber()) {
    setModificationDate(Date{seconds->doubleValue()});
  }
}

Ref<ImageRecRef> RollAlbum::_rollRecRef() const {
  return database() != nullptr ? database()->rollRecRefForKey(key()) : Ref<ImageRecRef>();
}

std::optional<std::string> RollAlbum::albumName() const {
  const Ref<ImageRecRef> record = _rollRecRef();
  return record ? record->caption() : Album::albumName();
}

std::optional<std::string> RollAlbum::comments() const {
  const Ref<ImageRecRef> record = _rollRecRef();
  return record ? record->comments() : Album::comments();
}

std::optional<Date> RollAlbum::date() const {
  const Ref<ImageRecRef> record = _rollRecRef();
  return record ? record->date() : modificationDate();
}

std::optional<Date> RollAlbum::archiveDate() const {
  const Ref<ImageRecRef> record = _rollRecRef();
  return record ? record->archiveDate() : modificationDate();
}

const Accessor* RollAlbum::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      accessor<&RollAlbum::_rollRecRef>("_rollRecRef"),
      accessor<&RollAlbum::archiveDate>("archiveDate"),
      accessor<&RollAlbum::date>("date"),
  };
  return findAccessor<kAccessors>(name, Album::accessorNamed(name));
}

}  // namespace mrziphoto

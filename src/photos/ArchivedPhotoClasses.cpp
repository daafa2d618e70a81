#include <array>

#include "../values/detail/KeyValue.h"
#include "ImageRec.h"
#include "ImageRecRef.h"
#include "Key.h"

namespace mrziphoto {

// The archived classes of photos: name, base, highest version read without a log line.
const Class Key::kClass{"Key", nullptr, 1, &makeEmpty<Key>};
const Class ImageRefKey::kClass{"ImageRefKey", &Key::kClass, 0, &makeEmpty<ImageRefKey>};
const Class ImageRec::kClass{"ImageRec", nullptr, 4, &makeEmpty<ImageRec>};
const Class AttributeMgr::kClass{"AttributeMgr", nullptr, 1, &makeEmpty<AttributeMgr>};
const Class ImageSource::kClass{"ImageSource", nullptr, 0, &makeEmpty<ImageSource>};
const Class DBSource::kClass{"DBSource", &ImageSource::kClass, 0, &makeEmpty<DBSource>};
const Class DBCopySource::kClass{"DBCopySource", &ImageSource::kClass, 0, &makeEmpty<DBCopySource>};
const Class ImageRecRef::kClass{"ImageRecRef", nullptr, 4, &makeEmpty<ImageRecRef>};

const Accessor* ImageSource::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      accessor<&ImageSource::directoryKey>("directoryKey"),
      accessor<&ImageSource::filename>("filename"),
  };
  return findAccessor<kAccessors>(name, ArchivedRecord::accessorNamed(name));
}

}  // namespace mrziphoto

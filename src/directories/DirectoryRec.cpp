#include <array>

#include "../photos/Key.h"
#include "../values/detail/KeyValue.h"
#include "TVQiPhotoDirectories.h"

namespace mrziphoto {

const Class DirectoryRec::kClass{"DirectoryRec", nullptr, 1, &makeEmpty<DirectoryRec>};

Value DirectoryRec::directoryKeyValue() const { return keyNumber(directoryKey()); }

const Accessor* DirectoryRec::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      accessor<&DirectoryRec::directory>("directory"),
      accessor<&DirectoryRec::directoryKey>("directoryKey"),
      accessor<&DirectoryRec::directoryKeyValue>("directoryKeyValue"),
  };
  return findAccessor<kAccessors>(name, ArchivedRecord::accessorNamed(name));
}

}  // namespace mrziphoto

#pragma once

#include <cstdint>

#include "../values/Export.h"
#include "../values/Object.h"

namespace mrziphoto {

class AttributeMgr;
class Dictionary;
class ImageRec;

/// What a record knows of its photo; each part may be nothing.
struct RecordStores {
  Ref<Dictionary> imageInfo;
  Ref<AttributeMgr> imageAttributes;
  Ref<ImageRec> info;
};

/// Where a record's image info and stores come from when somebody first asks for one of them.
/// Most records of a large library are never asked; they stay a position in their file.
class MRZIPHOTO_EXPORT RecordSource : public Object {
 public:
  /// What the file holds for the record at that position, made anew at every call. A record keeps
  /// the answer until it is unloaded; after an exception it asks again when it is asked itself.
  [[nodiscard]] virtual RecordStores stores(std::uint32_t position) const = 0;
};

}  // namespace mrziphoto

#pragma once

#include <cstdint>

#include "../platform/Export.h"
#include "../platform/Object.h"

namespace mrziphoto {

class ImageRecRef;

/// Where a record's image info and stores come from when somebody first asks for one of them.
/// Most records of a large library are never asked; they stay a position in their file.
class MRZIPHOTO_EXPORT RecordSource : public Object {
 public:
  /// Gives the record what the file holds for it at that position. Called anew for
  /// a record that was unloaded; what the file holds there was found sound when the file was
  /// loaded.
  virtual void makeStores(ImageRecRef& record, std::uint32_t position) const = 0;
};

}  // namespace mrziphoto

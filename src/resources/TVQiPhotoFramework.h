#pragma once

#include "../values/Export.h"
#include "Bundle.h"

namespace mrziphoto {

/// Stands for the system itself.
class MRZIPHOTO_EXPORT TVQiPhotoFramework {
 public:
  TVQiPhotoFramework() = delete;

  /// The system's own resources, such as its string tables; never nothing. Looked for once: in the
  /// folder that the environment variable MRZIPHOTO_RESOURCES names, else in
  /// "share/MRZiPhoto/resources" beside one of the folders that hold the shared library. Relative
  /// paths of either go from the folder that was the current one when the library was loaded. Where
  /// there are none, every text is its own key.
  [[nodiscard]] static Ref<Bundle> bundle();
};

}  // namespace mrziphoto

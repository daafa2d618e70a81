#pragma once

#include <string_view>

#include "Export.h"
#include "Object.h"

namespace mrziphoto {

/// The classes that archives may name, besides the platform's own. The system's classes are in it
/// from the moment the library is loaded; a host may add its own. May be asked from any thread.
class MRZIPHOTO_EXPORT ClassRegistry {
 public:
  /// Makes a class known under its name, in place of one of that name that was known before. The
  /// class must live as long as the program.
  static void add(const Class& added);
  /// The class of that name, or nullptr.
  [[nodiscard]] static const Class* find(std::string_view name);
};

}  // namespace mrziphoto

#pragma once

#include <string_view>

#include "Export.h"
#include "Object.h"

namespace mrziphoto {

/// The classes that archives may name, besides the platform's own. Those of this library are
/// registered when it is loaded; a host may add its own. Thread-safe.
class MRZIPHOTO_EXPORT ClassRegistry {
 public:
  /// Registers a class, in place of one of the same name. The class must live as long as the
  /// program.
  static void add(const Class& added);
  /// The class of that name, or nullptr.
  [[nodiscard]] static const Class* find(std::string_view name);
};

}  // namespace mrziphoto

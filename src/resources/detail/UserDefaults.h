#pragma once

#include <string>

#include "../../values/Export.h"

namespace mrziphoto {

/// Settings by which a user or a host changes how the library works. Thread-safe.
class MRZIPHOTO_EXPORT UserDefaults {
 public:
  UserDefaults() = delete;

  /// What the host has set; else the environment variable of that name, true when it begins with
  /// "Y" or "T" in either case, or with a number other than 0; else false.
  [[nodiscard]] static bool boolForKey(const std::string& key);
  /// Sets a default for the whole process, which overrides the environment.
  static void setBoolForKey(bool value, const std::string& key);
  /// Takes back what the host has set.
  static void removeObjectForKey(const std::string& key);
};

}  // namespace mrziphoto

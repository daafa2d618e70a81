#pragma once

#include <string>

#include "../values/Export.h"

namespace mrziphoto {

/// The settings by which a user or a host changes what the system does. May be asked and set from
/// any thread.
class MRZIPHOTO_EXPORT UserDefaults {
 public:
  UserDefaults() = delete;

  /// What the host has set; else the environment variable of that name, read as the platform reads
  /// a truth from a text: true when it begins with "Y" or "T" in either case, or with a number
  /// other than 0. False when there is neither.
  [[nodiscard]] static bool boolForKey(const std::string& key);
  /// Sets a default for the whole process; it stands before the environment.
  static void setBoolForKey(bool value, const std::string& key);
  /// Takes back what the host has set.
  static void removeObjectForKey(const std::string& key);
};

}  // namespace mrziphoto

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "../../values/Export.h"

namespace mrziphoto {

/// What is known of the applications on this machine.
class MRZIPHOTO_EXPORT Workspace {
 public:
  /// Answers the full path of the application of that name, or nothing.
  using ApplicationLookup = std::function<std::optional<std::string>(std::string_view name)>;

  Workspace() = delete;

  /// What the host's look-up answers; nothing while none is set.
  [[nodiscard]] static std::optional<std::string> fullPathForApplication(std::string_view name);
  /// Sets the look-up for the whole process, an empty one for none, and answers the one before. It
  /// is called from any thread.
  static ApplicationLookup setApplicationLookup(ApplicationLookup lookup);
};

}  // namespace mrziphoto

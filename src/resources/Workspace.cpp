#include "detail/Workspace.h"

#include <mutex>
#include <utility>

namespace mrziphoto {
namespace {

struct SharedLookup {
  std::mutex mutex;
  Workspace::ApplicationLookup lookup;
};

SharedLookup& shared() {
  static SharedLookup instance;
  return instance;
}

}  // namespace

std::optional<std::string> Workspace::fullPathForApplication(std::string_view name) {
  ApplicationLookup lookup;
  {
    const std::lock_guard lock(shared().mutex);
    lookup = shared().lookup;
  }
  return lookup ? lookup(name) : std::nullopt;
}

Workspace::ApplicationLookup Workspace::setApplicationLookup(ApplicationLookup lookup) {
  const std::lock_guard lock(shared().mutex);
  return std::exchange(shared().lookup, std::move(lookup));
}

}  // namespace mrziphoto

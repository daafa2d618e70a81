#include <map>
#include <mutex>
#include <string>

#include "Object.h"

namespace mrziphoto {
namespace {

struct Registered {
  std::mutex mutex;
  std::map<std::string, const Class*, std::less<>> classes;
};

/// Made when first needed, since other static objects add their classes.
Registered& registered() {
  static Registered known;
  return known;
}

}  // namespace

void ClassRegistry::add(const Class& added) {
  Registered& known = registered();
  const std::lock_guard lock(known.mutex);
  known.classes.insert_or_assign(std::string(added.name), &added);
}

const Class* ClassRegistry::find(std::string_view name) {
  Registered& known = registered();
  const std::lock_guard lock(known.mutex);
  const auto found = known.classes.find(name);
  return found != known.classes.end() ? found->second : nullptr;
}

}  // namespace mrziphoto

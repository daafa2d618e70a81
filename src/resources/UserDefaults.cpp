#include "detail/UserDefaults.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <mutex>
#include <string_view>

namespace mrziphoto {
namespace {

struct Defaults {
  std::mutex mutex;
  std::map<std::string, bool> values;
};

Defaults& defaults() {
  static Defaults instance;
  return instance;
}

bool readsAsTrue(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\r"), text.size()));
  if (text.starts_with('-') || text.starts_with('+')) {
    text.remove_prefix(1);
  }
  text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
  return text.find_first_of("YyTt123456789") == 0;
}

}  // namespace

bool UserDefaults::boolForKey(const std::string& key) {
  {
    const std::lock_guard lock(defaults().mutex);
    const auto found = defaults().values.find(key);
    if (found != defaults().values.end()) {
      return found->second;
    }
  }
  const char* text = std::getenv(key.c_str());
  return text != nullptr && readsAsTrue(text);
}

void UserDefaults::setBoolForKey(bool value, const std::string& key) {
  const std::lock_guard lock(defaults().mutex);
  defaults().values.insert_or_assign(key, value);
}

void UserDefaults::removeObjectForKey(const std::string& key) {
  const std::lock_guard lock(defaults().mutex);
  defaults().values.erase(key);
}

}  // namespace mrziphoto

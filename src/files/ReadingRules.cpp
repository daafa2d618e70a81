#include "ReadingRules.h"

#include <cstdlib>

namespace mrziphoto {
namespace {

const ReadingRules kNone;
thread_local const ReadingRules* inForce = &kNone;

}  // namespace

bool ReadingRules::allow(const std::string& path) const {
  if (onlyInside.empty()) {
    return true;
  }
  const std::unique_ptr<char, void (*)(void*)> real(realpath(path.c_str(), nullptr), std::free);
  if (!real) {
    return false;
  }
  const std::string place = real.get();
  return place == onlyInside || onlyInside == "/" || place.starts_with(onlyInside + '/');
}

const ReadingRules& ReadingRules::current() { return *inForce; }

std::shared_ptr<const ReadingRules> ReadingRules::kept() {
  return inForce == &kNone ? nullptr : std::make_shared<const ReadingRules>(*inForce);
}

ReadingRules::Scope::Scope(const ReadingRules* rules) : _before(inForce) {
  if (rules != nullptr) {
    inForce = rules;
    if (rules->limits) {
      _limits.emplace(*rules->limits);
    }
  }
}

ReadingRules::Scope::~Scope() { inForce = _before; }

}  // namespace mrziphoto

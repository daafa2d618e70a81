#include "Object.h"

#include <array>
#include <mutex>
#include <unordered_map>

#include "NSException.h"
#include "Value.h"
#include "detail/Formatted.h"
#include "detail/KeyValue.h"

namespace mrziphoto {
namespace {

std::mutex weakLinksMutex;

std::unordered_map<const Object*, WeakLink*>& weakLinks() {
  // Never destroyed: a host's global objects may go after everything that is.
  static auto& links = *new std::unordered_map<const Object*, WeakLink*>;
  return links;
}

}  // namespace

Object::~Object() {
  if (_hasWeakLink) {
    WeakLink::targetGoes(*this);
  }
}

std::string Object::description() const { return "<" + std::string(className()) + ">"; }

bool Object::isEqual(const Object& other) const { return this == &other; }

std::size_t Object::hash() const { return std::hash<const Object*>{}(this); }

void Object::initWithCoder(NSUnarchiver& /*coder*/) {
  NSException::raise(kNSInvalidArgumentException,
                     detail::formatted("{} cannot be read from an archive", className()));
}

void Object::encodeWithCoder(NSArchiver& /*coder*/) const {
  NSException::raise(kNSInvalidArgumentException,
                     detail::formatted("{} cannot be written to an archive", className()));
}

const Accessor* Object::accessorNamed(std::string_view key) const {
  static constexpr std::array kAccessors{accessor<&Object::description>("description")};
  return findAccessor<kAccessors>(key, nullptr);
}

Value Object::valueForKey(std::string_view key) const {
  const Accessor* accessor = accessorNamed(key);
  return accessor != nullptr ? accessor->get(*this) : valueForUndefinedKey(key);
}

Value Object::valueForUndefinedKey(std::string_view key) const {
  NSException::raise(
      kNSUndefinedKeyException,
      detail::formatted("this class is not key value coding-compliant for the key {} ({})", key,
                        className()));
}

WeakLink* WeakLink::to(const Object& target) {
  const std::lock_guard lock(weakLinksMutex);
  WeakLink*& link = weakLinks()[&target];
  if (link == nullptr) {
    link = new WeakLink(const_cast<Object*>(&target));
    target._hasWeakLink = true;
  } else {
    link->retain();
  }
  return link;
}

WeakLink::~WeakLink() {
  const std::lock_guard lock(weakLinksMutex);
  if (_target != nullptr) {
    weakLinks().erase(_target);
    _target->_hasWeakLink = false;
  }
}

void WeakLink::targetGoes(const Object& target) {
  const std::lock_guard lock(weakLinksMutex);
  const auto found = weakLinks().find(&target);
  found->second->_target = nullptr;
  weakLinks().erase(found);
}

}  // namespace mrziphoto

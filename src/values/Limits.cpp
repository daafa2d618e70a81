#include "Limits.h"

namespace mrziphoto {
namespace {

constexpr Limits kDefaults;
thread_local const Limits* inForce = &kDefaults;

}  // namespace

const Limits& Limits::current() { return *inForce; }

Limits::Scope::Scope(const Limits& limits) : _limits(limits), _before(inForce) {
  inForce = &_limits;
}

Limits::Scope::~Scope() { inForce = _before; }

}  // namespace mrziphoto

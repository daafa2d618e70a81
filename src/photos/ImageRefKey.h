#pragma once

#include "Key.h"

namespace mrziphoto {

/// The key of a photo as archives hold it. It differs from `Key` only in its class name.
class MRZIPHOTO_EXPORT ImageRefKey final : public Key {
 public:
  static const Class kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

}  // namespace mrziphoto

#pragma once

#include "ImageSource.h"

namespace mrziphoto {

/// An image source under another class name; it differs in nothing else.
class MRZIPHOTO_EXPORT DBSource final : public ImageSource {
 public:
  static const Class kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

}  // namespace mrziphoto

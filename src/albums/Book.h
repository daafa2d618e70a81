#pragma once

#include "../photos/ArchivedRecord.h"

namespace mrziphoto {

/// A book, as archives hold it.
class MRZIPHOTO_EXPORT Book final : public ArchivedRecord {
 public:
  static const Class kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

}  // namespace mrziphoto

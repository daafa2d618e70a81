#pragma once

#include "../photos/ArchivedRecord.h"

namespace mrziphoto {

/// The arguments of a filter.
class MRZIPHOTO_EXPORT Filter final : public ArchivedRecord {
 public:
  static const Class kClass;
  /// The arguments; nothing when an archive held something else in their place.
  [[nodiscard]] Ref<Dictionary> arguments() const { return _dictionary; }
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;
};

}  // namespace mrziphoto

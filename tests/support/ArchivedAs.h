#pragma once

#include <MRZiPhoto/photos/ArchivedRecord.h>

#include "Testing.h"

namespace mrziphoto {

/// Archives itself as a `Kind` over the entries it is given, whatever they are.
template <class Kind>
class ArchivedAs final : public ArchivedRecord {
 public:
  explicit ArchivedAs(Ref<Dictionary> entries) : ArchivedRecord(std::move(entries)) {}
  [[nodiscard]] const Class& objectClass() const override { return Kind::kClass; }
};

template <class Kind>
Ref<ArchivedAs<Kind>> archivedAs(Entries entries) {
  return make<ArchivedAs<Kind>>(dictionary(entries));
}

}  // namespace mrziphoto

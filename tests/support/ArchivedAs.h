#pragma once

#include <MRZiPhoto/photos/ArchivedRecord.h>

namespace mrziphoto {

/// Archives itself as a `Kind` over the entries it is given, whatever they are.
template <class Kind>
class ArchivedAs final : public ArchivedRecord {
 public:
  explicit ArchivedAs(Ref<Dictionary> entries) : ArchivedRecord(std::move(entries)) {}
  ArchivedAs(std::initializer_list<std::pair<std::string_view, Value>> entries)
      : ArchivedAs(make<Dictionary>(entries)) {}
  [[nodiscard]] const Class& objectClass() const override { return Kind::kClass; }
};

}  // namespace mrziphoto

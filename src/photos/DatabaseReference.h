#pragma once

#include <cstddef>

#include "../values/Export.h"
#include "../values/Object.h"

namespace mrziphoto {

class RecordDatabase;
class Value;

/// The database of a record, an album or a key manager, which does not own it: nothing once the
/// database has gone, or has let go of what it handed out.
class MRZIPHOTO_EXPORT DatabaseReference {
 public:
  DatabaseReference() = default;
  DatabaseReference(RecordDatabase* database);  // NOLINT(google-explicit-constructor)

  [[nodiscard]] RecordDatabase* get() const;
  RecordDatabase* operator->() const { return get(); }
  bool operator==(std::nullptr_t) const { return get() == nullptr; }
  /// The database as a value for key-value access; nothing for one that is no object.
  [[nodiscard]] Value value() const;

 private:
  friend class RecordDatabase;
  struct Link;

  Ref<Link> _link;
};

}  // namespace mrziphoto

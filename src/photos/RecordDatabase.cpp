#include "RecordDatabase.h"

namespace mrziphoto {

/// What all references to one database share.
struct DatabaseReference::Link final : Object {
  explicit Link(RecordDatabase* target) : database(target) {}
  [[nodiscard]] const Class& objectClass() const override {
    static constexpr Class kClass{"DatabaseReference"};
    return kClass;
  }

  RecordDatabase* database;
};

DatabaseReference::DatabaseReference(RecordDatabase* database) {
  if (database != nullptr) {
    Ref<Link>& link = database->_references._link;
    if (!link) {
      link = make<Link>(database);
    }
    _link = link;
  }
}

RecordDatabase* DatabaseReference::get() const { return _link ? _link->database : nullptr; }

Value DatabaseReference::value() const {
  const RecordDatabase* database = get();
  return database != nullptr ? Value(database->object()) : Value();
}

RecordDatabase::~RecordDatabase() { letGoOfRecords(); }

void RecordDatabase::letGoOfRecords() {
  if (_references._link) {
    _references._link->database = nullptr;
    _references._link = nullptr;
  }
}

}  // namespace mrziphoto

#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "../photos/ArchivedRecord.h"
#include "../photos/DatabaseReference.h"
#include "../photos/ImageRecRef.h"
#include "../photos/Key.h"
#include "../values/List.h"

namespace mrziphoto {

/// The image keys of an album's photos, in album order.
class MRZIPHOTO_EXPORT KeyMgr final : public ArchivedRecord {
 public:
  static const Class kClass;

  KeyMgr() = default;
  /// A key manager over this list, which it shares with the caller.
  static Ref<KeyMgr> initWithKeys(List<Key> keys);
  /// The same over keys that hold these numbers, which are made when somebody asks for them.
  static Ref<KeyMgr> initWithKeyNumbers(std::vector<std::uint32_t> numbers);

  /// The database is not owned.
  void setDatabase(RecordDatabase* database) { _database = database; }
  [[nodiscard]] RecordDatabase* database() const { return _database.get(); }

  /// The keys: the list itself of a key manager made in memory; of an archived one a new list at
  /// every call, from its list or its packed form. A packed form whose count disagrees with its
  /// length is logged and yields the keys that are there.
  [[nodiscard]] List<Key> imageKeys() const;
  /// The numbers of `imageKeys`, at less cost; a key without a number is left out.
  [[nodiscard]] std::vector<std::uint32_t> keyNumbers() const;
  /// The photos of the keys; nothing without a database.
  [[nodiscard]] List<ImageRecRef> photos() const;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;
  /// The archived dictionary itself; for a key manager made in memory a new one over its keys.
  [[nodiscard]] Ref<Dictionary> storedDictionary() const override;

  static constexpr std::string_view kKeys = "Keys";
  static constexpr std::string_view kKeyList = "KeyList";

 private:
  [[nodiscard]] std::vector<std::uint32_t> packedNumbers() const;

  DatabaseReference _database;
  // The keys stand in one place: in the archived dictionary, in this list, or, until somebody asks
  // for the list, in these numbers.
  mutable List<Key> _keys = List<Key>::makeEmpty();
  mutable std::optional<std::vector<std::uint32_t>> _numbers;
};

}  // namespace mrziphoto

#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "../photos/ArchivedRecord.h"
#include "../photos/ImageRecRef.h"
#include "../photos/Key.h"
#include "../platform/List.h"

namespace mrziphoto {

class RecordDatabase;

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
  [[nodiscard]] RecordDatabase* database() const { return _database; }

  /// The keys: the list itself where there is one, else those of the packed form, made anew at
  /// every call. A packed form whose count disagrees with its length is logged and yields the keys
  /// that are there.
  [[nodiscard]] List<Key> imageKeys() const;
  /// The numbers of `imageKeys`, at less cost; a key without a number is left out.
  [[nodiscard]] std::vector<std::uint32_t> keyNumbers() const;
  /// The photos of the keys; nothing without a database.
  [[nodiscard]] List<ImageRecRef> photos() const;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Ref<Dictionary>& storedDictionary() const override;
  void initWithCoder(NSUnarchiver& coder) override;

  static constexpr std::string_view kKeys = "Keys";
  static constexpr std::string_view kKeyList = "KeyList";

 private:
  [[nodiscard]] std::vector<std::uint32_t> packedNumbers() const;

  RecordDatabase* _database = nullptr;
  // The entry "Keys": the list, or the numbers from which it is made.
  mutable List<Key> _keys;
  std::optional<std::vector<std::uint32_t>> _numbers;
};

}  // namespace mrziphoto

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "ArchivedRecord.h"

namespace mrziphoto {

/// The key of a photo, a roll, an album, a folder or a keyword: a number in a one-entry dictionary,
/// compared and hashed by value.
class MRZIPHOTO_EXPORT Key : public ArchivedRecord {
 public:
  static const Class kClass;

  Key() = default;
  /// A key that holds this value, as a rule an unsigned 32-bit number.
  static Ref<Key> initWithKeyValue(Value value);
  static Ref<Key> initWithKey(std::uint32_t key);
  /// The key of a decimal text. Leading digits count; a text without any gives 0, one above the
  /// 32-bit range the largest key.
  static Ref<Key> initWithKeyString(std::string_view text);

  /// The dictionary itself: what is set in it is the key's number from then on.
  [[nodiscard]] Ref<Dictionary> key() const { return storedDictionary(); }
  [[nodiscard]] Ref<Dictionary> storedDictionary() const override;
  /// The key's number; nothing when it has none.
  [[nodiscard]] Value number() const;
  /// The key's number. Throws NSException "NSInternalInconsistencyException" with the reason
  /// "%@ with no Key value" when the dictionary has none.
  [[nodiscard]] Value value() const;
  /// `value` as text: decimal digits. Throws as `value` does.
  [[nodiscard]] std::string stringValue() const;
  /// The key's number when the dictionary holds that one entry and nothing else; only such keys
  /// can be equal to a key made from a number.
  [[nodiscard]] std::optional<std::int64_t> plainNumber() const;

  /// True for a key whose whole dictionary is equal.
  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

  static constexpr std::string_view kKey = "Key";

 private:
  // The number, until somebody asks for the dictionary, which holds it from then on.
  mutable Value _number;
};

/// The number of a key that may be a `Key` or stand as a bare number; nothing for other values.
/// Throws what `Key::value` throws.
[[nodiscard]] MRZIPHOTO_EXPORT Value keyNumber(const Value& key);

/// The same, and nothing for a `Key` without a number.
[[nodiscard]] MRZIPHOTO_EXPORT Value findKeyNumber(const Value& key);

/// The whole number that a number stands for; nothing for fractions, for numbers beyond the exact
/// range, and for values that are no numbers. Numbers are equal when these are.
[[nodiscard]] MRZIPHOTO_EXPORT std::optional<std::int64_t> wholeNumber(const Value& number);

/// The key of a photo as archives hold it. It differs from `Key` only in its class name.
class MRZIPHOTO_EXPORT ImageRefKey final : public Key {
 public:
  static const Class kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

}  // namespace mrziphoto

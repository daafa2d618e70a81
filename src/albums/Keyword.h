#pragma once

#include <optional>
#include <string>

#include "../photos/ArchivedRecord.h"

namespace mrziphoto {

/// A keyword with which photos are tagged.
class MRZIPHOTO_EXPORT Keyword final : public ArchivedRecord {
 public:
  static const Class kClass;

  Keyword() = default;
  /// A keyword over a copy of the dictionary.
  static Ref<Keyword> initWithDictionary(const Dictionary& dictionary);
  /// A keyword made from a text or a dictionary; anything else is logged and gives an empty one.
  static Ref<Keyword> initWithString(const Value& object);

  /// A `Key`, or what the archive stored as key.
  [[nodiscard]] Value key() const { return entry(kKey); }
  /// The key's number; nothing without a key. Throws what `Key::value` throws.
  [[nodiscard]] Value keyValue() const;
  /// The text as stored.
  [[nodiscard]] std::optional<std::string> string() const { return entry(kString).text(); }
  /// The text to show: as stored, but for the favourite keyword its name in the user's language.
  [[nodiscard]] std::optional<std::string> keyword() const;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

  static constexpr std::string_view kKey = "Key";
  static constexpr std::string_view kString = "String";
  static constexpr std::string_view kFavorite = "_Favorite_";
};

}  // namespace mrziphoto

#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "../photos/ArchivedRecord.h"
#include "../values/Array.h"

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

/// The keywords of a catalogue.
class MRZIPHOTO_EXPORT KeywordMgr final : public ArchivedRecord {
 public:
  static const Class kClass;

  KeywordMgr();
  ~KeywordMgr() override;

  [[nodiscard]] Value objectForKey(std::string_view name) const { return entry(name); }
  /// The keywords, from "KeywordList", else from "UsedKeywords"; made once. Elements that are not
  /// keyword records yet are turned into them.
  [[nodiscard]] const List<Keyword>& keywords() const;
  /// The first record of "UsedKeywords" whose key equals this one. A `Key` never equals a bare
  /// number.
  [[nodiscard]] Ref<Keyword> keywordForKeyNumber(const Value& key) const;
  /// The number of `keywords`.
  [[nodiscard]] std::size_t count() const { return keywords().size(); }

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

  static constexpr std::string_view kKeywordList = "KeywordList";
  static constexpr std::string_view kUsedKeywords = "UsedKeywords";

 private:
  class UsedKeywords;

  mutable List<Keyword> _keywords;
  // Made by the first search: every photo of a catalogue may ask for several keywords.
  mutable std::unique_ptr<UsedKeywords> _used;
};

}  // namespace mrziphoto

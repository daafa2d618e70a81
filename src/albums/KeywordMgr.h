#pragma once

#include <cstddef>
#include <memory>

#include "../photos/ArchivedRecord.h"
#include "../values/List.h"
#include "Keyword.h"

namespace mrziphoto {

/// The keywords of a catalogue.
class MRZIPHOTO_EXPORT KeywordMgr final : public ArchivedRecord {
 public:
  static const Class kClass;

  KeywordMgr();
  ~KeywordMgr() override;

  [[nodiscard]] Value objectForKey(std::string_view name) const { return entry(name); }
  /// The keywords, from "KeywordList", else from "UsedKeywords"; made once. Elements that are no
  /// keyword records yet become some.
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

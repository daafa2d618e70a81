#pragma once

#include <cstdint>
#include <optional>

#include "../../albums/Keyword.h"
#include "../../table/detail/FirstIndex.h"
#include "../TVQiPhotoLibrary.h"

namespace mrziphoto {

/// The keywords of a catalogue: those of its `KeywordMgr`, a list of them, or none when something
/// else stands in the place of both.
class TVQiPhotoLibrary::KeywordStore {
 public:
  /// Nothing.
  KeywordStore() = default;
  /// What a catalogue holds: an array becomes a list of the keywords in it.
  explicit KeywordStore(const Value& stored);
  static KeywordStore emptyList();

  /// Nothing without a keyword manager.
  [[nodiscard]] Ref<KeywordMgr> manager() const { return _stored.object<KeywordMgr>(); }
  /// Nothing without a store.
  [[nodiscard]] List<Keyword> keywords() const;
  /// For stores that are lists.
  void add(Ref<Keyword> keyword);
  /// The first keyword whose key has that number. One whose key has none is passed over.
  [[nodiscard]] Ref<Keyword> find(std::int64_t number);
  /// The store as it is.
  [[nodiscard]] Value value() const { return _stored.isNothing() ? _list.value() : _stored; }

 private:
  void index(const Keyword& keyword, std::size_t position);

  Value _stored;  // unless it is a list
  OwnedList<Keyword> _list;
  FirstIndex<std::int64_t> _byNumber;
  std::size_t _indexed = 0;
};

}  // namespace mrziphoto

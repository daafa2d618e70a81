#include <array>
#include <limits>
#include <vector>

#include "../photos/Key.h"
#include "../table/detail/FirstIndex.h"
#include "../values/Array.h"
#include "../values/detail/KeyValue.h"
#include "Keyword.h"

namespace mrziphoto {

/// The keywords of "UsedKeywords" that have a key.
class KeywordMgr::UsedKeywords {
 public:
  explicit UsedKeywords(const Ref<Array>& stored) {
    if (!stored) {
      return;
    }
    for (const Value& element : *stored) {
      const Ref<Keyword> keyword = element.object<Keyword>();
      if (keyword && !element.isWeak() && !keyword->key().isNothing()) {
        add(keyword);
      }
    }
  }

  /// The first one whose key equals this one.
  [[nodiscard]] Ref<Keyword> find(const Value& key) const {
    if (const Ref<Key> object = key.object<Key>()) {
      if (const auto number = object->plainNumber()) {
        return at(_byKey.find(*number));
      }
    } else if (const auto number = wholeNumber(key); number && isKeyNumber(*number)) {
      return at(_byNumber.find(*number));
    }
    // Any other key is rare; it takes the long way.
    for (const Ref<Keyword>& keyword : _keywords) {
      if (keyword->key() == key) {
        return keyword;
      }
    }
    return {};
  }

 private:
  /// Numbers of this size are equal only to themselves, whatever types they are stored as.
  static bool isKeyNumber(std::int64_t number) {
    return number >= std::numeric_limits<std::int32_t>::min() &&
           number <= std::numeric_limits<std::uint32_t>::max();
  }

  void add(const Ref<Keyword>& keyword) {
    const Value key = keyword->key();
    const Ref<Key> object = key.object<Key>();
    if (const auto number = object ? object->plainNumber() : wholeNumber(key)) {
      (object ? _byKey : _byNumber).add(*number, static_cast<std::uint32_t>(_keywords.size()));
    }
    _keywords.push_back(keyword);
  }

  [[nodiscard]] Ref<Keyword> at(std::optional<std::uint32_t> position) const {
    return position ? _keywords[*position] : Ref<Keyword>();
  }

  std::vector<Ref<Keyword>> _keywords;
  FirstIndex<std::int64_t> _byKey;
  FirstIndex<std::int64_t> _byNumber;
};

KeywordMgr::KeywordMgr() = default;
KeywordMgr::~KeywordMgr() = default;

const List<Keyword>& KeywordMgr::keywords() const {
  if (!_keywords.isNothing()) {
    return _keywords;
  }
  List<Keyword>::Items keywords;
  Value source = entry(kKeywordList);
  if (source.isNothing()) {
    source = entry(kUsedKeywords);
  }
  if (const Ref<Array> stored = source.array()) {
    keywords.reserve(stored->size());
    for (const Value& element : *stored) {
      if (element.isWeak()) {
        continue;  // refers back to an object around this one; to own it would close a circle
      }
      const Ref<Keyword> keyword = element.object<Keyword>();
      keywords.push_back(keyword ? keyword : Keyword::initWithString(element));
    }
  }
  _keywords = List<Keyword>(std::move(keywords));
  return _keywords;
}

Ref<Keyword> KeywordMgr::keywordForKeyNumber(const Value& key) const {
  if (!_used) {
    _used = std::make_unique<UsedKeywords>(entry(kUsedKeywords).array());
  }
  return _used->find(key);
}

const Accessor* KeywordMgr::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      accessor<&KeywordMgr::count>("count"),
      accessor<&KeywordMgr::keywords>("keywords"),
  };
  return findAccessor<kAccessors>(name, ArchivedRecord::accessorNamed(name));
}

}  // namespace mrziphoto

#include "KeywordMgr.h"

#include "../platform/Array.h"

namespace mrziphoto {

const List<Keyword>& KeywordMgr::keywords() const {
  if (!_keywords.isNothing()) {
    return _keywords;
  }
  _keywords = List<Keyword>::makeEmpty();
  Value source = entry(kKeywordList);
  if (source.isNothing()) {
    source = entry(kUsedKeywords);
  }
  if (const Ref<Array> stored = source.array()) {
    _keywords.reserve(stored->size());
    for (const Value& element : *stored) {
      const Ref<Keyword> keyword = element.object<Keyword>();
      _keywords.append(keyword ? keyword : Keyword::initWithString(element));
    }
  }
  return _keywords;
}

Ref<Keyword> KeywordMgr::keywordForKeyNumber(const Value& key) const {
  const Ref<Array> used = entry(kUsedKeywords).array();
  if (!used) {
    return {};
  }
  for (const Value& element : *used) {
    const Ref<Keyword> keyword = element.object<Keyword>();
    if (keyword && !keyword->key().isNothing() && keyword->key() == key) {
      return keyword;
    }
  }
  return {};
}

}  // namespace mrziphoto

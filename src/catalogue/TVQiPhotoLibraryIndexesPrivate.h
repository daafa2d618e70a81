#pragma once

#include <vector>

#include "../platform/NSException.h"
#include "../platform/NumberIndex.h"
#include "TVQiPhotoLibrary.h"

namespace mrziphoto {

/// The first record of a list with a given key, as a walk over the list would find it.
class TVQiPhotoLibrary::RecordIndex {
 public:
  explicit RecordIndex(List<ImageRecRef> records)
      : _records(std::move(records)), _byNumber(_records.size()) {
    for (std::size_t i = 0; i < _records.size(); ++i) {
      if (const auto number = _records[i]->plainKeyNumber()) {
        _byNumber.add(*number, i);
      } else {
        _others.push_back(_records[i]);
      }
    }
  }

  [[nodiscard]] Ref<ImageRecRef> find(const Key& key) const {
    if (const auto number = key.plainNumber()) {
      const auto found = _byNumber.find(*number);
      return found ? _records[*found] : Ref<ImageRecRef>();
    }
    // Keys that are more than a number are rare, and equal only their own like.
    for (const Ref<ImageRecRef>& record : _others) {
      const Ref<Key> candidate = record->key().object<Key>();
      if (candidate && candidate->isEqual(key)) {
        return record;
      }
    }
    return {};
  }

 private:
  List<ImageRecRef> _records;
  NumberIndex _byNumber;
  std::vector<Ref<ImageRecRef>> _others;
};

/// The first keyword of a list with a given key number. A keyword whose key has none is passed
/// over.
class TVQiPhotoLibrary::KeywordIndex {
 public:
  explicit KeywordIndex(List<Keyword> keywords)
      : _keywords(std::move(keywords)), _byNumber(_keywords.size()) {}

  [[nodiscard]] Ref<Keyword> find(std::int64_t number) {
    // The list may have grown since the last question.
    while (_indexed < _keywords.size()) {
      addNext();
    }
    const auto found = _byNumber.find(number);
    return found ? _keywords[*found] : Ref<Keyword>();
  }

 private:
  void addNext() {
    const std::size_t position = _indexed++;
    try {
      if (const auto number = wholeNumber(_keywords[position]->keyValue())) {
        _byNumber.add(*number, position);
      }
    } catch (const NSException&) {
      return;
    }
  }

  List<Keyword> _keywords;
  NumberIndex _byNumber;
  std::size_t _indexed = 0;
};

}  // namespace mrziphoto

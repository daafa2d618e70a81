#pragma once

#include <memory>
#include <span>
#include <vector>

#include "../values/NSException.h"
#include "../values/NumberIndex.h"
#include "TVQiPhotoLibrary.h"

namespace mrziphoto {

/// The first record of a list with a given key, as a walk over the list would find it.
class TVQiPhotoLibrary::RecordIndex {
 public:
  explicit RecordIndex(const List<ImageRecRef>& records)
      : _records(records.items()), _byNumber(_records->size()) {
    for (std::size_t i = 0; i < _records->size(); ++i) {
      if (const auto number = (*_records)[i]->plainKeyNumber()) {
        _byNumber.add(*number, i);
      }
    }
  }

  /// False once some record has another key than when the index was made.
  [[nodiscard]] bool isUpToDate() const { return _keyChanges == ImageRecRef::keyChanges(); }

  [[nodiscard]] Ref<ImageRecRef> find(const Key& key) const {
    // The records of a catalogue have plain numbers for keys, which equal no other key.
    const auto number = key.plainNumber();
    const auto position = number ? _byNumber.find(*number) : std::nullopt;
    return position ? (*_records)[*position] : Ref<ImageRecRef>();
  }

  /// `find` for a run of keys. In a large library each step of a look-up waits for memory; so each
  /// step is begun for the whole run before the next one needs what it brings.
  void find(std::span<const Ref<Key>> keys, std::span<Ref<ImageRecRef>> found) const {
    const auto numberOf = [](const Ref<Key>& key) {
      return key ? key->plainNumber() : std::nullopt;
    };
    for (const Ref<Key>& key : keys) {
      if (const auto number = numberOf(key)) {
        _byNumber.prefetch(*number);
      }
    }
    std::vector<const Ref<ImageRecRef>*> places(keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
      const auto number = numberOf(keys[i]);
      const auto position = number ? _byNumber.find(*number) : std::nullopt;
      if (position) {
        places[i] = &(*_records)[*position];
        __builtin_prefetch(places[i]);
      }
    }
    for (const Ref<ImageRecRef>* place : places) {
      if (place != nullptr) {
        __builtin_prefetch(place->get(), 1);
      }
    }
    for (std::size_t i = 0; i < keys.size(); ++i) {
      found[i] = places[i] != nullptr ? *places[i] : Ref<ImageRecRef>();
    }
  }

 private:
  std::shared_ptr<const List<ImageRecRef>::Items> _records;
  NumberIndex _byNumber;
  std::uint64_t _keyChanges = ImageRecRef::keyChanges();
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

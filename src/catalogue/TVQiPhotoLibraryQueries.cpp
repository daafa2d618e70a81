// The questions that a catalogue answers, and the lists that its loaders fill.

#include <algorithm>
#include <array>
#include <span>

#include "../albums/Keyword.h"
#include "../values/Array.h"
#include "../values/Log.h"
#include "TVQiPhotoLibrary.h"
#include "detail/KeywordStore.h"
#include "detail/RecordIndex.h"

namespace mrziphoto {

const List<ImageRecRef>& TVQiPhotoLibrary::photos() const {
  if (_photoImageRecRefs.isNothing()) {
    _makePhotoArrays();
  }
  return _photoImageRecRefs;
}

const List<ImageRecRef>& TVQiPhotoLibrary::rollRecRefs() const {
  if (_rollImageRecRefs.isNothing()) {
    _makePhotoArrays();
  }
  return _rollImageRecRefs;
}

void TVQiPhotoLibrary::_makePhotoArrays() const {
  const bool makePhotos = _photoImageRecRefs.isNothing();
  const bool makeRolls = _rollImageRecRefs.isNothing();
  List<ImageRecRef>::Items photos;
  List<ImageRecRef>::Items rolls;
  if (makePhotos) {
    photos.reserve(_imageRecRefs.size());
  }
  for (const Ref<ImageRecRef>& record : _imageRecRefs) {
    // A list that a loader filled stays as it is.
    if (record->hasRollKey()) {
      if (makePhotos) {
        photos.push_back(record);
      }
    } else if (makeRolls) {
      rolls.push_back(record);
    }
  }
  if (makePhotos) {
    _photoImageRecRefs = OwnedList<ImageRecRef>(std::move(photos));
  }
  if (makeRolls) {
    _rollImageRecRefs = OwnedList<ImageRecRef>(std::move(rolls));
  }
}

const RecordIndex& TVQiPhotoLibrary::photoIndex() const {
  if (!_photoIndex || !_photoIndex->isUpToDate()) {
    _photoIndex = std::make_unique<RecordIndex>(photos());
  }
  return *_photoIndex;
}

const RecordIndex& TVQiPhotoLibrary::rollIndex() const {
  if (!_rollIndex || !_rollIndex->isUpToDate()) {
    _rollIndex = std::make_unique<RecordIndex>(rollRecRefs());
  }
  return *_rollIndex;
}

Ref<ImageRecRef> TVQiPhotoLibrary::photoForKey(const Ref<Key>& key) const {
  const Ref<ImageRecRef>* found = key ? photoIndex().find(key->plainNumber()) : nullptr;
  return found != nullptr ? *found : Ref<ImageRecRef>();
}

/// In a large library each step of a look-up waits for memory; so each step is begun for a run of
/// keys before the next one needs what it brings.
List<ImageRecRef> TVQiPhotoLibrary::photosForKeys(const List<Key>& keys) const {
  constexpr std::size_t kRun = 64;
  std::array<std::optional<std::int64_t>, kRun> numbers;
  std::array<const Ref<ImageRecRef>*, kRun> places{};
  const auto asked = keys.items();
  List<ImageRecRef>::Items found;
  found.reserve(asked->size());
  for (std::size_t at = 0; at < asked->size(); at += kRun) {
    const RecordIndex& index = photoIndex();
    const std::span run = std::span(*asked).subspan(at, std::min(kRun, asked->size() - at));
    for (std::size_t i = 0; i < run.size(); ++i) {
      numbers[i] = run[i]->plainNumber();
      index.prefetch(numbers[i]);
    }
    for (std::size_t i = 0; i < run.size(); ++i) {
      places[i] = index.find(numbers[i]);
      __builtin_prefetch(places[i]);
    }
    for (std::size_t i = 0; i < run.size(); ++i) {
      if (places[i] != nullptr) {
        __builtin_prefetch(places[i]->get(), 1);
      }
    }
    for (std::size_t i = 0; i < run.size(); ++i) {
      if (places[i] != nullptr) {
        found.push_back(*places[i]);
      } else {
        log("No photo for key: %@", run[i]);
      }
    }
  }
  return List<ImageRecRef>(std::move(found));
}

Ref<ImageRecRef> TVQiPhotoLibrary::rollRecRefForKey(const Value& key) const {
  std::optional<std::int64_t> number;
  if (key.isNumber()) {
    number = wholeNumber(key);
  } else if (const Ref<Key> object = key.object<Key>()) {
    number = object->plainNumber();
  }
  const Ref<ImageRecRef>* found = number ? rollIndex().find(number) : nullptr;
  return found != nullptr ? *found : Ref<ImageRecRef>();
}

List<RollAlbum> TVQiPhotoLibrary::rolls() const {
  return _archiveAlbum ? _archiveAlbum->rolls() : List<RollAlbum>();
}

std::uint32_t TVQiPhotoLibrary::numberOfRolls() const {
  return static_cast<std::uint32_t>(rolls().size());
}

void TVQiPhotoLibrary::addRoll(Ref<RollAlbum> roll) {
  if (_archiveAlbum && roll) {
    _archiveAlbum->addRoll(std::move(roll));
  }
}

std::uint32_t TVQiPhotoLibrary::numberOfAlbums() const {
  return static_cast<std::uint32_t>(_albums.size());
}

void TVQiPhotoLibrary::addAlbum(const Ref<Album>& album) {
  if (!album) {
    return;
  }
  _albums.append(album);
  album->setDatabase(_database.get());
}

void TVQiPhotoLibrary::addAlbums(const List<Album>& albums) {
  for (const Ref<Album>& album : albums) {
    addAlbum(album);
  }
}

void TVQiPhotoLibrary::insertAlbumAtIndex(const Ref<Album>& album, std::int32_t position) {
  if (!album) {
    return;
  }
  const auto last = static_cast<std::int32_t>(numberOfAlbums());
  _albums.insert(album, static_cast<std::size_t>(std::clamp(position, 0, last)));
  album->setDatabase(_database.get());
}

void TVQiPhotoLibrary::removeAllAlbums() {
  for (const Ref<Album>& album : _albums) {
    album->setDatabase(nullptr);
  }
  _albums.clear();
}

List<Keyword> TVQiPhotoLibrary::keywords() const { return _keywords->keywords(); }

std::uint32_t TVQiPhotoLibrary::numberOfKeywords() const {
  return static_cast<std::uint32_t>(keywords().size());
}

void TVQiPhotoLibrary::addKeyword(Ref<Keyword> keyword) { _keywords->add(std::move(keyword)); }

Ref<Keyword> TVQiPhotoLibrary::keywordForKey(const Value& key) const {
  if (const Ref<Key> object = key.object<Key>()) {
    const Ref<Dictionary>& stored = object->storedDictionary();
    const Value number = stored ? stored->get(Key::kKey) : Value();
    return number.isNumber() ? _keywords->find(number.intValue()) : Ref<Keyword>();
  }
  return key.isNumber() || key.isString() ? _keywords->find(key.intValue()) : Ref<Keyword>();
}

List<Keyword> TVQiPhotoLibrary::keywordsForKeys(const Array& keys) const {
  List<Keyword>::Items found;
  if (const Ref<KeywordMgr> manager = _keywords->manager()) {
    for (const Value& key : keys) {
      if (const Ref<Keyword> keyword = manager->keywordForKeyNumber(key)) {
        found.push_back(keyword);
      }
    }
  }
  return List<Keyword>(std::move(found));
}

std::string TVQiPhotoLibrary::updateImagePath(const std::string& path) const {
  if (_archivePath && _lastArchivePath && !_lastArchivePath->empty() &&
      *_archivePath != *_lastArchivePath && path.starts_with(*_lastArchivePath)) {
    return *_archivePath + path.substr(_lastArchivePath->size());
  }
  return path;
}

}  // namespace mrziphoto

// The questions that a catalogue answers, and the lists that its loaders fill.

#include <algorithm>
#include <array>
#include <span>

#include "../albums/KeywordMgr.h"
#include "../values/Array.h"
#include "../values/Log.h"
#include "TVQiPhotoLibrary.h"
#include "TVQiPhotoLibraryIndexesPrivate.h"

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

const TVQiPhotoLibrary::RecordIndex& TVQiPhotoLibrary::photoIndex() const {
  if (!_photoIndex || !_photoIndex->isUpToDate()) {
    _photoIndex = std::make_unique<RecordIndex>(photos());
  }
  return *_photoIndex;
}

const TVQiPhotoLibrary::RecordIndex& TVQiPhotoLibrary::rollIndex() const {
  if (!_rollIndex || !_rollIndex->isUpToDate()) {
    _rollIndex = std::make_unique<RecordIndex>(rollRecRefs());
  }
  return *_rollIndex;
}

Ref<ImageRecRef> TVQiPhotoLibrary::photoForKey(const Ref<Key>& key) const {
  return key ? photoIndex().find(*key) : Ref<ImageRecRef>();
}

List<ImageRecRef> TVQiPhotoLibrary::photosForKeys(const List<Key>& keys) const {
  constexpr std::size_t kRun = 64;
  std::array<Ref<ImageRecRef>, kRun> photos;
  const auto asked = keys.items();
  List<ImageRecRef>::Items found;
  found.reserve(asked->size());
  for (std::size_t at = 0; at < asked->size(); at += kRun) {
    const std::span run = std::span(*asked).subspan(at, std::min(kRun, asked->size() - at));
    photoIndex().find(run, photos);
    for (std::size_t i = 0; i < run.size(); ++i) {
      if (photos[i]) {
        found.push_back(std::move(photos[i]));
      } else {
        log("No photo for key: %@", run[i]);
      }
    }
  }
  return List<ImageRecRef>(std::move(found));
}

Ref<ImageRecRef> TVQiPhotoLibrary::rollRecRefForKey(const Value& key) const {
  const Ref<Key> object = key.isNumber() ? Key::initWithKeyValue(key) : key.object<Key>();
  return object ? rollIndex().find(*object) : Ref<ImageRecRef>();
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

List<Keyword> TVQiPhotoLibrary::keywords() const {
  const Ref<KeywordMgr> manager = _keywords.object<KeywordMgr>();
  return manager ? manager->keywords() : _keywordList;
}

std::uint32_t TVQiPhotoLibrary::numberOfKeywords() const {
  return static_cast<std::uint32_t>(keywords().size());
}

void TVQiPhotoLibrary::addKeyword(Ref<Keyword> keyword) {
  if (!_keywordList.isNothing() && keyword) {
    _keywordList.append(std::move(keyword));
  }
}

Ref<Keyword> TVQiPhotoLibrary::keywordForKey(const Value& key) const {
  if (!_keywordIndex) {
    _keywordIndex = std::make_unique<KeywordIndex>(keywords());
  }
  if (const Ref<Key> object = key.object<Key>()) {
    const Ref<Dictionary>& stored = object->storedDictionary();
    const Value number = stored ? stored->get(Key::kKey) : Value();
    return number.isNumber() ? _keywordIndex->find(number.intValue()) : Ref<Keyword>();
  }
  return key.isNumber() || key.isString() ? _keywordIndex->find(key.intValue()) : Ref<Keyword>();
}

List<Keyword> TVQiPhotoLibrary::keywordsForKeys(const Array& keys) const {
  List<Keyword>::Items found;
  if (const Ref<KeywordMgr> manager = _keywords.object<KeywordMgr>()) {
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

// The questions that a database passes on to what it holds.

#include <array>

#include "../files/Path.h"
#include "../photos/detail/PhotoFolder.h"
#include "../values/detail/Formatted.h"
#include "../values/detail/KeyValue.h"
#include "TVQiPhotoDatabase.h"

namespace mrziphoto {

List<Album> TVQiPhotoDatabase::albums() const {
  return _library ? _library->albums() : List<Album>();
}

List<RollAlbum> TVQiPhotoDatabase::rolls() const {
  // The photo-library album of an iPhoto 4 library knows its rolls better than the catalogue. An
  // album file may hold an album of another kind, which has no rolls.
  if (_photoLibrary) {
    const Ref<ArchiveAlbum> archive = _photoLibrary.as<ArchiveAlbum>();
    return archive ? archive->rolls() : List<RollAlbum>();
  }
  return _library ? _library->rolls() : List<RollAlbum>();
}

List<Keyword> TVQiPhotoDatabase::keywords() const {
  return _library ? _library->keywords() : List<Keyword>();
}

Ref<Keyword> TVQiPhotoDatabase::keywordForKey(const Value& key) const {
  return _library ? _library->keywordForKey(key) : Ref<Keyword>();
}

List<ImageRecRef> TVQiPhotoDatabase::photos() const {
  return _library ? _library->photos() : List<ImageRecRef>();
}

List<ImageRecRef> TVQiPhotoDatabase::photosForKeys(const List<Key>& keys) const {
  return _library ? _library->photosForKeys(keys) : List<ImageRecRef>();
}

Ref<ImageRecRef> TVQiPhotoDatabase::photoForKey(const Ref<Key>& key) const {
  return _library ? _library->photoForKey(key) : Ref<ImageRecRef>();
}

Ref<ImageRecRef> TVQiPhotoDatabase::rollRecRefForKey(const Value& key) const {
  return _library ? _library->rollRecRefForKey(key) : Ref<ImageRecRef>();
}

List<ImageRecRef> TVQiPhotoDatabase::rollRecRefs() const {
  return _library ? _library->rollRecRefs() : List<ImageRecRef>();
}

std::optional<std::string> TVQiPhotoDatabase::relativeDirectoryForKey(const Value& key) const {
  return _directories ? _directories->directoryForKey(key) : std::nullopt;
}

std::optional<std::string> TVQiPhotoDatabase::directoryForKey(const Value& key) const {
  const std::optional<std::string> relative = relativeDirectoryForKey(key);
  return relative ? std::optional(path::join(_rootDirectory, *relative)) : std::nullopt;
}

std::optional<std::string> TVQiPhotoDatabase::updateImagePath(const std::string& path) const {
  return _library ? std::optional(_library->updateImagePath(path)) : std::nullopt;
}

std::optional<std::string> TVQiPhotoDatabase::archivePath() const {
  return _library ? _library->archivePath() : std::nullopt;
}

std::vector<Notice> TVQiPhotoDatabase::notices() const {
  std::vector<Notice> all = _library ? _library->notices() : std::vector<Notice>();
  all.insert(all.end(), _notices.begin(), _notices.end());
  for (const auto& [what, files] : _unreadable) {
    all.push_back({detail::formatted("{} {} could not be read, the first because {}",
                                     static_cast<std::uint32_t>(files.reasons.size()), what,
                                     files.firstReason),
                   "",
                   {}});
  }
  return all;
}

void TVQiPhotoDatabase::noteUnreadable(std::string_view what, const std::string& reason) const {
  auto found = _unreadable.find(what);
  if (found == _unreadable.end()) {
    found = _unreadable.emplace(what, Unreadable{reason, {}}).first;
  }
  found->second.reasons.insert(KeyedHash{}(reason));
}

std::optional<std::string> TVQiPhotoDatabase::catalogueDescription() const {
  return _library ? std::optional(_library->description()) : std::nullopt;
}

Ref<PhotoFolder> TVQiPhotoDatabase::photoFolder(const std::string& path) const {
  if (const auto known = _photoFolders.find(path); known != _photoFolders.end()) {
    return known->second;
  }
  Ref<PhotoFolder>& around = _photoFolders[path::withoutLastComponent(path)];
  if (!around) {
    around = make<PhotoFolder>(path::withoutLastComponent(path));
  }
  return _photoFolders[path] = make<PhotoFolder>(path, around.get());
}

void TVQiPhotoDatabase::addAlbum(const Ref<Album>& album) {
  if (_library) {
    _library->addAlbum(album);
  }
}

void TVQiPhotoDatabase::insertAlbumAtIndex(const Ref<Album>& album, std::int32_t position) {
  if (_library) {
    _library->insertAlbumAtIndex(album, position);
  }
}

void TVQiPhotoDatabase::removeAllAlbums() {
  _photoLibrary = nullptr;
  if (_library) {
    _library->removeAllAlbums();
  }
}

const Accessor* TVQiPhotoDatabase::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      accessor<&TVQiPhotoDatabase::albumDataDirectory>("albumDataDirectory"),
      accessor<&TVQiPhotoDatabase::albumDataFile>("albumDataFile"),
      accessor<&TVQiPhotoDatabase::albums>("albums"),
      accessor<&TVQiPhotoDatabase::archivePath>("archivePath"),
      accessor<&TVQiPhotoDatabase::currentLibraryDataFilename>("currentLibraryDataFilename"),
      accessor<&TVQiPhotoDatabase::directoriesDataFilename>("directoriesDataFilename"),
      accessor<&TVQiPhotoDatabase::directory>("directory"),
      accessor<&TVQiPhotoDatabase::iPhotoDataVersion>("iPhotoDataVersion"),
      accessor<&TVQiPhotoDatabase::iPhotoLibraryVersion>("iPhotoLibraryVersion"),
      accessor<&TVQiPhotoDatabase::iPhotoVersion>("iPhotoVersion"),
      accessor<&TVQiPhotoDatabase::keywords>("keywords"),
      accessor<&TVQiPhotoDatabase::library6DataFilename>("library6DataFilename"),
      accessor<&TVQiPhotoDatabase::libraryDataFilename>("libraryDataFilename"),
      accessor<&TVQiPhotoDatabase::photos>("photos"),
      // The one operation that changes something; a database is never made const.
      Accessor{"reloadIfChanged",
               [](const Object& o) -> Value {
                 const auto& database = static_cast<const TVQiPhotoDatabase&>(o);
                 return const_cast<TVQiPhotoDatabase&>(database).reloadIfChanged();
               }},
      accessor<&TVQiPhotoDatabase::rolls>("rolls"),
      accessor<&TVQiPhotoDatabase::thumbnailSegmentCache>("thumbnailSegmentCache"),
  };
  return findAccessor<kAccessors>(name, Object::accessorNamed(name));
}

}  // namespace mrziphoto

#include "Album.h"

#include <array>

#include "../archive/NSUnarchiver.h"
#include "../files/FileManager.h"
#include "../files/Path.h"
#include "../values/Array.h"
#include "../values/Log.h"
#include "../values/NSException.h"
#include "../values/detail/Formatted.h"
#include "../values/detail/KeyValue.h"

namespace mrziphoto {

std::string_view Album::defaultAlbumName() const {
  return static_cast<const AlbumKind&>(objectClass()).defaultName;
}

void Album::startWithDefaultName() {
  _dictionary = make<Dictionary>();
  setEntry(kName, defaultAlbumName());
}

void Album::takeAlbumData(const Dictionary& albumData) {
  // What is of another kind counts as missing.
  using IsOfKind = bool (*)(const Value&);
  constexpr IsOfKind kIsText = [](const Value& value) { return value.isString(); };
  constexpr IsOfKind kIsNumber = [](const Value& value) {
    return value.isNumber() || value.isString();
  };
  constexpr IsOfKind kIsKey = [](const Value& value) {
    return kIsNumber(value) || value.object<Key>();
  };
  const auto take = [&](std::string_view from, std::string_view as, IsOfKind isOfKind) {
    const Value* value = albumData.find(from);
    const bool isThere = value != nullptr && isOfKind(*value);
    if (isThere) {
      setEntry(as, *value);
    }
    return isThere;
  };
  take(kAlbumName, kName, kIsText);
  if (!take(kAlbumKey, kKey, kIsKey)) {
    take(kAlbumId, kKey, kIsKey);
  }
  take(kAnnotation, kAnnotation, kIsText);

  std::vector<std::uint32_t> keys;
  if (const Ref<Array> listed = albumData.get(kKeyList).array()) {
    keys.reserve(listed->size());
    for (const Value& element : *listed) {
      if (kIsNumber(element)) {
        keys.push_back(element.unsignedIntValue());
      }
    }
  }
  setEntry(kKeys, KeyMgr::initWithKeyNumbers(std::move(keys)));
}

Ref<Album> Album::albumWithContentsOfFile(const std::string& path, std::string* failure) {
  const std::string name = path::lastComponent(path);
  if (name.empty() || name == ".DS_Store") {
    return {};
  }
  try {
    const auto reader = NSUnarchiver::initForReadingWithData(FileManager::readContents(path));
    if (!reader) {
      NSException::raise(kNSInvalidArgumentException,
                         detail::formatted("'{}' is no archive", path));
    }
    return reader->decodeObject().object<Album>();
  } catch (const NSException& exception) {
    log("%@ - %@ = %@", exception.name(), exception.reason(), exception.userInfo());
    if (failure != nullptr) {
      *failure = exception.reason().find(path) != std::string::npos
                     ? exception.reason()
                     : "'" + path + "' is damaged: " + exception.reason();
    }
    return {};
  }
}

void Album::setDatabase(RecordDatabase* database) {
  _database = database;
  if (const Ref<KeyMgr> keys = photoKeys()) {
    keys->setDatabase(database);
  }
}

Ref<AttributeMgr> Album::attributes() const { return entry(kAttributes).object<AttributeMgr>(); }

std::optional<std::string> Album::annotation() const {
  const Ref<AttributeMgr> store = attributes();
  const Value attribute = store ? store->attributeForKey(AttributeMgr::kAlbumAnnotation) : Value();
  return attribute.isNothing() ? entry(kAnnotation).text() : attribute.text();
}

std::optional<Date> Album::modificationDate() const {
  const Ref<AttributeMgr> store = attributes();
  return store ? store->modificationDate() : std::nullopt;
}

void Album::setModificationDate(const Value& date) {
  if (const Ref<AttributeMgr> store = attributes()) {
    store->setModificationDate(date);
  }
}

Ref<KeyMgr> Album::photoKeys() const { return entry(kKeys).object<KeyMgr>(); }

List<ImageRecRef> Album::photos() const {
  const Ref<KeyMgr> keys = photoKeys();
  List<ImageRecRef> found = keys ? keys->photos() : List<ImageRecRef>();
  return found.isNothing() ? List<ImageRecRef>::makeEmpty() : found;
}

List<Album> Album::children() const {
  List<Album>::Items albums;
  if (const Ref<Array> stored = entry(kChildren).array()) {
    albums.reserve(stored->size());
    for (const Value& element : *stored) {
      // A weak element refers back to an album around this one; to own it would close a circle.
      if (const Ref<Album> album = element.object<Album>(); album && !element.isWeak()) {
        albums.push_back(album);
      }
    }
  }
  return List<Album>(std::move(albums));
}

const Accessor* Album::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      accessor<&Album::albumId>("albumId"),
      accessor<&Album::albumName>("albumName"),
      accessor<&Album::annotation>("annotation"),
      accessor<&Album::attributes>("attributes"),
      accessor<&Album::children>("children"),
      accessor<&Album::comments>("comments"),
      Accessor{"database",
               [](const Object& o) { return static_cast<const Album&>(o)._database.value(); }},
      accessor<&Album::defaultAlbumName>("defaultAlbumName"),
      accessor<&Album::key>("key"),
      accessor<&Album::modificationDate>("modificationDate"),
      accessor<&Album::photoKeys>("photoKeys"),
      accessor<&Album::photos>("photos"),
      accessor<&Album::roll>("roll"),
      accessor<&Album::rollKey>("rollKey"),
      accessor<&Album::title>("title"),
  };
  return findAccessor<kAccessors>(name, ArchivedRecord::accessorNamed(name));
}

}  // namespace mrziphoto

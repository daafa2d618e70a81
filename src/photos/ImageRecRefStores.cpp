// The photo record's stores: made from its row, or read from files of their own.

#include "../archive/NSUnarchiver.h"
#include "../files/FileManager.h"
#include "../files/Path.h"
#include "../table/detail/PhotoFacts.h"
#include "../values/Log.h"
#include "../values/NSException.h"
#include "../values/detail/Formatted.h"
#include "../values/detail/Generation.h"
#include "ImageRecRef.h"
#include "RecordDatabase.h"
#include "detail/ImageRecRefBeside.h"
#include "detail/PhotoFolder.h"

namespace mrziphoto {
namespace {

void logException(const NSException& exception) {
  log("%@ - %@ = %@", exception.name(), exception.reason(), exception.userInfo());
}

/// Tells the database of a photo's store file that cannot be read, or is damaged.
void noteUnreadableStore(const RecordDatabase* database, const std::string& file,
                         const NSException& exception) {
  if (database != nullptr) {
    const bool namesFile = exception.reason().find(file) != std::string::npos;
    database->noteUnreadable(
        "stores of photos",
        namesFile ? exception.reason() : "'" + file + "' is damaged: " + exception.reason());
  }
}

/// The root object of an archive; nothing, which is logged and told, when it is no `T`.
template <class T>
Ref<T> decodeRoot(const RecordDatabase* database, const Data& bytes, const std::string& path) {
  const auto reader = NSUnarchiver::initForReadingWithData(bytes);
  if (!reader) {
    NSException::raise(kNSInvalidArgumentException, detail::formatted("'{}' is no archive", path));
  }
  const Value root = reader->decodeObject();
  Ref<T> store = root.object<T>();
  if (!store) {
    const NSException otherRoot(
        kNSInvalidArgumentException,
        detail::formatted("'{}' holds {} in place of {}", path, root.className(), T::kClass.name));
    log("%@", otherRoot.reason());
    noteUnreadableStore(database, path, otherRoot);
  }
  return store;
}

}  // namespace

Ref<ImageRec> ImageRecRef::info() const {
  if (Ref<ImageRec> kept = keptInfo()) {
    return kept;
  }
  if (rowAnswersFor(PhotoStore::info)) {
    return beside()._info =
               ImageRec::initWithDictionary((*_table)[_row].dictionary(PhotoStore::info));
  }
  if (_infoAttempted) {
    return {};
  }
  _infoAttempted = true;
  Ref<ImageRec> loaded = loadInfo();
  if (loaded) {
    beside()._info = loaded;
  }
  return loaded;
}

Ref<ImageRec> ImageRecRef::loadInfo() const {
  Ref<ImageRec> loaded;
  const ReadingRules::Scope scope(rulesOf(_database.get()));
  const Ref<ImageRec> handedIn = dbInfo();
  const bool inDataFolder = handedIn || hasImageInfo();
  const Ref<PhotoFolder> found = folder();
  const std::string name = keyStringValue();
  if (found && found->holdsStore(inDataFolder, name)) {
    const std::string file = path::join(found->storeFolder(inDataFolder), name);
    try {
      loaded = decodeRoot<ImageRec>(_database.get(), FileManager::readContents(file), file);
    } catch (const NSException& exception) {
      logException(exception);
      noteUnreadableStore(_database.get(), file, exception);
    }
  }
  if (!loaded && handedIn) {
    loaded = handedIn;
    beside()._info = loaded;  // for the path that the line tells
    log("%@ using database INFO for image %@ at %@", className(), key(), imagePath());
  }
  return loaded;
}

Ref<AttributeMgr> ImageRecRef::imageAttributes() const {
  if (Ref<AttributeMgr> kept = keptAttributes()) {
    return kept;
  }
  Ref<AttributeMgr> store;
  if (rowAnswersFor(PhotoStore::attributes)) {
    const PhotoFacts row = (*_table)[_row];
    const Ref<Dictionary> entries = row.dictionary(PhotoStore::attributesRecord);
    entries->set(AttributeMgr::kAttributes, row.dictionary(PhotoStore::attributes));
    store = AttributeMgr::initWithDictionary(entries);
  } else {
    store = loadImageAttributes();
  }
  if (store) {
    beside()._imageAttributes = store;
  }
  return store;
}

Ref<AttributeMgr> ImageRecRef::loadImageAttributes() const {
  const ReadingRules::Scope scope(rulesOf(_database.get()));
  Ref<AttributeMgr> loaded;
  const Ref<AttributeMgr> handedIn = _beside ? _beside->_dbAttributes : Ref<AttributeMgr>();
  // Without a database the version counts as 0, as every unanswered number does.
  const std::int32_t version = _database != nullptr ? _database->iPhotoLibraryVersion() : 0;
  if (Generation::of(version).hasAttributesFiles) {
    const Ref<PhotoFolder> found = folder();
    const std::string name = path::withExtension(keyStringValue(), "attr");
    // Without a folder there is no file, not even one that lies where the process runs.
    std::optional<std::string> file;
    if (found) {
      file = path::join(found->storeFolder(handedIn || hasImageInfo()), name);
    }
    try {
      FileFailure failure;
      const std::optional<Data> bytes =
          file ? FileManager::contents(*file, &failure) : std::nullopt;
      if (!bytes) {
        log("No data for image attributes at %@", file);
        if (failure.cause != FileFailure::Cause::notThere) {
          noteUnreadableStore(_database.get(), *file, FileException(failure));
        }
      }
      loaded =
          bytes ? decodeRoot<AttributeMgr>(_database.get(), *bytes, *file) : AttributeMgr::init();
      if (!loaded && !handedIn) {
        loaded = AttributeMgr::init();  // the file would say the same each time
      }
    } catch (const NSException& exception) {
      logException(exception);
      noteUnreadableStore(_database.get(), *file, exception);
    }
  }
  if (!loaded && handedIn) {
    loaded = handedIn;
    beside()._imageAttributes = loaded;
    log("Using database attributes for image %@ at %@", key(), imagePath());
  }
  return loaded;
}

}  // namespace mrziphoto

// The photo record's stores, its camera values, and key-value access.

#include <array>

#include "../archive/NSArchiver.h"
#include "../archive/NSUnarchiver.h"
#include "../files/FileManager.h"
#include "../files/Path.h"
#include "../values/KeyValue.h"
#include "../values/Log.h"
#include "../values/NSException.h"
#include "../values/detail/Formatted.h"
#include "ImageRecRef.h"
#include "ImageRecRefOnRequestPrivate.h"
#include "PhotoFolder.h"
#include "RecordDatabase.h"

namespace mrziphoto {
namespace {

// From this catalogue version on no attributes files are written.
constexpr std::int32_t kFirstVersionWithoutAttributesFiles = 150;

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
  if (!stores().info && !_infoAttempted) {
    _infoAttempted = true;
    loadInfo();
  }
  return _stores.info;
}

void ImageRecRef::loadInfo() const {
  const ReadingRules::Scope scope(rulesOf(_database.get()));
  const Ref<ImageRec> handedIn = dbInfo();
  const bool inDataFolder = handedIn || hasImageInfo();
  const Ref<PhotoFolder> found = folder();
  const std::string name = keyStringValue();
  if (found && found->holdsStore(inDataFolder, name)) {
    const std::string file = path::join(found->storeFolder(inDataFolder), name);
    try {
      _stores.info = decodeRoot<ImageRec>(_database.get(), FileManager::readContents(file), file);
    } catch (const NSException& exception) {
      logException(exception);
      noteUnreadableStore(_database.get(), file, exception);
    }
  }
  if (!_stores.info && handedIn) {
    _stores.info = handedIn;
    log("%@ using database INFO for image %@ at %@", className(), key(), imagePath());
  }
}

Ref<AttributeMgr> ImageRecRef::imageAttributes() const {
  if (!stores().imageAttributes) {
    loadImageAttributes();
  }
  return _stores.imageAttributes;
}

void ImageRecRef::loadImageAttributes() const {
  const ReadingRules::Scope scope(rulesOf(_database.get()));
  Ref<AttributeMgr>& kept = _stores.imageAttributes;
  const Ref<AttributeMgr> handedIn = _onRequest ? _onRequest->_dbAttributes : Ref<AttributeMgr>();
  // Without a database the version counts as 0, as every unanswered number does.
  const std::int32_t version = _database != nullptr ? _database->iPhotoLibraryVersion() : 0;
  if (version < kFirstVersionWithoutAttributesFiles) {
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
      kept =
          bytes ? decodeRoot<AttributeMgr>(_database.get(), *bytes, *file) : AttributeMgr::init();
      if (!kept && !handedIn) {
        kept = AttributeMgr::init();  // the file would say the same each time
      }
    } catch (const NSException& exception) {
      logException(exception);
      noteUnreadableStore(_database.get(), *file, exception);
    }
  }
  if (!kept && handedIn) {
    kept = handedIn;
    log("Using database attributes for image %@ at %@", key(), imagePath());
  }
}

Ref<TVQiPhotoUserData> ImageRecRef::exifData() const {
  OnRequest& kept = onRequest();
  if (!kept._exifData) {
    const Ref<AttributeMgr> store = imageAttributes();
    const Value block = store ? store->imageUserData() : Value();
    Ref<TVQiPhotoUserData> made = TVQiPhotoUserData::initWithData(block.data().value_or(Data()));
    made->setPhoto(this);
    kept._exifData = std::move(made);
  }
  return kept._exifData;
}

Value ImageRecRef::valueForUndefinedKey(std::string_view key) const {
  return exifData()->valueForKey(key);
}

bool ImageRecRef::respondsToSelector(std::string_view key) const {
  return accessorNamed(key) != nullptr || exifData()->accessorNamed(key) != nullptr;
}

std::string ImageRecRef::description() const {
  const Ref<ImageRec> store = info();
  const Ref<AttributeMgr> attributes = imageAttributes();
  const Value where = directory();
  return detail::formatted("{}: {}, directory = {}, attributes = {}, info = {}", className(),
                           _dictionary ? Value(_dictionary) : Value("<no dictionary>"), where,
                           attributes, store);
}

void ImageRecRef::initWithCoder(NSUnarchiver& coder) {
  const std::uint32_t version = coder.versionForClassName(kClass.name);
  if (version != NSUnarchiver::kNotFound && version > kClass.highestVersion) {
    log("%@ version %u", className(), version);
  }
  _dictionary = coder.decodeObject().dictionary();
}

void ImageRecRef::encodeWithCoder(NSArchiver& coder) const { coder.encodeObject(_dictionary); }

const Accessor* ImageRecRef::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      accessor<&ImageRecRef::_filename>("_filename"),
      accessor<&ImageRecRef::_imageDirectory>("_imageDirectory"),
      accessor<&ImageRecRef::_originalImageFilename>("_originalImageFilename"),
      accessor<&ImageRecRef::_thumbnailFilename>("_thumbnailFilename"),
      accessor<&ImageRecRef::annotation>("annotation"),
      accessor<&ImageRecRef::archiveDate>("archiveDate"),
      accessor<&ImageRecRef::caption>("caption"),
      accessor<&ImageRecRef::comments>("comments"),
      Accessor{
          "database",
          [](const Object& o) { return static_cast<const ImageRecRef&>(o)._database.value(); }},
      accessor<&ImageRecRef::date>("date"),
      accessor<&ImageRecRef::dbInfo>("dbInfo"),
      accessor<&ImageRecRef::directory>("directory"),
      accessor<&ImageRecRef::directoryKey>("directoryKey"),
      accessor<&ImageRecRef::displayImage>("displayImage"),
      accessor<&ImageRecRef::displayThumbnail>("displayThumbnail"),
      accessor<&ImageRecRef::exifData>("exifData"),
      accessor<&ImageRecRef::extension>("extension"),
      accessor<&ImageRecRef::fileSize>("fileSize"),
      accessor<&ImageRecRef::filename>("filename"),
      accessor<&ImageRecRef::filepath>("filepath"),
      accessor<&ImageRecRef::hasBeenEdited>("hasBeenEdited"),
      accessor<&ImageRecRef::image>("image"),
      accessor<&ImageRecRef::imageAttributes>("imageAttributes"),
      accessor<&ImageRecRef::imageHeight>("imageHeight"),
      accessor<&ImageRecRef::imagePath>("imagePath"),
      Accessor{"imageSize",
               [](const Object& o) -> Value {
                 const NSSize size = static_cast<const ImageRecRef&>(o).imageSize();
                 return make<Dictionary>(std::initializer_list<std::pair<std::string_view, Value>>{
                     {"width", size.width}, {"height", size.height}});
               }},
      accessor<&ImageRecRef::imageWidth>("imageWidth"),
      accessor<&ImageRecRef::info>("info"),
      accessor<&ImageRecRef::key>("key"),
      accessor<&ImageRecRef::keyStringValue>("keyStringValue"),
      accessor<&ImageRecRef::keywords>("keywords"),
      accessor<&ImageRecRef::modificationDate>("modificationDate"),
      accessor<&ImageRecRef::originalExtension>("originalExtension"),
      accessor<&ImageRecRef::originalFilename>("originalFilename"),
      accessor<&ImageRecRef::originalImage>("originalImage"),
      accessor<&ImageRecRef::originalImageDirectory>("originalImageDirectory"),
      accessor<&ImageRecRef::originalImagePath>("originalImagePath"),
      accessor<&ImageRecRef::originalThumbnail>("originalThumbnail"),
      accessor<&ImageRecRef::photoId>("photoId"),
      accessor<&ImageRecRef::relativeDirectory>("relativeDirectory"),
      accessor<&ImageRecRef::rollKey>("rollKey"),
      accessor<&ImageRecRef::rotation>("rotation"),
      accessor<&ImageRecRef::thumbnail>("thumbnail"),
      accessor<&ImageRecRef::thumbnailDirectory>("thumbnailDirectory"),
      accessor<&ImageRecRef::thumbnailPath>("thumbnailPath"),
      accessor<&ImageRecRef::title>("title"),
  };
  return findAccessor<kAccessors>(name, Object::accessorNamed(name));
}

}  // namespace mrziphoto

// The photo record's stores, its camera values, and key-value access.

#include <array>

#include "../platform/FileManager.h"
#include "../platform/KeyValue.h"
#include "../platform/Log.h"
#include "../platform/NSArchiver.h"
#include "../platform/NSException.h"
#include "../platform/NSUnarchiver.h"
#include "../platform/Path.h"
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

/// The root object of an archive when it is a `T`.
template <class T>
Ref<T> decodeRoot(const Data& bytes, const std::string& path) {
  const auto reader = NSUnarchiver::initForReadingWithData(bytes);
  if (!reader) {
    NSException::raise(kNSInvalidArgumentException, "'%@' is no archive", path);
  }
  return reader->decodeObject().template object<T>();
}

}  // namespace

Ref<ImageRec> ImageRecRef::info() const {
  takeFromSource();
  if (!_info && !_infoAttempted) {
    _infoAttempted = true;
    loadInfo();
  }
  return _info;
}

void ImageRecRef::loadInfo() const {
  const ReadingRules::Scope scope(rulesOf(_database));
  const Ref<ImageRec> handedIn = dbInfo();
  const bool inDataFolder = handedIn || imageInfo();
  const Ref<PhotoFolder> found = folder();
  const std::string name = keyStringValue();
  if (found && found->holdsStore(inDataFolder, name)) {
    const std::string file = path::join(found->storeFolder(inDataFolder), name);
    try {
      _info = decodeRoot<ImageRec>(FileManager::readContents(file), file);
    } catch (const NSException& exception) {
      logException(exception);
      noteUnreadableStore(_database, file, exception);
    }
  }
  if (!_info && handedIn) {
    _info = handedIn;
    log("%@ using database INFO for image %@ at %@", className(), key(), imagePath());
  }
}

Ref<AttributeMgr> ImageRecRef::imageAttributes() const {
  takeFromSource();
  if (!_attributes) {
    loadImageAttributes();
  }
  return _attributes;
}

void ImageRecRef::loadImageAttributes() const {
  const ReadingRules::Scope scope(rulesOf(_database));
  const Ref<AttributeMgr> handedIn = _onRequest ? _onRequest->_dbAttributes : Ref<AttributeMgr>();
  // Without a database the version counts as 0, as every unanswered number does.
  const std::int32_t version = _database != nullptr ? _database->iPhotoLibraryVersion() : 0;
  if (version < kFirstVersionWithoutAttributesFiles) {
    const Ref<PhotoFolder> found = folder();
    const std::string name = path::withExtension(keyStringValue(), "attr");
    // Without a folder there is no file, not even one that lies where the process runs.
    std::optional<std::string> file;
    if (found) {
      file = path::join(found->storeFolder(handedIn || imageInfo()), name);
    }
    try {
      FileFailure failure;
      const std::optional<Data> bytes =
          file ? FileManager::contents(*file, &failure) : std::nullopt;
      if (bytes) {
        _attributes = decodeRoot<AttributeMgr>(*bytes, *file);
      } else {
        log("No data for image attributes at %@", file);
        if (failure.cause != FileFailure::Cause::notThere) {
          noteUnreadableStore(_database, *file, FileException(failure));
        }
        _attributes = AttributeMgr::init();
      }
    } catch (const NSException& exception) {
      logException(exception);
      noteUnreadableStore(_database, *file, exception);
    }
  }
  if (!_attributes && handedIn) {
    _attributes = handedIn;
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
  const std::optional<std::string> where = directory();
  return format("%@: %@, directory = %@, attributes = %@, info = %@", className(),
                _dictionary ? Value(_dictionary) : Value("<no dictionary>"), where, attributes,
                store);
}

void ImageRecRef::initWithCoder(NSUnarchiver& coder) {
  const std::uint32_t version = coder.versionForClassName(kClass.name);
  if (version != NSUnarchiver::kNotFound && version > kClass.highestVersion) {
    log("%@ version %u", className(), version);
  }
  _dictionary = coder.decodeObject().dictionary();
}

void ImageRecRef::encodeWithCoder(NSArchiver& coder) const { coder.encodeObject(_dictionary); }

namespace {

const ImageRecRef& self(const Object& object) { return static_cast<const ImageRecRef&>(object); }

/// A row for the operation of that name.
#define MRZIPHOTO_ANSWER(name)                                               \
  Accessor {                                                                 \
#name, [](const Object& object) -> Value { return self(object).name(); } \
  }

constexpr std::array kPhotoAccessors{
    MRZIPHOTO_ANSWER(_filename),
    MRZIPHOTO_ANSWER(_imageDirectory),
    MRZIPHOTO_ANSWER(_originalImageFilename),
    MRZIPHOTO_ANSWER(_thumbnailFilename),
    MRZIPHOTO_ANSWER(annotation),
    MRZIPHOTO_ANSWER(archiveDate),
    MRZIPHOTO_ANSWER(caption),
    MRZIPHOTO_ANSWER(comments),
    Accessor{"database",
             [](const Object& object) -> Value {
               const RecordDatabase* database = self(object).database();
               return database != nullptr ? Value(database->object()) : Value();
             }},
    MRZIPHOTO_ANSWER(date),
    MRZIPHOTO_ANSWER(dbInfo),
    MRZIPHOTO_ANSWER(description),
    MRZIPHOTO_ANSWER(directory),
    MRZIPHOTO_ANSWER(directoryKey),
    MRZIPHOTO_ANSWER(displayImage),
    MRZIPHOTO_ANSWER(displayThumbnail),
    MRZIPHOTO_ANSWER(exifData),
    MRZIPHOTO_ANSWER(extension),
    MRZIPHOTO_ANSWER(fileSize),
    MRZIPHOTO_ANSWER(filename),
    MRZIPHOTO_ANSWER(filepath),
    MRZIPHOTO_ANSWER(hasBeenEdited),
    MRZIPHOTO_ANSWER(image),
    MRZIPHOTO_ANSWER(imageAttributes),
    MRZIPHOTO_ANSWER(imageHeight),
    MRZIPHOTO_ANSWER(imagePath),
    Accessor{"imageSize",
             [](const Object& object) -> Value {
               const NSSize size = self(object).imageSize();
               return make<Dictionary>(std::initializer_list<std::pair<std::string_view, Value>>{
                   {"width", size.width}, {"height", size.height}});
             }},
    MRZIPHOTO_ANSWER(imageWidth),
    MRZIPHOTO_ANSWER(info),
    MRZIPHOTO_ANSWER(key),
    MRZIPHOTO_ANSWER(keyStringValue),
    MRZIPHOTO_ANSWER(keywords),
    MRZIPHOTO_ANSWER(modificationDate),
    MRZIPHOTO_ANSWER(originalExtension),
    MRZIPHOTO_ANSWER(originalFilename),
    MRZIPHOTO_ANSWER(originalImage),
    MRZIPHOTO_ANSWER(originalImageDirectory),
    MRZIPHOTO_ANSWER(originalImagePath),
    MRZIPHOTO_ANSWER(originalThumbnail),
    MRZIPHOTO_ANSWER(photoId),
    MRZIPHOTO_ANSWER(relativeDirectory),
    MRZIPHOTO_ANSWER(rollKey),
    MRZIPHOTO_ANSWER(rotation),
    MRZIPHOTO_ANSWER(thumbnail),
    MRZIPHOTO_ANSWER(thumbnailDirectory),
    MRZIPHOTO_ANSWER(thumbnailPath),
    MRZIPHOTO_ANSWER(title),
};
#undef MRZIPHOTO_ANSWER
static_assert(accessorsAreSorted(kPhotoAccessors));

}  // namespace

const Accessor* ImageRecRef::accessorNamed(std::string_view key) const {
  return findAccessor(kPhotoAccessors, key);
}

}  // namespace mrziphoto

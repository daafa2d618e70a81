#include "ImageRecRef.h"

#include <array>
#include <atomic>

#include "../archive/NSArchiver.h"
#include "../archive/NSUnarchiver.h"
#include "../exif/TVQiPhotoUserData.h"
#include "../files/FileManager.h"
#include "../files/Path.h"
#include "../table/detail/PhotoFacts.h"
#include "../values/Array.h"
#include "../values/KeyValue.h"
#include "../values/Log.h"
#include "../values/NSException.h"
#include "ImageRecRefOnRequestPrivate.h"
#include "PhotoFolder.h"
#include "RecordDatabase.h"

namespace mrziphoto {

ImageRecRef::ImageRecRef() { initialize(); }
ImageRecRef::~ImageRecRef() = default;

ImageRecRef::OnRequest& ImageRecRef::onRequest() const {
  if (!_onRequest) {
    _onRequest = std::make_unique<OnRequest>();
  }
  return *_onRequest;
}

void ImageRecRef::setImageInfoForKey(Ref<Dictionary> imageInfo, std::uint32_t key) {
  givenStores().imageInfo = std::move(imageInfo);
  _table = nullptr;
  takeKey(key);
}

void ImageRecRef::setSourceForKey(Ref<RecordSource> source, std::uint32_t position,
                                  std::uint32_t key) {
  _source = std::move(source);
  _table = nullptr;
  _position = position;
  _isTakenFromSource = false;
  takeKey(key);
}

void ImageRecRef::setRow(Ref<PhotoTable> table, std::uint32_t row) {
  givenStores() = {};
  _table = std::move(table);
  _position = row;
  takeKey(_table->keys()[row]);
}

namespace {

// Records of one process may live in several threads.
std::atomic<std::uint64_t> keyChangeCount{0};

}  // namespace

std::uint64_t ImageRecRef::keyChanges() { return keyChangeCount.load(std::memory_order_relaxed); }

void ImageRecRef::takeKey(std::uint32_t key) {
  if ((_hasImageKey || _dictionary) && plainKeyNumber() != key) {
    keyChangeCount.fetch_add(1, std::memory_order_relaxed);
  }
  _imageKey = key;
  _hasImageKey = true;
}

/// The record's stores, asked of its source when that was not done yet.
RecordStores& ImageRecRef::stores() const {
  if (_source && !_isTakenFromSource) {
    _stores = _source->stores(_position);
    _isTakenFromSource = true;
  }
  return _stores;
}

/// The stores that a host sets one of: from now on they are what was given, and not the source's.
RecordStores& ImageRecRef::givenStores() {
  RecordStores& given = stores();
  _source = nullptr;
  return given;
}

void ImageRecRef::unload() {
  if (_source && _isTakenFromSource) {
    _stores = {};
    _infoAttempted = false;
    _isTakenFromSource = false;
  }
  if (_onRequest) {
    auto handedIn = std::make_unique<OnRequest>();
    handedIn->_dbAttributes = std::move(_onRequest->_dbAttributes);
    handedIn->_dbInfo = std::move(_onRequest->_dbInfo);
    const bool isAny = handedIn->_dbAttributes || handedIn->_dbInfo;
    _onRequest = isAny ? std::move(handedIn) : nullptr;
  }
}

void ImageRecRef::setInfo(Ref<ImageRec> info) { givenStores().info = std::move(info); }

void ImageRecRef::setImageAttributes(Ref<AttributeMgr> attributes) {
  givenStores().imageAttributes = std::move(attributes);
}

void ImageRecRef::setImageInfoForKeyString(Ref<Dictionary> imageInfo, std::string_view key) {
  setImageInfoForKey(std::move(imageInfo), Value(String({}, key)).unsignedIntValue());
}

void ImageRecRef::setDBInfo(Ref<ImageRec> info) { onRequest()._dbInfo = std::move(info); }

void ImageRecRef::setDBImageAttributes(Ref<AttributeMgr> attributes) {
  onRequest()._dbAttributes = std::move(attributes);
}

Ref<ImageRec> ImageRecRef::dbInfo() const {
  return _onRequest ? _onRequest->_dbInfo : Ref<ImageRec>();
}

Value ImageRecRef::archived(std::string_view name) const {
  return _dictionary ? _dictionary->get(name) : Value();
}

bool ImageRecRef::hasImageInfo() const {
  return _table ? (*_table)[_position].has(PhotoStore::imageInfo) : stores().imageInfo != nullptr;
}

Value ImageRecRef::imageInfo(PhotoField field) const {
  if (_table) {
    return (*_table)[_position][field].value();
  }
  const Ref<Dictionary>& entries = stores().imageInfo;
  return entries ? entries->get(kPhotoFields[indexOf(field)].name) : Value();
}

Value ImageRecRef::attribute(std::string_view name) const {
  const Ref<AttributeMgr> store = imageAttributes();
  return store ? store->attributeForKey(name) : Value();
}

Value ImageRecRef::key() const {
  if (_hasImageKey) {
    return Key::initWithKey(_imageKey);
  }
  if (_dictionary) {
    return archived(kKey);
  }
  const Ref<ImageRec> store = dbInfo();
  return store ? store->key() : Value();
}

Value ImageRecRef::photoId() const { return keyNumber(key()); }

std::string ImageRecRef::keyStringValue() const {
  if (_hasImageKey) {
    return std::to_string(_imageKey);
  }
  const Value number = photoId();
  return number.isNothing() ? std::string() : number.description();
}

std::optional<std::int64_t> ImageRecRef::plainKeyNumber() const {
  if (_hasImageKey) {
    return _imageKey;
  }
  const Ref<Key> object = key().object<Key>();
  return object ? object->plainNumber() : std::nullopt;
}

Value ImageRecRef::directoryKey() const {
  if (_dictionary) {
    return archived(kDirectory);
  }
  const Ref<ImageRec> store = dbInfo();
  return store ? store->directoryKey() : Value();
}

Value ImageRecRef::rollKey() const {
  if (_dictionary) {
    return archived(kRoll);
  }
  const Ref<ImageRec> store = info();
  return store ? store->rollKey() : imageInfo(PhotoField::infoRoll);
}

std::optional<Date> ImageRecRef::date() const {
  if (_dictionary) {
    return archived(kDate).date();
  }
  const Ref<ImageRec> store = info();
  return store ? store->date() : std::nullopt;
}

std::optional<Date> ImageRecRef::attributeDate(std::string_view attributeName,
                                               PhotoField infoField) const {
  if (const std::optional<Date> date = attribute(attributeName).date()) {
    return date;
  }
  const Value seconds = imageInfo(infoField);
  return seconds.isNumber() ? std::optional(Date{seconds.doubleValue()}) : std::nullopt;
}

std::optional<Date> ImageRecRef::archiveDate() const {
  return attributeDate(AttributeMgr::kArchiveDate, PhotoField::infoDate);
}

std::optional<Date> ImageRecRef::modificationDate() const {
  return attributeDate(AttributeMgr::kModDate, PhotoField::infoModificationDate);
}

std::optional<std::string> ImageRecRef::attributeText(std::string_view attributeName,
                                                      PhotoField infoField) const {
  const Value stored = attribute(attributeName);
  return stored.isNothing() ? imageInfo(infoField).text() : stored.text();
}

std::optional<std::string> ImageRecRef::annotation() const {
  return attributeText(AttributeMgr::kAnnotation, PhotoField::infoComment);
}

std::optional<std::string> ImageRecRef::caption() const {
  return attributeText(AttributeMgr::kCaption, PhotoField::infoCaption);
}

std::string ImageRecRef::extension() const {
  return attribute(AttributeMgr::kExt).text().value_or("?ext?");
}

std::string ImageRecRef::originalExtension() const {
  return attribute(AttributeMgr::kOrigExt).text().value_or("?origExt?");
}

std::optional<std::string> ImageRecRef::originalFilename() const {
  if (const Value name = attribute(AttributeMgr::kOrigFileName); !name.isNothing()) {
    return name.text();
  }
  Value recorded = imageInfo(PhotoField::originalPath);
  if (recorded.isNothing()) {
    recorded = imageInfo(PhotoField::imagePath);
  }
  const std::optional<std::string> original = recorded.text();
  return original ? std::optional(path::lastComponent(*original)) : std::nullopt;
}

Value ImageRecRef::fileSize() const {
  if (Value stored = attribute(AttributeMgr::kFileSize); !stored.isNothing()) {
    return stored;
  }
  const std::optional<std::string> image = imagePath();
  return image ? Value(FileManager::size(*image)) : Value();
}

Value ImageRecRef::rotation() const {
  const Ref<ImageRec> store = info();
  return store ? store->rotation() : Value();
}

Value ImageRecRef::imageWidth() const {
  const Ref<ImageRec> store = info();
  return store ? store->imageWidth() : imageSide(&NSSize::width);
}

Value ImageRecRef::imageHeight() const {
  const Ref<ImageRec> store = info();
  return store ? store->imageHeight() : imageSide(&NSSize::height);
}

NSSize ImageRecRef::imageSize() const {
  NSSize size;
  size.height = static_cast<float>(imageHeight().doubleValue());
  size.width = static_cast<float>(imageWidth().doubleValue());
  return size;
}

Value ImageRecRef::keywords() const {
  if (Value stored = attribute(AttributeMgr::kKeyWords); !stored.isNothing()) {
    return stored;
  }
  const Ref<Array> listed = imageInfo(PhotoField::infoKeywords).array();
  if (!listed) {
    return make<Array>();
  }
  if (listed->empty() || !(*listed)[0].isString()) {
    return listed;
  }
  const Ref<Array> found = make<Array>();
  for (const Value& key : *listed) {
    Value keyword =
        _database != nullptr ? Value(Ref<Object>(_database->keywordForKey(key))) : Value();
    if (!keyword.isNothing()) {
      found->append(std::move(keyword));
    }
  }
  return found;
}

std::optional<std::string> ImageRecRef::updated(const std::optional<std::string>& path) const {
  return path && _database != nullptr ? _database->updateImagePath(*path) : std::nullopt;
}

/// The folder of the recorded image path. A host may have told the database of a library that lies
/// elsewhere; both ways of rewriting paths are applied, each where it fits.
std::optional<std::string> ImageRecRef::directoryFromImageInfo() const {
  std::optional<std::string> image = imageInfo(PhotoField::imagePath).text();
  if (!image) {
    return std::nullopt;
  }
  if (!_updatedImagePath) {
    _updatedImagePath = true;
    image = updated(image);
  }
  if (!image) {
    return std::nullopt;
  }
  const std::optional<std::string> archive =
      _database != nullptr ? _database->archivePath() : std::nullopt;
  if (archive && !archive->empty() && image->starts_with(*archive)) {
    image->replace(0, archive->size(), _database->directory());
  }
  return path::withoutLastComponent(*image);
}

Ref<PhotoFolder> ImageRecRef::folder() const {
  if (_directory) {
    return _directory;
  }
  std::optional<std::string> path;
  if (hasImageInfo()) {
    path = directoryFromImageInfo();
  } else if (_database != nullptr) {
    path = _database->directoryForKey(directoryKey());
  }
  if (path) {
    _directory = _database != nullptr ? _database->photoFolder(*path) : make<PhotoFolder>(*path);
  } else {
    log("%@ - directory '%@' does not exist for %@", kClass.name, path, key());
  }
  return _directory;
}

std::optional<std::string> ImageRecRef::directory() const {
  const Ref<PhotoFolder> found = folder();
  return found ? std::optional(found->path()) : std::nullopt;
}

std::optional<std::string> ImageRecRef::_imageDirectory() const {
  std::optional<std::string> folder = directory();
  return folder && _dictionary ? path::withoutLastComponent(*folder) : folder;
}

std::optional<std::string> ImageRecRef::relativeDirectory() const {
  OnRequest& kept = onRequest();
  if (kept._relativeDirectory) {
    return kept._relativeDirectory;
  }
  if (const Value key = directoryKey(); !key.isNothing()) {
    if (_database != nullptr) {
      kept._relativeDirectory = _database->relativeDirectoryForKey(key);
    }
    return kept._relativeDirectory;
  }
  const std::optional<std::string> folder = directory();
  if (!folder) {
    return std::nullopt;
  }
  const std::vector<std::string> mine = path::components(*folder);
  const std::vector<std::string> library =
      path::components(_database != nullptr ? _database->directory() : std::string());
  const auto [behind, unequal] =
      std::mismatch(mine.begin(), mine.end(), library.begin(), library.end());
  kept._relativeDirectory =
      behind == mine.begin() ? *folder : path::fromComponents({behind, mine.end()});
  return kept._relativeDirectory;
}

std::optional<std::string> ImageRecRef::_filename() const {
  const Ref<ImageRec> store = info();
  if (std::optional<std::string> name = store ? store->fileName() : std::nullopt) {
    return name;
  }
  if (hasImageInfo()) {
    const std::optional<std::string> image = imageInfo(PhotoField::imagePath).text();
    return image ? std::optional(path::lastComponent(*image)) : std::nullopt;
  }
  return path::withExtension(keyStringValue(), extension());
}

std::optional<std::string> ImageRecRef::filepath() const {
  const std::optional<std::string> folder = directory();
  return folder ? std::optional(path::join(*folder, _filename().value_or(""))) : std::nullopt;
}

std::optional<std::string> ImageRecRef::imagePath() const {
  if (const Value recorded = imageInfo(PhotoField::imagePath); !recorded.isNothing()) {
    return updated(recorded.text());
  }
  const std::optional<std::string> folder = _imageDirectory();
  return folder ? updated(path::join(*folder, _filename().value_or(""))) : std::nullopt;
}

std::optional<std::string> ImageRecRef::filename() const {
  std::string folder = relativeDirectory().value_or("");
  if (path::lastComponent(folder) == "Data") {
    folder = path::withoutLastComponent(folder);
  }
  const std::optional<std::string> name = _filename();
  return folder.empty() || !name ? name : std::optional(path::join(folder, *name));
}

}  // namespace mrziphoto

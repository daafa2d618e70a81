// What a photo record is made of: its row, its keys and what is given to it.

#include "ImageRecRef.h"

#include <atomic>

#include "../archive/NSArchiver.h"
#include "../archive/NSUnarchiver.h"
#include "../table/detail/PhotoFacts.h"
#include "../values/Log.h"
#include "RecordDatabase.h"
#include "detail/ImageRecRefBeside.h"

namespace mrziphoto {
namespace {

// Records of one process may live in several threads.
std::atomic<std::uint64_t> keyChangeCount{0};

}  // namespace

ImageRecRef::ImageRecRef() { initialize(); }
ImageRecRef::~ImageRecRef() = default;

ImageRecRef::Beside& ImageRecRef::beside() const {
  if (!_beside) {
    _beside = std::make_unique<Beside>();
  }
  return *_beside;
}

void ImageRecRef::setImageInfoForKey(Ref<Dictionary> imageInfo, std::uint32_t key) {
  standInForRow(PhotoStore::imageInfo);
  beside()._imageInfo = std::move(imageInfo);
  takeKey(key);
}

void ImageRecRef::setImageInfoForKeyString(Ref<Dictionary> imageInfo, std::string_view key) {
  setImageInfoForKey(std::move(imageInfo), Value(String({}, key)).unsignedIntValue());
}

void ImageRecRef::setRow(Ref<PhotoTable> table, std::uint32_t row) {
  if (_beside) {
    _beside->_imageInfo = nullptr;
    _beside->_info = nullptr;
    _beside->_imageAttributes = nullptr;
  }
  _table = std::move(table);
  _row = row;
  const PhotoFacts facts = (*_table)[row];
  _rowStores = 0;
  for (const PhotoStore store : {PhotoStore::imageInfo, PhotoStore::info, PhotoStore::attributes}) {
    _rowStores |= static_cast<std::uint8_t>(facts.has(store) << static_cast<unsigned>(store));
  }
  takeKey(facts.key());
}

void ImageRecRef::setInfo(Ref<ImageRec> info) {
  standInForRow(PhotoStore::info);
  beside()._info = std::move(info);
}

void ImageRecRef::setImageAttributes(Ref<AttributeMgr> attributes) {
  standInForRow(PhotoStore::attributes);
  beside()._imageAttributes = std::move(attributes);
}

void ImageRecRef::setDBInfo(Ref<ImageRec> info) { beside()._dbInfo = std::move(info); }

void ImageRecRef::setDBImageAttributes(Ref<AttributeMgr> attributes) {
  beside()._dbAttributes = std::move(attributes);
}

Ref<ImageRec> ImageRecRef::dbInfo() const { return _beside ? _beside->_dbInfo : Ref<ImageRec>(); }

void ImageRecRef::unload() {
  if (!_beside) {
    return;
  }
  Beside& all = *_beside;
  if (rowAnswersFor(PhotoStore::info)) {
    all._info = nullptr;
  }
  if (rowAnswersFor(PhotoStore::attributes)) {
    all._imageAttributes = nullptr;
  }
  all._relativeDirectory.reset();
  all.letGoOfExifData();
  for (Ref<NSImage>* image : {&all._thumbnail, &all._displayThumbnail, &all._originalThumbnail}) {
    *image = nullptr;
  }
  const bool isAny = all._dictionary || all._imageInfo || all._dbAttributes || all._dbInfo ||
                     all._info || all._imageAttributes;
  if (!isAny) {
    _beside = nullptr;
  }
}

std::uint64_t ImageRecRef::keyChanges() { return keyChangeCount.load(std::memory_order_relaxed); }

void ImageRecRef::takeKey(std::uint32_t key) {
  if ((_hasImageKey || isArchived()) && plainKeyNumber() != key) {
    keyChangeCount.fetch_add(1, std::memory_order_relaxed);
  }
  _imageKey = key;
  _hasImageKey = true;
}

bool ImageRecRef::isArchived() const { return _beside && _beside->_dictionary; }

Value ImageRecRef::archived(std::string_view name) const {
  return isArchived() ? _beside->_dictionary->get(name) : Value();
}

Value ImageRecRef::key() const {
  if (_hasImageKey) {
    return Key::initWithKey(_imageKey);
  }
  if (isArchived()) {
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
  if (isArchived()) {
    return archived(kDirectory);
  }
  const Ref<ImageRec> store = dbInfo();
  return store ? store->directoryKey() : Value();
}

void ImageRecRef::initWithCoder(NSUnarchiver& coder) {
  const std::uint32_t version = coder.versionForClassName(kClass.name);
  if (version != NSUnarchiver::kNotFound && version > kClass.highestVersion) {
    log("%@ version %u", className(), version);
  }
  beside()._dictionary = coder.decodeObject().dictionary();
}

void ImageRecRef::encodeWithCoder(NSArchiver& coder) const {
  coder.encodeObject(_beside ? _beside->_dictionary : Ref<Dictionary>());
}

}  // namespace mrziphoto

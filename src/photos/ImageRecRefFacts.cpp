// What is stored of a photo. A row answers as it is; a store that was given or made goes before it.

#include "../files/FileManager.h"
#include "../files/Path.h"
#include "../table/detail/PhotoFacts.h"
#include "../values/Array.h"
#include "ImageRecRef.h"
#include "RecordDatabase.h"
#include "detail/ImageRecRefBeside.h"

namespace mrziphoto {
namespace {

constexpr std::string_view nameOf(PhotoField field) { return kPhotoFields[indexOf(field)].name; }

}  // namespace

/// What is stored of a record, in its row or elsewhere.
struct ImageRecRef::Stored : PhotoAnswers<ImageRecRef::Stored> {
  explicit Stored(const ImageRecRef& ofPhoto) : photo(ofPhoto) {}

  Value operator[](PhotoField field) const {
    switch (kPhotoFields[indexOf(field)].store) {
      case PhotoStore::imageInfo:
        return photo.imageInfo(field);
      case PhotoStore::info:
        return photo.infoEntry(field);
      default:
        return photo.attribute(field);
    }
  }

  const ImageRecRef& photo;
};

/// True when all that the store holds stands in the row; that may be nothing.
bool ImageRecRef::isToldByRow(PhotoStore store) const {
  if (!_table || isArchived()) {
    return false;
  }
  const bool isInRow = rowAnswersFor(store);
  if (isInRow != (*_table)[_row].has(store)) {
    return false;
  }
  switch (store) {
    case PhotoStore::imageInfo:
      return isInRow || !hasImageInfo();
    case PhotoStore::info:
      return isInRow ? !keptInfo() : !info();
    default:
      return isInRow ? !keptAttributes() : !imageAttributes();
  }
}

Fact ImageRecRef::fact(PhotoField field) const { return (*_table)[_row][field]; }

bool ImageRecRef::hasImageInfo() const {
  return rowAnswersFor(PhotoStore::imageInfo) || (_beside && _beside->_imageInfo);
}

Value ImageRecRef::imageInfo(PhotoField field) const {
  if (rowAnswersFor(PhotoStore::imageInfo)) {
    return fact(field).value();
  }
  return _beside && _beside->_imageInfo ? _beside->_imageInfo->get(nameOf(field)) : Value();
}

Ref<ImageRec> ImageRecRef::keptInfo() const { return _beside ? _beside->_info : Ref<ImageRec>(); }

Ref<AttributeMgr> ImageRecRef::keptAttributes() const {
  return _beside ? _beside->_imageAttributes : Ref<AttributeMgr>();
}

bool ImageRecRef::hasInfo() const { return rowAnswersFor(PhotoStore::info) || info() != nullptr; }

Value ImageRecRef::infoEntry(PhotoField field) const {
  if (rowAnswersFor(PhotoStore::info) && !keptInfo()) {
    return fact(field).value();
  }
  const Ref<ImageRec> store = info();
  return store ? store->objectForKey(nameOf(field)) : Value();
}

Value ImageRecRef::infoNumber(PhotoField field) const {
  Value number = infoEntry(field);
  return number.isNothing() ? Value(0.0F) : number;
}

Value ImageRecRef::attribute(PhotoField field) const {
  if (rowAnswersFor(PhotoStore::attributes) && !keptAttributes()) {
    return fact(field).value();
  }
  const Ref<AttributeMgr> store = imageAttributes();
  return store ? store->attributeForKey(nameOf(field)) : Value();
}

Value ImageRecRef::rollKey() const {
  if (isArchived()) {
    return archived(kRoll);
  }
  if (rowAnswersFor(PhotoStore::info) && !keptInfo()) {
    return {};  // no catalogue with info stores says it
  }
  const Ref<ImageRec> store = info();
  return store ? store->rollKey() : imageInfo(PhotoField::infoRoll);
}

std::optional<Date> ImageRecRef::date() const {
  return isArchived() ? archived(kDate).date() : infoEntry(PhotoField::date).date();
}

std::optional<Date> ImageRecRef::archiveDate() const { return Stored(*this).archiveDate(); }

std::optional<Date> ImageRecRef::modificationDate() const {
  return Stored(*this).modificationDate();
}

std::optional<std::string> ImageRecRef::annotation() const { return Stored(*this).comments(); }

std::optional<std::string> ImageRecRef::caption() const { return Stored(*this).caption(); }

std::string ImageRecRef::extension() const {
  return attribute(PhotoField::extension).text().value_or("?ext?");
}

std::string ImageRecRef::originalExtension() const {
  return attribute(PhotoField::originalExtension).text().value_or("?origExt?");
}

std::optional<std::string> ImageRecRef::originalFilename() const {
  return Stored(*this).originalFilename();
}

Value ImageRecRef::fileSize() const {
  if (Value stored = attribute(PhotoField::fileSize); !stored.isNothing()) {
    return stored;
  }
  const std::optional<std::string> image = imagePath();
  return image ? Value(FileManager::size(*image)) : Value();
}

Value ImageRecRef::rotation() const {
  return hasInfo() ? infoNumber(PhotoField::rotation) : Value();
}

Value ImageRecRef::imageWidth() const {
  return hasInfo() ? infoNumber(PhotoField::imageWidth) : imageSide(&NSSize::width);
}

Value ImageRecRef::imageHeight() const {
  return hasInfo() ? infoNumber(PhotoField::imageHeight) : imageSide(&NSSize::height);
}

NSSize ImageRecRef::imageSize() const {
  NSSize size;
  size.height = static_cast<float>(imageHeight().doubleValue());
  size.width = static_cast<float>(imageWidth().doubleValue());
  return size;
}

Value ImageRecRef::keywordForKey(const Value& key) const {
  return _database != nullptr ? Value(Ref<Object>(_database->keywordForKey(key))) : Value();
}

Value ImageRecRef::keywords() const {
  if (Value stored = attribute(PhotoField::keywords); !stored.isNothing()) {
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
    Value keyword = keywordForKey(key);
    if (!keyword.isNothing()) {
      found->append(std::move(keyword));
    }
  }
  return found;
}

}  // namespace mrziphoto

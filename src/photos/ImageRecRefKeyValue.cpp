// Key-value access to a photo record, camera values included.

#include <array>

#include "../table/detail/PhotoFacts.h"
#include "../values/detail/Formatted.h"
#include "../values/detail/KeyValue.h"
#include "ImageRecRef.h"
#include "RecordDatabase.h"
#include "detail/ImageRecRefBeside.h"

namespace mrziphoto {

Ref<TVQiPhotoUserData> ImageRecRef::exifData() const {
  if (!_beside || !_beside->_exifData) {
    const Value block = attribute(PhotoField::cameraBlock);
    Ref<TVQiPhotoUserData> made = TVQiPhotoUserData::initWithData(block.data().value_or(Data()));
    made->setPhoto(this);
    beside()._exifData = std::move(made);
  }
  return _beside->_exifData;
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
                           isArchived() ? Value(_beside->_dictionary) : Value("<no dictionary>"),
                           where, attributes, store);
}

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

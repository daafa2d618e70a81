#include "sample/PhotoStores.h"

#include <filesystem>
#include <system_error>

#include <MRZiPhoto/files/Path.h>
#include <MRZiPhoto/photos/ImageRec.h>
#include <MRZiPhoto/photos/Key.h>

#include "sample/ArchivedFiles.h"
#include "sample/CameraBytes.h"
#include "sample/OutputFile.h"
#include "sample/SampleRecord.h"

namespace mrziphoto::sample {
namespace {

Value attributesOf(const SamplePhoto& photo, std::uint64_t fileSize) {
  const std::string extension = path::extension(photo.fileName);
  const Ref<AttributeMgr> store = AttributeMgr::init();
  store->setModificationDate(Date{photo.modificationDate});
  store->setAttributeForKey(photo.caption, AttributeMgr::kCaption);
  store->setAttributeForKey(photo.comment, AttributeMgr::kAnnotation);
  store->setAttributeForKey(Date{photo.archiveDate}, AttributeMgr::kArchiveDate);
  store->setAttributeForKey(Date{photo.modificationDate}, AttributeMgr::kModDate);
  store->setAttributeForKey(photo.fileName, AttributeMgr::kOrigFileName);
  store->setAttributeForKey(extension, AttributeMgr::kExt);
  store->setAttributeForKey(extension, AttributeMgr::kOrigExt);
  store->setAttributeForKey(static_cast<std::int64_t>(fileSize), AttributeMgr::kFileSize);
  store->setImageUserData(Data::copyOf(cameraBlock(photo.camera)));
  return store;
}

Value infoOf(const SampleRoll& roll, const SamplePhoto& photo) {
  const Ref<ImageRec> store = ImageRec::init();
  store->setFileName(photo.fileName);
  store->setImageWidth(photo.width);
  store->setImageHeight(photo.height);
  store->setRotation(photo.rotation);
  store->setDate(Date{photo.date});
  store->setObjectForKey(archivedKey(photo.key, ImageRefKey::kClass), ImageRec::kKey);
  store->setObjectForKey(archivedKey(roll.key), ImageRec::kRoll);
  store->setObjectForKey(
      record(DBSource::kClass, {{ImageSource::kDirectory, archivedKey(roll.directoryKey)},
                                {ImageSource::kFilename, photo.fileName}}),
      ImageRec::kImageSource);
  return store;
}

Value attributesOf(const SampleRoll& roll) {
  const Ref<AttributeMgr> store = AttributeMgr::init();
  store->setAttributeForKey(roll.name, AttributeMgr::kCaption);
  store->setAttributeForKey(roll.comment, AttributeMgr::kAnnotation);
  store->setAttributeForKey(Date{roll.date}, AttributeMgr::kArchiveDate);
  return store;
}

// Without a roll, which tells it from the store of a photo.
Value infoOf(const SampleRoll& roll) {
  const Ref<ImageRec> store = ImageRec::init();
  store->setFileName(roll.name);
  store->setDate(Date{roll.date});
  return store;
}

void writeStores(const std::string& folder, std::uint32_t key, const Value& info,
                 const Value& attributes, std::endian byteOrder) {
  const std::string path = folder + "/" + std::to_string(key);
  writeFile(path, archiveOf({info}, byteOrder));
  writeFile(path + ".attr", archiveOf({attributes}, byteOrder));
}

}  // namespace

std::uint64_t fileSizeOf(const SamplePhoto& photo, const std::string& folder, bool hasPictures) {
  std::error_code error;
  const std::uint64_t size =
      hasPictures ? std::filesystem::file_size(folder + "/" + photo.imagePath, error) : 0;
  return hasPictures && !error ? size : photo.madeUpFileSize;
}

void writePhotoStores(const SampleModel& model, const std::string& folder, bool hasPictures,
                      std::endian byteOrder) {
  for (std::uint32_t i = 0; i < model.rollCount(); ++i) {
    const SampleRoll roll = model.roll(i);
    const std::string dataFolder = folder + "/" + roll.dataFolder;
    makeFolder(dataFolder);
    writeStores(dataFolder, roll.key, infoOf(roll), attributesOf(roll), byteOrder);
    for (std::uint32_t j = 0; j < roll.photoCount && hasPictures; ++j) {
      const SamplePhoto photo = model.photo(roll, roll.firstPhoto + j);
      writeStores(dataFolder, photo.key, infoOf(roll, photo),
                  attributesOf(photo, fileSizeOf(photo, folder, hasPictures)), byteOrder);
    }
  }
}

}  // namespace mrziphoto::sample

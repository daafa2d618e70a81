#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace mrziphoto {

/// The dictionaries of a photo record that its row stands for.
enum class PhotoStore : std::uint8_t { imageInfo, info, attributes, attributesRecord, count };

/// What a row may say of a photo by a name that the program knows. The names of all other entries
/// are kept in the table, which numbers them from `count` on.
enum class PhotoField : std::uint8_t {
  nothing,
  // The image info.
  imagePath,
  imageOriginalPath,
  imageThumbnailPath,
  thumbPath,
  originalPath,
  infoCaption,
  infoComment,
  infoRoll,
  infoDate,
  infoModificationDate,
  infoKeywords,
  infoRating,
  // The info store.
  imageHeight,
  imageWidth,
  fileName,
  rotation,
  date,
  // The attributes store.
  archiveDate,
  modDate,
  metaDate,
  caption,
  annotation,
  fileSize,
  originalFileName,
  cameraBlock,
  keywords,
  extension,
  originalExtension,
  modificationDate,
  count
};

struct PhotoFieldRow {
  PhotoField field;
  PhotoStore store;
  std::string_view name;
  /// A file's path: its folder is shared with the photos that lie beside it.
  bool isPath = false;
};

inline constexpr std::array kPhotoFields{
    PhotoFieldRow{PhotoField::nothing, PhotoStore::count, ""},
    PhotoFieldRow{PhotoField::imagePath, PhotoStore::imageInfo, "ImagePath", true},
    PhotoFieldRow{PhotoField::imageOriginalPath, PhotoStore::imageInfo, "ImageOriginalPath", true},
    PhotoFieldRow{PhotoField::imageThumbnailPath, PhotoStore::imageInfo, "ImageThumbnailPath",
                  true},
    PhotoFieldRow{PhotoField::thumbPath, PhotoStore::imageInfo, "ThumbPath", true},
    PhotoFieldRow{PhotoField::originalPath, PhotoStore::imageInfo, "OriginalPath", true},
    PhotoFieldRow{PhotoField::infoCaption, PhotoStore::imageInfo, "Caption"},
    PhotoFieldRow{PhotoField::infoComment, PhotoStore::imageInfo, "Comment"},
    PhotoFieldRow{PhotoField::infoRoll, PhotoStore::imageInfo, "Roll"},
    PhotoFieldRow{PhotoField::infoDate, PhotoStore::imageInfo, "DateAsTimerInterval"},
    PhotoFieldRow{PhotoField::infoModificationDate, PhotoStore::imageInfo,
                  "ModDateAsTimerInterval"},
    PhotoFieldRow{PhotoField::infoKeywords, PhotoStore::imageInfo, "Keywords"},
    PhotoFieldRow{PhotoField::infoRating, PhotoStore::imageInfo, "Rating"},
    PhotoFieldRow{PhotoField::imageHeight, PhotoStore::info, "Image_Height"},
    PhotoFieldRow{PhotoField::imageWidth, PhotoStore::info, "Image_Width"},
    PhotoFieldRow{PhotoField::fileName, PhotoStore::info, "FileName"},
    PhotoFieldRow{PhotoField::rotation, PhotoStore::info, "Rotation"},
    PhotoFieldRow{PhotoField::date, PhotoStore::info, "Date"},
    PhotoFieldRow{PhotoField::archiveDate, PhotoStore::attributes, "ArchiveDate"},
    PhotoFieldRow{PhotoField::modDate, PhotoStore::attributes, "ModDate"},
    PhotoFieldRow{PhotoField::metaDate, PhotoStore::attributes, "MetaDate"},
    PhotoFieldRow{PhotoField::caption, PhotoStore::attributes, "Caption"},
    PhotoFieldRow{PhotoField::annotation, PhotoStore::attributes, "Annotation"},
    PhotoFieldRow{PhotoField::fileSize, PhotoStore::attributes, "FileSize"},
    PhotoFieldRow{PhotoField::originalFileName, PhotoStore::attributes, "OrigFileName"},
    PhotoFieldRow{PhotoField::cameraBlock, PhotoStore::attributes, "ImageUserData"},
    PhotoFieldRow{PhotoField::keywords, PhotoStore::attributes, "KeyWords"},
    PhotoFieldRow{PhotoField::extension, PhotoStore::attributes, "Ext"},
    PhotoFieldRow{PhotoField::originalExtension, PhotoStore::attributes, "OrigExt"},
    PhotoFieldRow{PhotoField::modificationDate, PhotoStore::attributesRecord, "Modification_Date"},
};

constexpr std::size_t indexOf(PhotoField field) { return static_cast<std::size_t>(field); }

inline constexpr std::size_t kKnownFields = indexOf(PhotoField::count);

constexpr bool isPath(std::uint32_t field) {
  return field < kKnownFields && kPhotoFields[field].isPath;
}

static_assert([] {
  for (std::size_t i = 0; i < kPhotoFields.size(); ++i) {
    if (indexOf(kPhotoFields[i].field) != i) {
      return false;
    }
  }
  return kPhotoFields.size() == kKnownFields;
}());

}  // namespace mrziphoto

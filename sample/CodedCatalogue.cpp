#include "sample/CodedCatalogue.h"

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include <MRZiPhoto/archive/NSArchiver.h>
#include <MRZiPhoto/values/Array.h>

#include "sample/ArchivedFiles.h"
#include "sample/Bytes.h"
#include "sample/CameraBytes.h"
#include "sample/CodedItems.h"
#include "sample/Generations.h"
#include "sample/OutputFile.h"
#include "sample/PhotoStores.h"

namespace mrziphoto::sample {
namespace {

/// The values of an image record, each at the place of its `ImageValue`.
class ImageValues {
 public:
  Value& operator[](ImageValue value) { return _values.at(static_cast<std::size_t>(value)); }
  const Value& operator[](ImageValue value) const {
    return _values.at(static_cast<std::size_t>(value));
  }

 private:
  std::array<Value, 32> _values;
};

// The image-data blocks, each with the file that it is about.
struct Block {
  CodedBlockType type;
  ImageValue file;
};
constexpr std::array kBlocks{
    Block{CodedBlockType::image, ImageValue::imageFile},
    Block{CodedBlockType::thumbnail, ImageValue::thumbnailFile},
    Block{CodedBlockType::original, ImageValue::originalFile},
};

// Fields that readers drop come with some of the records: enough to see that they are passed over.
constexpr std::uint32_t kRecordsPerWordyOne = 16;

std::string sized(std::uint32_t first, const std::string& contents) {
  std::string bytes;
  appendBigEndian(bytes, first);
  appendBigEndian(bytes, static_cast<std::uint32_t>(contents.size()));
  return bytes + contents;
}

Value arrayOf(const std::vector<std::int32_t>& numbers) {
  return make<Array>(std::vector<Value>(numbers.begin(), numbers.end()));
}

void addSection(CodedItems& items, std::uint32_t code, const Value& value) {
  items.add(*findCode(kCodedSections, code), value);
}

/// One image record: its fields, with the image-data blocks behind the field that counts them.
class ImageRecordBytes {
 public:
  ImageRecordBytes(ImageValues values, bool isWordy, std::endian byteOrder)
      : _values(std::move(values)), _isWordy(isWordy), _byteOrder(byteOrder) {}

  [[nodiscard]] std::string bytes() {
    constexpr std::uint32_t kRecordCode = fourCharacterCode("idRC");
    const std::string blocks = blockBytes();
    CodedItems fields(_byteOrder);
    for (const CodedImageField& row : kCodedImageFields) {
      if (row.keep != ImageValue::nothing) {
        fields.add(row, _values[row.keep]);
      } else if (_isWordy) {
        fields.addDropped(row);
      }
      if (row.keep == ImageValue::lastBlock) {
        fields.addBytes(blocks);
      }
    }
    return sized(kRecordCode, fields.bytes());
  }

 private:
  // Numbers the blocks, and sets the number of the last.
  [[nodiscard]] std::string blockBytes() {
    std::string blocks;
    std::int32_t number = 0;
    for (const Block& block : kBlocks) {
      if (!_values[block.file].isNothing()) {
        ++number;
        const auto type = static_cast<std::int32_t>(block.type);
        _values[ImageValue::blockType] = type;
        blocks += sized(static_cast<std::uint32_t>(number), blockFields(type));
      }
    }
    if (number != 0) {
      _values[ImageValue::lastBlock] = number;
    }
    return blocks;
  }

  [[nodiscard]] std::string blockFields(std::int32_t type) const {
    CodedItems fields(_byteOrder);
    for (const CodedBlockField& row : kCodedBlockFields) {
      const ImageValue keep = row.keepIn(type);
      if (keep != ImageValue::nothing) {
        fields.add(row, _values[keep]);
      } else if (_isWordy) {
        fields.addDropped(row);
      }
    }
    return fields.bytes();
  }

  ImageValues _values;
  bool _isWordy;
  std::endian _byteOrder;
};

ImageValues valuesOf(const SamplePhoto& photo, std::uint64_t fileSize) {
  ImageValues values;
  values[ImageValue::imageKey] = photo.key;
  values[ImageValue::rollKey] = photo.rollKey;
  values[ImageValue::date] = photo.date;
  values[ImageValue::modificationDate] = photo.modificationDate;
  values[ImageValue::archiveDate] = photo.archiveDate;
  values[ImageValue::metadataDate] = photo.metadataDate;
  values[ImageValue::caption] = photo.caption;
  values[ImageValue::comment] = photo.comment;
  values[ImageValue::fileName] = photo.fileName;
  values[ImageValue::originalFileName] = photo.fileName;
  if (!photo.keywords.empty()) {
    values[ImageValue::keywordCount] = static_cast<std::int32_t>(photo.keywords.size());
    values[ImageValue::keywordKeys] = arrayOf(photo.keywords);
  }
  values[ImageValue::cameraData] = Data::copyOf(cameraBlock(photo.camera));
  values[ImageValue::imageFile] = photo.imagePath;
  values[ImageValue::thumbnailFile] = photo.thumbnailPath;
  if (photo.isEdited) {
    values[ImageValue::originalFile] = photo.originalPath;
  }
  values[ImageValue::imageSize] = make<Array>(std::vector<Value>{photo.width, photo.height});
  values[ImageValue::rotation] = photo.rotation;
  values[ImageValue::fileSize] = fileSize;
  return values;
}

// A record without a roll key stands for a roll. Its file is found from its thumbnail's path.
ImageValues valuesOf(const SampleRoll& roll) {
  ImageValues values;
  values[ImageValue::imageKey] = roll.key;
  values[ImageValue::date] = roll.date;
  values[ImageValue::modificationDate] = roll.date;
  values[ImageValue::archiveDate] = roll.date;
  values[ImageValue::caption] = roll.name;
  values[ImageValue::comment] = roll.comment;
  values[ImageValue::fileName] = roll.name;
  values[ImageValue::thumbnailPath] =
      roll.thumbnailFolder + "/" + std::to_string(roll.key) + ".jpg";
  return values;
}

Value rollValue(const SampleRoll& roll, RollValue value) {
  switch (value) {
    case RollValue::rollKey:
      return roll.key;
    case RollValue::name:
      return roll.name;
    case RollValue::comment:
      return roll.comment;
    case RollValue::photoKeys: {
      const Ref<Array> keys = make<Array>();
      for (std::uint32_t i = 0; i < roll.photoCount; ++i) {
        keys->append(SampleModel::photoKey(roll.firstPhoto + i));
      }
      return keys;
    }
    case RollValue::nothing:
    case RollValue::count:
      break;
  }
  return {};
}

std::string rollRecord(const SampleRoll& roll, std::endian byteOrder) {
  CodedItems fields(byteOrder);
  for (const CodedRollField& row : kCodedRollFields) {
    if (row.keep != RollValue::nothing) {
      fields.add(row, rollValue(roll, row.keep));
    } else if (roll.index % kRecordsPerWordyOne == 0) {
      fields.addDropped(row);
    }
  }
  std::string record;
  appendBigEndian(record,
                  static_cast<std::uint32_t>(sizeof(std::uint32_t) + fields.bytes().size()));
  return record + fields.bytes();
}

}  // namespace

CodedCatalogue::CodedCatalogue(const SampleModel& model, std::string folder, bool hasPictures,
                               std::endian byteOrder)
    : _model(model), _folder(std::move(folder)), _hasPictures(hasPictures), _byteOrder(byteOrder) {}

void CodedCatalogue::writeVersion(const std::string& path, std::int32_t version) {
  CodedItems items(std::endian::big);
  addSection(items, kVersionSection, version);
  writeFile(path, items.bytes());
}

void CodedCatalogue::writeArchiveHeaded(const std::string& path,
                                        const std::function<void()>& photoDone) const {
  NSArchiver header(_byteOrder);
  header.encodeInt(_model.version());
  header.encodeObject(archivedKeywords());
  OutputFile file(path);
  file.write(header.archivedData().bytes());
  constexpr std::size_t kBetweenArchiveAndSections = 6;
  file.write(std::string(kBetweenArchiveAndSections, '\0'));
  writeSections(file, photoDone);
}

void CodedCatalogue::write(const std::string& path, const std::function<void()>& photoDone) const {
  CodedItems items(_byteOrder);
  addSection(items, kVersionSection, _model.version());
  addSection(items, kKeywordSection, archivedKeywords());
  OutputFile file(path);
  file.write(items.bytes());
  writeSections(file, photoDone);
}

void CodedCatalogue::writeSections(OutputFile& file, const std::function<void()>& photoDone) const {
  CodedItems items(_byteOrder);
  addSection(items, kDateSection, 120'000'000.5);
  file.write(items.bytes());
  // The oldest libraries keep both in the folder "Albums". Elsewhere the archive album comes before
  // the rolls, which readers hand to it.
  if (_model.version() > kLastWithAlbumFiles) {
    writeAlbumSection(file);
    writeRollSection(file);
  }
  writeRollTable(file);
  writePhotoTable(file, photoDone);
  file.close();
}

void CodedCatalogue::writeAlbumSection(OutputFile& file) const {
  const std::vector<Value> albums = archivedAlbums(_model);
  NSArchiver archive(_byteOrder);
  archive.encodeInt(static_cast<std::int32_t>(albums.size()));
  for (const Value& album : albums) {
    archive.encodeObject(album);
  }
  constexpr std::int32_t kEnd = 0;
  archive.encodeObject(kEnd);
  CodedItems items(_byteOrder);
  addSection(items, kAlbumSection, archive.archivedData());
  file.write(items.bytes());
}

void CodedCatalogue::writeRollSection(OutputFile& file) const {
  const std::uint64_t start = file.position();
  std::string header = sized(kRollSection, {});
  appendBigEndian(header, _model.rollCount());
  file.write(header);
  for (std::uint32_t i = 0; i < _model.rollCount(); ++i) {
    file.write(rollRecord(_model.roll(i), _byteOrder));
  }
  constexpr std::uint64_t kItemHeaderSize = 8;
  std::string size;
  appendBigEndian(size, static_cast<std::uint32_t>(file.position() - start - kItemHeaderSize));
  file.overwrite(start + sizeof(std::uint32_t), size);
}

void CodedCatalogue::writeRollTable(OutputFile& file) const {
  CodedItems items(_byteOrder);
  addSection(items, kImageCountSection, _model.rollCount());
  addSection(items, kImageTableSection, Data());
  file.write(items.bytes());
  for (std::uint32_t i = 0; i < _model.rollCount(); ++i) {
    file.write(ImageRecordBytes(valuesOf(_model.roll(i)), false, _byteOrder).bytes());
  }
}

void CodedCatalogue::writePhotoTable(OutputFile& file,
                                     const std::function<void()>& photoDone) const {
  CodedItems items(_byteOrder);
  addSection(items, kImageCountSection, _model.photoCount());
  addSection(items, kImageTableSection, Data());
  file.write(items.bytes());
  _model.forEachPhoto([&](const SampleRoll&, const SamplePhoto& photo) {
    const bool isWordy = photo.index % kRecordsPerWordyOne == 0;
    file.write(ImageRecordBytes(valuesOf(photo, fileSizeOf(photo, _folder, _hasPictures)), isWordy,
                                _byteOrder)
                   .bytes());
    photoDone();
  });
}

}  // namespace mrziphoto::sample

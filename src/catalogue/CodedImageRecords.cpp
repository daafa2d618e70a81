#include <algorithm>
#include <array>
#include <vector>

#include "../files/Path.h"
#include "../values/Array.h"
#include "CodedImageRecordsPrivate.h"
#include "CodedImageWalkPrivate.h"

namespace mrziphoto {
namespace {

constexpr std::size_t kImageValueCount = static_cast<std::size_t>(ImageValue::imageHeight) + 1;
constexpr auto kFirstBlockValue = static_cast<std::size_t>(ImageValue::imageFile);

/// Checks a value as its typed read does, and leaves the stream where that would. Archives are not
/// looked into.
void passValue(CodedRead read, TVQiPhotoCodedStreamData& stream) {
  const CodedReadKind& kind = codedReadKind(read);
  const auto size = static_cast<std::uint32_t>(stream.readInt());
  if (kind.requiredSize != 0 && size != kind.requiredSize) {
    stream.raiseUnexpectedCodeSizeExceptionDuring(kind.operation);
  }
  if (kind.element == 0) {
    return;
  }
  const std::uint32_t taken = size - size % kind.element;
  if (taken > stream.remaining()) {
    // The read says how that is wrong.
    static_cast<void>(stream.readDataWithLength(taken));
  }
  stream.seekToDataOffset(stream.offsetInData() + taken);
}

/// Reads a value of a kind that stands for one `Value`.
Value readValue(CodedRead read, TVQiPhotoCodedStreamData& stream) {
  switch (read) {
    case CodedRead::shortNumber:
      return stream.readCodedShort();
    case CodedRead::intNumber:
      return stream.readCodedInt();
    case CodedRead::longLong:
      return static_cast<std::uint64_t>(stream.readCodedLongLong());
    case CodedRead::floatNumber:
      return stream.readCodedFloat();
    case CodedRead::doubleNumber:
      return Date{stream.readCodedDouble()};
    case CodedRead::text:
      return stream.readCodedUTF16String();
    case CodedRead::data:
      return stream.readCodedData();
    default:
      passValue(read, stream);
      return {};
  }
}

/// Takes of a record what is needed to file it, and checks the rest.
struct Check {
  void take(ImageValue value, CodedRead read, TVQiPhotoCodedStreamData& stream) {
    record.isBlank &= value == ImageValue::nothing;
    if (value == ImageValue::imageKey) {
      record.imageKey = static_cast<std::uint32_t>(stream.readCodedInt());
    } else if (value == ImageValue::rollKey) {
      record.rollKey = stream.readCodedInt();
    } else if (read == CodedRead::archive) {
      // An archive that cannot be read is the end of the catalogue, whoever needs it.
      static_cast<void>(stream.readCodedArchive());
    } else {
      passValue(read, stream);
    }
  }
  void startImageData() {}

  CodedImageRecords::Record record;
};

}  // namespace

/// What one image record says.
class CodedImageRecords::Contents {
 public:
  void take(ImageValue value, CodedRead read, TVQiPhotoCodedStreamData& stream) {
    switch (value) {
      case ImageValue::nothing:
        passValue(read, stream);
        return;
      case ImageValue::keywordKeys:
        keywordKeys = stream.readCodedIntArray();
        return;
      case ImageValue::imageSize: {
        const NSSize size = stream.readCodedNSSize();
        at(ImageValue::imageWidth) = size.width;
        at(ImageValue::imageHeight) = size.height;
        return;
      }
      default:
        at(value) = readValue(read, stream);
    }
  }

  void startImageData() {
    std::fill(_values.begin() + static_cast<std::ptrdiff_t>(kFirstBlockValue), _values.end(),
              Value());
  }

  [[nodiscard]] const Value& operator[](ImageValue value) const {
    return _values[static_cast<std::size_t>(value)];
  }
  Value& at(ImageValue value) { return _values[static_cast<std::size_t>(value)]; }

  std::vector<std::int32_t> keywordKeys;

 private:
  std::array<Value, kImageValueCount> _values;
};

namespace {

// Up to this version, what a catalogue says of a photo lies in files beside it.
constexpr std::int32_t kLastVersionWithoutStores = 24;

/// An entry of a store, and the value of the record that it holds.
struct StoreEntry {
  std::string_view name;
  ImageValue value;
};

// The entries stand in the order in which they are set.
constexpr std::array kPhotoAttributes{
    StoreEntry{AttributeMgr::kArchiveDate, ImageValue::archiveDate},
    StoreEntry{AttributeMgr::kMetaDate, ImageValue::metadataDate},
    StoreEntry{AttributeMgr::kCaption, ImageValue::caption},
    StoreEntry{AttributeMgr::kAnnotation, ImageValue::comment},
    StoreEntry{AttributeMgr::kFileSize, ImageValue::fileSize},
    StoreEntry{AttributeMgr::kOrigFileName, ImageValue::originalFileName},
    StoreEntry{AttributeMgr::kImageUserData, ImageValue::cameraData},
    StoreEntry{AttributeMgr::kKeyWords, ImageValue::keywordKeys},
};
constexpr std::array kRollAttributes{
    StoreEntry{AttributeMgr::kArchiveDate, ImageValue::archiveDate},
    StoreEntry{AttributeMgr::kModDate, ImageValue::modificationDate},
    StoreEntry{AttributeMgr::kMetaDate, ImageValue::metadataDate},
    StoreEntry{AttributeMgr::kCaption, ImageValue::caption},
    StoreEntry{AttributeMgr::kAnnotation, ImageValue::comment},
    StoreEntry{AttributeMgr::kOrigFileName, ImageValue::originalFileName},
};
constexpr std::array kPhotoInfo{
    StoreEntry{ImageRec::kImageHeight, ImageValue::imageHeight},
    StoreEntry{ImageRec::kImageWidth, ImageValue::imageWidth},
    StoreEntry{ImageRec::kFileName, ImageValue::fileName},
    StoreEntry{ImageRec::kRotation, ImageValue::rotation},
    StoreEntry{ImageRec::kDate, ImageValue::date},
};
constexpr std::array kRollInfo{
    StoreEntry{ImageRec::kFileName, ImageValue::imageFile},
    StoreEntry{ImageRec::kDate, ImageValue::date},
};
constexpr std::array kPhotoLocations{
    StoreEntry{ImageRecRef::kImagePath, ImageValue::imageFile},
    StoreEntry{ImageRecRef::kImageOriginalPath, ImageValue::originalFile},
    StoreEntry{ImageRecRef::kImageThumbnailPath, ImageValue::thumbnailPath},
};
constexpr std::array kRollLocations{
    StoreEntry{ImageRecRef::kImagePath, ImageValue::imageFile},
};

/// The names of a store's entries, each one text that all records share.
template <std::size_t count>
std::vector<DictionaryKey> namesOf(const std::array<StoreEntry, count>& entries) {
  std::vector<DictionaryKey> names;
  names.reserve(count);
  for (const StoreEntry& entry : entries) {
    names.emplace_back(entry.name);
  }
  return names;
}

/// The entries of a store that the record has something for.
template <const auto& kEntries>
Ref<Dictionary> entriesOf(const CodedImageRecords::Contents& contents) {
  static const std::vector<DictionaryKey> kNames = namesOf(kEntries);
  std::vector<Dictionary::Entry> entries;
  entries.reserve(kEntries.size());
  for (std::size_t i = 0; i < kEntries.size(); ++i) {
    if (const Value& value = contents[kEntries[i].value]; !value.isNothing()) {
      entries.push_back({kNames[i], value});
    }
  }
  return make<Dictionary>(std::move(entries));
}

Ref<AttributeMgr> attributesStore(const Value& modificationDate, Ref<Dictionary> attributes) {
  static const DictionaryKey kModificationDate(AttributeMgr::kModificationDate);
  static const DictionaryKey kAttributes(AttributeMgr::kAttributes);
  std::vector<Dictionary::Entry> entries;
  entries.reserve(2);
  if (!modificationDate.isNothing()) {
    entries.push_back({kModificationDate, modificationDate});
  }
  entries.push_back({kAttributes, std::move(attributes)});
  return AttributeMgr::initWithDictionary(make<Dictionary>(std::move(entries)));
}

}  // namespace

CodedImageRecords::CodedImageRecords(Data catalogue, std::string directory, std::int32_t version,
                                     Ref<KeywordMgr> keywords)
    : _catalogue(std::move(catalogue)),
      _directory(std::move(directory)),
      _version(version),
      _keywords(std::move(keywords)) {}

const Class& CodedImageRecords::objectClass() const {
  static constexpr Class kClass{"CodedImageRecords"};
  return kClass;
}

CodedImageRecords::Record CodedImageRecords::pass(TVQiPhotoCodedStreamData& stream) {
  Check check;
  check.record.state = CodedImageWalk(stream, check).walkRecord();
  return check.record;
}

RecordStores CodedImageRecords::stores(std::uint32_t position) const {
  TVQiPhotoCodedStreamData stream(_catalogue);
  stream.setShouldSwapMode(TVQStreamData::bigEndian);
  stream.seekToDataOffset(position);
  Contents contents;
  static_cast<void>(CodedImageWalk(stream, contents).walkRecord());
  if (contents[ImageValue::thumbnailPath].isNothing()) {
    contents.at(ImageValue::thumbnailPath) = contents[ImageValue::thumbnailFile];
  }
  const bool isPhoto = contents[ImageValue::rollKey].intValue() != 0;
  return isPhoto ? photoStores(contents) : rollStores(contents);
}

RecordStores CodedImageRecords::rollStores(Contents& contents) const {
  RecordStores stores;
  if (_version > kLastVersionWithoutStores) {
    stores.imageAttributes = attributesStore(contents[ImageValue::modificationDate],
                                             entriesOf<kRollAttributes>(contents));
    stores.info = ImageRec::initWithDictionary(entriesOf<kRollInfo>(contents));
  }
  // The roll's files lie in the folder in which the folder of its thumbnails lies.
  const std::optional<std::string> thumbnail = contents[ImageValue::thumbnailPath].text();
  const std::optional<std::string> name = contents[ImageValue::fileName].text();
  Value file;
  if (thumbnail && name) {
    const std::string folder = path::withoutLastComponent(path::withoutLastComponent(*thumbnail));
    file = path::join(path::join(_directory, folder), *name);
  }
  contents.at(ImageValue::imageFile) = std::move(file);
  stores.imageInfo = entriesOf<kRollLocations>(contents);
  return stores;
}

RecordStores CodedImageRecords::photoStores(Contents& contents) const {
  Value& image = contents.at(ImageValue::imageFile);
  Value& name = contents.at(ImageValue::fileName);
  if (const std::optional<std::string> file = (name.isNothing() ? image : name).text()) {
    name = path::lastComponent(*file);
  }
  contents.at(ImageValue::keywordKeys) = keywordsForKeys(contents.keywordKeys);
  RecordStores stores;
  stores.imageAttributes = attributesStore(contents[ImageValue::modificationDate],
                                           entriesOf<kPhotoAttributes>(contents));
  stores.info = ImageRec::initWithDictionary(entriesOf<kPhotoInfo>(contents));

  image = inDirectory(image);
  Value& original = contents.at(ImageValue::originalFile);
  original = original.isNothing() ? image : inDirectory(original);
  Value& thumbnail = contents.at(ImageValue::thumbnailPath);
  thumbnail = inDirectory(thumbnail);
  stores.imageInfo = entriesOf<kPhotoLocations>(contents);
  return stores;
}

Value CodedImageRecords::keywordsForKeys(const std::vector<std::int32_t>& keys) const {
  std::vector<Value> found;
  if (_keywords) {
    found.reserve(keys.size());
    for (const std::int32_t key : keys) {
      if (Ref<Keyword> keyword = _keywords->keywordForKeyNumber(key)) {
        found.emplace_back(std::move(keyword));
      }
    }
  }
  return make<Array>(std::move(found));
}

Value CodedImageRecords::inDirectory(const Value& file) const {
  const std::optional<std::string> path = file.text();
  return path ? Value(String::holding(path::join(_directory, *path))) : Value();
}

}  // namespace mrziphoto

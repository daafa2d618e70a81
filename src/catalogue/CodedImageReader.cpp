#include "detail/CodedImageReader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "../files/Path.h"
#include "../values/Limits.h"
#include "../values/NSException.h"
#include "../values/detail/Generation.h"
#include "../values/detail/Text.h"

namespace mrziphoto {
namespace {

constexpr std::uint32_t kUnknown = 0xFFFFFFFF;

constexpr std::uint32_t bitOf(ImageValue value) { return 1U << static_cast<unsigned>(value); }
static_assert(static_cast<unsigned>(ImageValue::count) < 32);

/// What image-data blocks say: all from the first such value on.
constexpr std::uint32_t kBlockValues = ~(bitOf(ImageValue::imageFile) - 1);

/// A value of a record, and the field of the row that takes it unchanged.
struct PlainFact {
  PhotoField field;
  ImageValue value;
};

// In the order of the stores' entries.
constexpr std::array kPhotoFacts{
    PlainFact{PhotoField::modificationDate, ImageValue::modificationDate},
    PlainFact{PhotoField::archiveDate, ImageValue::archiveDate},
    PlainFact{PhotoField::metaDate, ImageValue::metadataDate},
    PlainFact{PhotoField::caption, ImageValue::caption},
    PlainFact{PhotoField::annotation, ImageValue::comment},
    PlainFact{PhotoField::fileSize, ImageValue::fileSize},
    PlainFact{PhotoField::originalFileName, ImageValue::originalFileName},
    PlainFact{PhotoField::cameraBlock, ImageValue::cameraData},
};
constexpr std::array kRollFacts{
    PlainFact{PhotoField::modificationDate, ImageValue::modificationDate},
    PlainFact{PhotoField::archiveDate, ImageValue::archiveDate},
    PlainFact{PhotoField::modDate, ImageValue::modificationDate},
    PlainFact{PhotoField::metaDate, ImageValue::metadataDate},
    PlainFact{PhotoField::caption, ImageValue::caption},
    PlainFact{PhotoField::annotation, ImageValue::comment},
    PlainFact{PhotoField::originalFileName, ImageValue::originalFileName},
    PlainFact{PhotoField::fileName, ImageValue::imageFile},
    PlainFact{PhotoField::date, ImageValue::date},
};

template <class Number>
Number bigEndian(const char* bytes) {
  Number number;
  std::memcpy(&number, bytes, sizeof number);
  if constexpr (std::endian::native == std::endian::big) {
    return number;
  } else if constexpr (sizeof number == sizeof(std::uint32_t)) {
    return __builtin_bswap32(number);
  } else {
    return __builtin_bswap64(number);
  }
}

float floatAt(const char* bytes) { return std::bit_cast<float>(bigEndian<std::uint32_t>(bytes)); }

/// True for a path that `path::join` appends unchanged.
bool isPlainRelative(std::string_view file) {
  return !file.empty() && file.front() != '/' && file.back() != '/' &&
         file.find("//") == std::string_view::npos;
}

}  // namespace

CodedImageReader::CodedImageReader(std::string directory, std::int32_t version)
    : _directory(std::move(directory)), _hasStores(Generation::of(version).hasCodedPhotos) {
  std::string root = path::join(_directory, "x");
  root.pop_back();
  _filler.setRoot(std::move(root));
}

void CodedImageReader::setKeywords(Ref<KeywordMgr> keywords) {
  if (keywords != _keywords) {
    _keywords = std::move(keywords);
    _keywordPlaces = FirstIndex<std::uint32_t>();
    _keywordNumbers.clear();
  }
}

CodedImageReader::Record CodedImageReader::read(TVQiPhotoCodedStreamData& stream) {
  _stream = &stream;
  _record = {};
  _said = 0;
  _keywordCount = 0;
  walkRecord();
  _record.isPhoto = has(ImageValue::rollKey) && number(ImageValue::rollKey) != 0;
  _record.hasRow = _hasStores || !_record.isPhoto;
  if (_record.hasRow) {
    _record.row = _record.isBlank ? fillBlank() : static_cast<std::uint32_t>(table()->size());
    if (!_record.isBlank) {
      _record.isPhoto ? fillPhoto() : fillRoll();
    }
  }
  return _record;
}

/// A record has ended when a field would begin at its end or behind it, wherever the field before
/// has left the stream.
void CodedImageReader::walkRecord() {
  CodedRecordState& state = _record.state;
  const std::uint32_t start = _stream->offsetInData();
  state.code = _stream->readCode();
  const std::int32_t size = _stream->readInt();
  NegativeSize::refuse("photo record", state.code, start, size);
  const std::uint64_t end = std::uint64_t{start} + 8 + static_cast<std::uint32_t>(size);
  while (!_stream->isAtEndOfData() && _stream->offsetInData() < end) {
    walkField();
  }
  state.fitsItsSize &= _stream->offsetInData() == end;
}

void CodedImageReader::walkField() {
  const std::uint32_t start = _stream->offsetInData();
  const std::uint32_t code = _stream->readCode();
  const std::int32_t size = _stream->readInt();
  const CodedImageField* field = _fields.find(code);
  std::uint32_t blockBytes = 0;
  if (field != nullptr) {
    refuseNegativeSize(field->read, size, *_stream);
    _stream->seekToDataOffset(start + 4);
    blockBytes = takeField(*field);
  }
  NegativeSize::refuse("field", code, start, size);
  seekBehind(*_stream, start, std::uint64_t{8} + static_cast<std::uint32_t>(size) + blockBytes);
}

/// Answers how many bytes behind the field belong to it.
std::uint32_t CodedImageReader::takeField(const CodedImageField& field) {
  switch (field.keep) {
    case ImageValue::keywordCount:
      _keywordCount = _stream->readCodedInt();
      return 0;
    case ImageValue::keywordKeys:
      // Without a count before them the keys mean nothing.
      if (_keywordCount != 0) {
        take(field.keep, field.read);
      }
      return 0;
    case ImageValue::lastBlock: {
      const auto last = static_cast<std::uint32_t>(_stream->readCodedInt());
      _said &= ~kBlockValues;
      return _readImageDataFromStreamLast(last);
    }
    default:
      take(field.keep, field.read);
      return 0;
  }
}

/// Walks the image-data blocks at the stream's position up to the one of number `last`, and
/// answers how many bytes they take.
std::uint32_t CodedImageReader::_readImageDataFromStreamLast(std::uint32_t last) {
  const std::uint32_t firstBlock = _stream->offsetInData();
  for (std::uint32_t number = 0; number < last;) {
    const std::uint32_t start = _stream->offsetInData();
    number = _stream->readCode();
    const std::int32_t size = _stream->readInt();
    if (size < 0) {
      throw NegativeSize{detail::formatted("image-data block {}", number), start, size};
    }
    const std::uint64_t length = std::uint64_t{8} + static_cast<std::uint32_t>(size);
    if (number <= last) {
      walkBlock(start + length);
    } else {
      _record.state.hasAllBlocks = false;
    }
    seekBehind(*_stream, start, length);
  }
  return _stream->offsetInData() - firstBlock;
}

void CodedImageReader::walkBlock(std::uint64_t end) {
  std::int32_t type = 0;
  while (_stream->offsetInData() < end) {
    const CodedBlockField* field = _blockFields.find(_stream->readCode());
    if (field == nullptr) {
      // Nothing is known of such a field, not even that it has a size.
      continue;
    }
    const std::uint32_t sizeWord = _stream->offsetInData();
    refuseNegativeSize(field->read, _stream->readInt(), *_stream);
    _stream->seekToDataOffset(sizeWord);
    const ImageValue value = field->keepIn(type);
    if (value == ImageValue::blockType) {
      type = _stream->readCodedInt();
    } else {
      take(value, field->read);
    }
  }
  _record.state.fitsItsSize &= _stream->offsetInData() == end;
}

/// Begins at a value's size word and leaves the stream where the typed read would, with the same
/// checks.
void CodedImageReader::take(ImageValue value, CodedRead read) {
  _record.isBlank &= value == ImageValue::nothing;
  if (read == CodedRead::archive) {
    // An archive that cannot be read is the end of the catalogue, whoever needs it.
    static_cast<void>(_stream->readCodedArchive());
    return;
  }
  const CodedReadKind& kind = codedReadKind(read);
  const auto size = static_cast<std::uint32_t>(_stream->readInt());
  if (kind.requiredSize != 0 && size != kind.requiredSize) {
    _stream->raiseUnexpectedCodeSizeExceptionDuring(kind.operation);
  }
  const std::uint32_t start = _stream->offsetInData();
  const std::uint32_t taken = size & ~(kind.element - 1);
  if (taken > _stream->remaining()) {
    // Throws what that read throws.
    static_cast<void>(_stream->readDataWithLength(taken));
  }
  _stream->seekToDataOffset(start + taken);
  if (value != ImageValue::nothing) {
    _places[static_cast<std::size_t>(value)] = {start, taken};
    _said |= bitOf(value);
  }
}

bool CodedImageReader::has(ImageValue value) const { return (_said & bitOf(value)) != 0; }

std::string_view CodedImageReader::bytes(ImageValue value) const {
  const Place& place = _places[static_cast<std::size_t>(value)];
  return _stream->bytesInRange(place.offset, place.size);
}

std::int32_t CodedImageReader::number(ImageValue value) const {
  return static_cast<std::int32_t>(bigEndian<std::uint32_t>(bytes(value).data()));
}

std::optional<std::string_view> CodedImageReader::text(ImageValue value, std::string& room) const {
  if (!has(value)) {
    return std::nullopt;
  }
  const std::string_view units = bytes(value);
  const std::size_t most = units.size() / 2 * 3;
  if (room.size() < most) {
    room.resize(most);
  }
  const bool highFirst = _stream->encodingOf(units) == String::Encoding::utf16BigEndian;
  const char* end = text::writeUtf8FromUtf16(units, highFirst, room.data());
  return std::string_view(room.data(), static_cast<std::size_t>(end - room.data()));
}

/// A block's value may reach far beyond its block, and over the records behind it. Rows hold
/// copies, which together must not be much larger than the file.
void CodedImageReader::countBytes() {
  for (std::uint32_t left = _said; left != 0; left &= left - 1) {
    _bytesKept += _places[static_cast<std::size_t>(std::countr_zero(left))].size;
  }
  if (_bytesKept > _stream->length() + Limits::current().leastExpansion) {
    throw NSException(
        kNSRangeException,
        detail::formatted("the image data up to offset {} reaches over itself too often",
                          _stream->offsetInData()),
        _stream->offsetInData());
  }
}

std::uint32_t CodedImageReader::fillBlank() {
  if (!_blankRow) {
    _blankRow = static_cast<std::uint32_t>(table()->size());
    fillRoll();
  }
  return *_blankRow;
}

void CodedImageReader::fillRoll() {
  countBytes();
  const std::uint32_t key =
      has(ImageValue::imageKey) ? static_cast<std::uint32_t>(number(ImageValue::imageKey)) : 0;
  if (_hasStores) {
    _filler.beginRow(key, {PhotoStore::imageInfo, PhotoStore::info, PhotoStore::attributes,
                           PhotoStore::attributesRecord});
    for (const PlainFact& fact : kRollFacts) {
      put(fact.field, fact.value);
    }
  } else {
    _filler.beginRow(key, {PhotoStore::imageInfo});
  }
  // The roll's files lie in the folder in which the folder of its thumbnails lies.
  const auto thumbnail =
      text(has(ImageValue::thumbnailPath) ? ImageValue::thumbnailPath : ImageValue::thumbnailFile,
           _imageText);
  const auto name = text(ImageValue::fileName, _otherText);
  if (thumbnail && name) {
    const std::string folder = path::withoutLastComponent(path::withoutLastComponent(*thumbnail));
    putJoined(PhotoField::imagePath, path::join(path::join(_directory, folder), *name));
  }
  _filler.endRow();
}

void CodedImageReader::fillPhoto() {
  countBytes();
  const std::uint32_t key =
      has(ImageValue::imageKey) ? static_cast<std::uint32_t>(number(ImageValue::imageKey)) : 0;
  _filler.beginRow(key, {PhotoStore::imageInfo, PhotoStore::info, PhotoStore::attributes,
                         PhotoStore::attributesRecord});
  const auto image = text(ImageValue::imageFile, _imageText);
  if (image) {
    putFile(PhotoField::imagePath, *image);
  }
  const auto original = text(ImageValue::originalFile, _otherText);
  if (original || image) {
    putFile(PhotoField::imageOriginalPath, original ? *original : *image);
  }
  const auto thumbnail =
      text(has(ImageValue::thumbnailPath) ? ImageValue::thumbnailPath : ImageValue::thumbnailFile,
           _otherText);
  if (thumbnail) {
    putFile(PhotoField::imageThumbnailPath, *thumbnail);
  }
  putImageSize();
  putFileName(image);
  put(PhotoField::rotation, ImageValue::rotation);
  put(PhotoField::date, ImageValue::date);
  for (const PlainFact& fact : kPhotoFacts) {
    put(fact.field, fact.value);
  }
  putKeywords();
  _filler.endRow();
}

/// Puts the value unchanged, where the record has it.
void CodedImageReader::put(PhotoField field, ImageValue value) {
  if (!has(value)) {
    return;
  }
  _filler.addName(static_cast<std::uint32_t>(indexOf(field)));
  switch (value) {
    case ImageValue::date:
    case ImageValue::modificationDate:
    case ImageValue::archiveDate:
    case ImageValue::metadataDate:
      _filler.putDate(Date{std::bit_cast<double>(bigEndian<std::uint64_t>(bytes(value).data()))});
      return;
    case ImageValue::rotation:
      _filler.putValue(floatAt(bytes(value).data()));
      return;
    case ImageValue::fileSize:
      _filler.putValue(bigEndian<std::uint64_t>(bytes(value).data()));
      return;
    case ImageValue::cameraData:
      _filler.putBytes(bytes(value));
      return;
    default:
      _filler.putText(*text(value, _otherText));
  }
}

void CodedImageReader::putFile(PhotoField field, std::string_view fileInDirectory) {
  if (isPlainRelative(fileInDirectory)) {
    _filler.addName(static_cast<std::uint32_t>(indexOf(field)));
    _filler.putPathInRoot(static_cast<std::uint32_t>(indexOf(field)), fileInDirectory);
  } else {
    putJoined(field, path::join(_directory, fileInDirectory));
  }
}

void CodedImageReader::putJoined(PhotoField field, std::string_view path) {
  const auto number = static_cast<std::uint32_t>(indexOf(field));
  const std::string_view root = table()->root();
  _filler.addName(number);
  if (path.starts_with(root)) {
    _filler.putPathInRoot(number, path.substr(root.size()));
  } else {
    _filler.putPath(number, path);
  }
}

void CodedImageReader::putImageSize() {
  if (!has(ImageValue::imageSize)) {
    return;
  }
  const float width = floatAt(bytes(ImageValue::imageSize).data());
  const float height = floatAt(bytes(ImageValue::imageSize).data() + sizeof(float));
  _filler.addName(static_cast<std::uint32_t>(indexOf(PhotoField::imageHeight)));
  _filler.putValue(height);
  _filler.addName(static_cast<std::uint32_t>(indexOf(PhotoField::imageWidth)));
  _filler.putValue(width);
}

void CodedImageReader::putFileName(std::optional<std::string_view> imageFile) {
  const auto own = text(ImageValue::fileName, _otherText);
  if (own || imageFile) {
    _filler.addName(static_cast<std::uint32_t>(indexOf(PhotoField::fileName)));
    _filler.putText(path::lastComponent(own ? *own : *imageFile));
  }
}

void CodedImageReader::putKeywords() {
  _numbers.clear();
  if (has(ImageValue::keywordKeys) && _keywords) {
    for (std::string_view keys = bytes(ImageValue::keywordKeys); !keys.empty();
         keys.remove_prefix(sizeof(std::uint32_t))) {
      const std::uint32_t number = keywordNumber(bigEndian<std::uint32_t>(keys.data()));
      if (number != kUnknown) {
        _numbers.push_back(number);
      }
    }
  }
  _filler.addName(static_cast<std::uint32_t>(indexOf(PhotoField::keywords)));
  _filler.putObjects(_numbers);
}

std::uint32_t CodedImageReader::keywordNumber(std::uint32_t key) {
  const std::uint32_t next = static_cast<std::uint32_t>(_keywordNumbers.size());
  const std::uint32_t place = _keywordPlaces.add(key, next);
  if (place == next) {
    const Ref<Keyword> keyword = _keywords->keywordForKeyNumber(static_cast<std::int32_t>(key));
    _keywordNumbers.push_back(keyword ? _filler.addObject(keyword) : kUnknown);
  }
  return _keywordNumbers[place];
}

}  // namespace mrziphoto

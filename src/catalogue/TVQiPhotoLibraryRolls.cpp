// The roll section of a coded catalogue.

#include <array>

#include "../stream/TVQStreamData.h"
#include "../values/Array.h"
#include "../values/Dictionary.h"
#include "TVQiPhotoLibrary.h"
#include "detail/CodedFields.h"
#include "detail/Reading.h"

namespace mrziphoto {
namespace {

/// What one roll record says.
class RollRecord {
 public:
  /// Reads the record at the stream's position. It ends with the first field that begins at its end
  /// or behind it. Throws NegativeSize, and NSException where a typed read does.
  void read(TVQiPhotoCodedStreamData& stream) {
    const std::uint32_t start = stream.offsetInData();
    const std::int32_t size = stream.readInt();
    if (size < 0) {
      throw NegativeSize{"roll record", start, size};
    }
    const std::uint64_t end = std::uint64_t{start} + static_cast<std::uint32_t>(size);
    while (!stream.isAtEndOfData() && stream.offsetInData() < end) {
      readField(stream);
    }
  }

  [[nodiscard]] bool isRoll() const { return value(RollValue::rollKey).intValue() != 0; }

  /// The record in the form in which album data describes albums.
  [[nodiscard]] Dictionary albumData() const {
    const Value& keys = value(RollValue::photoKeys);
    return {{Album::kAlbumName, orEmpty(value(RollValue::name))},
            {Album::kAlbumKey, value(RollValue::rollKey)},
            {Album::kAnnotation, orEmpty(value(RollValue::comment))},
            {Album::kKeyList, keys.isNothing() ? Value(make<Array>()) : keys}};
  }

 private:
  static Value orEmpty(const Value& text) { return text.isNothing() ? Value("") : text; }

  [[nodiscard]] const Value& value(RollValue which) const {
    return _values[static_cast<std::size_t>(which)];
  }

  void readField(TVQiPhotoCodedStreamData& stream) {
    const std::uint32_t start = stream.offsetInData();
    const std::uint32_t code = stream.readCode();
    const std::int32_t size = stream.readInt();
    if (const CodedRollField* field = findCode(kCodedRollFields, code)) {
      refuseNegativeSize(field->read, size, stream);
      _values[static_cast<std::size_t>(field->keep)] = readValue(*field, start, size, stream);
    } else {
      NegativeSize::refuse("roll field", code, start, size);
      seekBehind(stream, start, std::uint64_t{8} + static_cast<std::uint32_t>(size));
    }
  }

  /// Reads the value of the field at `start`, whose code and size have been read, and leaves the
  /// stream where the next field is looked for.
  static Value readValue(const CodedRollField& field, std::uint32_t start, std::int32_t size,
                         TVQiPhotoCodedStreamData& stream) {
    const auto bytes = static_cast<std::uint32_t>(size);
    switch (field.read) {
      case CodedRead::intNumber:
        return bytes == 4 ? stream.readInt() : 0;
      case CodedRead::text:
        return stream.readUTF16StringWithCharacterCount(bytes / 2);
      case CodedRead::intArray:
        return readKeys(stream, bytes / 4);
      case CodedRead::doubleNumber:
        stream.seekToDataOffset(start + 4);
        return Date{stream.readCodedDouble()};
      case CodedRead::archive: {
        stream.seekToDataOffset(start + 4);
        Value root = stream.readCodedArchive();
        seekBehind(stream, start, std::uint64_t{8} + bytes);
        return root;
      }
      default:
        if (bytes == 4) {
          // Every value of that size is read with the size.
          static_cast<void>(stream.readInt());
        }
        return stream.readShort();
    }
  }

  static Value readKeys(TVQiPhotoCodedStreamData& stream, std::uint32_t count) {
    // Taken as a whole first, so that an absurd count fails before room is made for it.
    TVQStreamData numbers(stream.readDataWithLength(count * 4));
    numbers.setShouldSwapMode(TVQStreamData::bigEndian);
    const Ref<Array> keys = make<Array>();
    keys->reserve(count);
    while (!numbers.isAtEndOfData()) {
      keys->append(numbers.readInt());
    }
    return keys;
  }

  std::array<Value, static_cast<std::size_t>(RollValue::count)> _values;
};

}  // namespace

void TVQiPhotoLibrary::_readRollDataFromStreamRange(const TVQiPhotoCodedStreamData& stream,
                                                    std::uint32_t location, std::uint32_t length,
                                                    Reading& reading) {
  TVQiPhotoCodedStreamData records(stream.dataCutToRange(location, length));
  records.setShouldSwapMode(TVQStreamData::bigEndian);
  // In front stands a number of unknown meaning.
  records.seekToDataOffset(4);
  try {
    while (!records.isAtEndOfData()) {
      RollRecord record;
      record.read(records);
      if (record.isRoll() && hasRoomForRoll(reading.readRolls)) {
        addRoll(Album::initWithDictionary<RollAlbum>(record.albumData()));
        ++reading.readRolls;
      }
    }
  } catch (NegativeSize& size) {
    // The sections behind this one are known to begin at its end.
    size.offset += location;
    reading.rollsEnd = {size.description(), size.offset};
  }
}

}  // namespace mrziphoto

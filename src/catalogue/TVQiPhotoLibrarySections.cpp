// The walk over a catalogue file's sections.

#include <algorithm>
#include <iterator>

#include "../archive/NSUnarchiver.h"
#include "../files/FileFailure.h"
#include "../stream/TVQStreamData.h"
#include "../values/Log.h"
#include "../values/NSException.h"
#include "../values/detail/Formatted.h"
#include "../values/detail/Generation.h"
#include "TVQiPhotoLibrary.h"
#include "detail/CodedFields.h"
#include "detail/KeywordStore.h"
#include "detail/Reading.h"

namespace mrziphoto {
namespace {

/// True when an image record stands in the place of a section: one with the code of those before
/// it, or known by its first field. The stream is right behind the size word.
bool isImageRecord(TVQiPhotoCodedStreamData& stream, std::uint32_t code,
                   std::optional<std::uint32_t> recordCode) {
  return code == recordCode ||
         (stream.remaining() >= 4 &&
          findCode(kCodedImageFields, static_cast<std::uint32_t>(stream.peekInt())) != nullptr);
}

}  // namespace

struct TVQiPhotoLibrary::Section {
  std::uint32_t start;
  std::uint32_t code;
  std::int32_t size;
};

bool TVQiPhotoLibrary::decode(TVQiPhotoCodedStreamData& stream) {
  try {
    const Generation& generation = Generation::of(_version);
    if (!generation.isCoded) {
      if (generation.isSupported) {
        log("New iPhoto library version %d", _version);
      }
      return true;
    }
    stream.setShouldSwapMode(TVQStreamData::bigEndian);
    stream.seekToDataOffset(0);
    if (generation.hasArchivedHeader) {
      readArchivedHeader(stream);
    }
    decodeSections(stream);
    return true;
  } catch (const FileException&) {
    throw;
  } catch (const NSException& exception) {
    noticeDamage(_loadedFrom, exception);
    return false;
  }
}

void TVQiPhotoLibrary::readArchivedHeader(TVQiPhotoCodedStreamData& stream) {
  const auto reader = NSUnarchiver::initForReadingWithData(stream.data());
  if (!reader) {
    NSException::raise(kNSInvalidArgumentException,
                       detail::formatted("'{}' is no archive", _loadedFrom));
  }
  _version = reader->decodeValueOfObjCType("i").intValue();
  *_keywords = KeywordStore(reader->decodeObject());
  stream.seekToDataOffset(static_cast<std::uint32_t>(reader->cursor()));
  // Two values of unknown meaning.
  static_cast<void>(stream.readShort());
  static_cast<void>(stream.readInt());
}

void TVQiPhotoLibrary::decodeSections(TVQiPhotoCodedStreamData& stream) {
  Reading reading;
  try {
    while (!stream.isAtEndOfData() && !reading.end) {
      decodeSection(stream, reading);
    }
  } catch (const NegativeSize& size) {
    reading.end = {size.description(), size.offset};
  }
  takeImageRecords(reading);
  if (reading.countWithoutTable) {
    reading.promisedRecords += reading.imageRecordCount;
  }
  for (const auto& damage : {reading.rollsEnd, reading.end}) {
    if (damage) {
      log("Damaged iPhoto library %@: %@", _loadedFrom, damage->what);
    }
  }
  std::ranges::move(reading.notices(_loadedFrom), std::back_inserter(_notices));
  noticeLeftOut(_loadedFrom);
  if (reading.readRolls > numberOfRolls()) {
    _notices.push_back(
        {detail::formatted("the catalogue '{}' has {} rolls, of which {} belong to its archive "
                           "album; the others were left out",
                           _loadedFrom, reading.readRolls, numberOfRolls()),
         _loadedFrom,
         {}});
  }
}

void TVQiPhotoLibrary::decodeSection(TVQiPhotoCodedStreamData& stream, Reading& reading) {
  Section section{};
  section.start = stream.offsetInData();
  section.code = stream.readCode();
  section.size = stream.readInt();
  const CodedSection* known = findCode(kCodedSections, section.code);
  if (known != nullptr && known->read != CodedRead::none) {
    refuseNegativeSize(known->read, section.size, stream);
  }
  NegativeSize::refuse("section", section.code, section.start, section.size);
  if (known == nullptr && isImageRecord(stream, section.code, reading.recordCode)) {
    reading.uncountedRecords.add(section.start);
  }
  if (section.size == 4) {
    static_cast<void>(stream.readInt());
  }
  readSection(stream, section, reading);
  const std::uint64_t length = std::uint64_t{8} + static_cast<std::uint32_t>(section.size);
  seekBehind(stream, section.start, length);
  if (section.code == kImageTableSection) {
    readImageRecords(stream, reading);
  }
  if (section.start + length > stream.length()) {
    reading.end = {
        detail::formatted("the section {} at offset {}, of {} bytes, reaches beyond the end of the "
                          "file, which has {}",
                          fourCharacterText(section.code), section.start, section.size,
                          stream.length()),
        section.start};
  }
}

void TVQiPhotoLibrary::readSection(TVQiPhotoCodedStreamData& stream, const Section& section,
                                   Reading& reading) {
  const std::uint32_t valueStart = stream.offsetInData();
  const auto length = static_cast<std::uint32_t>(section.size);
  stream.seekToDataOffset(section.start + 4);
  switch (section.code) {
    case kVersionSection: {
      const std::int32_t version = stream.readCodedInt();
      if (version != _version) {
        NSException::raise(
            kNSInternalInconsistencyException,
            detail::formatted("iPhoto library version mismatch {} vs. {}", _version, version));
      }
      break;
    }
    case kKeywordSection:
      *_keywords = KeywordStore(stream.readCodedArchive());
      break;
    case kImageCountSection:
      if (reading.countWithoutTable) {
        reading.promisedRecords += reading.imageRecordCount;
      }
      reading.imageRecordCount = static_cast<std::uint32_t>(stream.readCodedInt());
      reading.countWithoutTable =
          reading.imageRecordCount > 0 ? std::optional(section.start) : std::nullopt;
      break;
    case kDateSection:
      static_cast<void>(stream.readCodedDouble());
      break;
    case kAlbumSection:
      _readAlbumDataFromStreamRange(stream, valueStart, length, reading);
      break;
    case kRollSection:
      _readRollDataFromStreamRange(stream, valueStart, length, reading);
      break;
    default:
      break;
  }
}

}  // namespace mrziphoto

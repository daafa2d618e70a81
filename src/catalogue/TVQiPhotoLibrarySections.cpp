// The walk over a catalogue file's sections.

#include "../platform/Log.h"
#include "../platform/NSException.h"
#include "../platform/NSUnarchiver.h"
#include "../stream/TVQiPhotoCodedStreamData.h"
#include "CodedFields.h"
#include "TVQiPhotoLibrary.h"
#include "TVQiPhotoLibraryIndexesPrivate.h"

namespace mrziphoto {
namespace {

constexpr std::int32_t kFirstVersionRead = 15;
constexpr std::int32_t kLastArchiveHeadedVersion = 50;
constexpr std::int32_t kLastVersionRead = 150;

}  // namespace

struct TVQiPhotoLibrary::Section {
  std::uint32_t start;
  std::uint32_t code;
  std::int32_t size;
};

bool TVQiPhotoLibrary::initWithData(const Data& bytes) {
  try {
    if (_version > kLastVersionRead) {
      log("New iPhoto library version %d", _version);
    }
    if (_version < kFirstVersionRead || _version > kLastVersionRead) {
      return true;
    }
    TVQiPhotoCodedStreamData stream(bytes);
    stream.setShouldSwapMode(TVQStreamData::bigEndian);
    if (_version <= kLastArchiveHeadedVersion) {
      readArchivedHeader(stream);
    }
    decodeSections(stream);
    return true;
  } catch (const NSException& exception) {
    log("%@ - %@ = %@", exception.name(), exception.reason(), exception.userInfo());
    return false;
  }
}

void TVQiPhotoLibrary::readArchivedHeader(TVQiPhotoCodedStreamData& stream) {
  const auto reader = NSUnarchiver::initForReadingWithData(stream.data());
  if (!reader) {
    NSException::raise(kNSInvalidArgumentException, "'%@' is no archive", _loadedFrom);
  }
  _version = reader->decodeValueOfObjCType("i").intValue();
  setKeywordStore(reader->decodeObject());
  stream.seekToDataOffset(static_cast<std::uint32_t>(reader->cursor()));
  // Two values that mean nothing to anybody.
  static_cast<void>(stream.readShort());
  static_cast<void>(stream.readInt());
}

void TVQiPhotoLibrary::setKeywordStore(const Value& store) {
  _keywords = store;
  _keywordList = {};
  _keywordIndex.reset();
  if (const Ref<Array> list = store.array()) {
    _keywords = {};
    _keywordList = List<Keyword>::makeEmpty();
    for (const Value& element : *list) {
      if (const Ref<Keyword> keyword = element.object<Keyword>()) {
        _keywordList.append(keyword);
      }
    }
  }
}

void TVQiPhotoLibrary::decodeSections(TVQiPhotoCodedStreamData& stream) {
  std::uint32_t imageRecordCount = 0;
  while (!stream.isAtEndOfData()) {
    Section section{};
    section.start = stream.offsetInData();
    section.code = stream.readCode();
    section.size = stream.readInt();
    if (section.size == 4) {
      static_cast<void>(stream.readInt());
    }
    if (section.size < 0) {
      // The next section would begin in bytes that were read already.
      return;
    }
    readSection(stream, section, imageRecordCount);
    const std::uint64_t next =
        std::uint64_t{section.start} + 8 + static_cast<std::uint32_t>(section.size);
    stream.seekToDataOffset(static_cast<std::uint32_t>(std::min<std::uint64_t>(next, 0xFFFFFFFF)));
    if (section.code == kImageTableSection) {
      readImageRecords(stream, imageRecordCount);
    }
  }
}

void TVQiPhotoLibrary::readSection(TVQiPhotoCodedStreamData& stream, const Section& section,
                                   std::uint32_t& imageRecordCount) {
  const std::uint32_t valueStart = stream.offsetInData();
  const auto length = static_cast<std::uint32_t>(section.size);
  stream.seekToDataOffset(section.start + 4);
  switch (section.code) {
    case kVersionSection: {
      const std::int32_t version = stream.readCodedInt();
      if (version != _version) {
        NSException::raise(kNSInternalInconsistencyException,
                           "iPhoto library version mismatch %d vs. %d", _version, version);
      }
      break;
    }
    case kKeywordSection:
      setKeywordStore(stream.readCodedArchive());
      break;
    case kImageCountSection:
      imageRecordCount = static_cast<std::uint32_t>(stream.readCodedInt());
      break;
    case kDateSection:
      static_cast<void>(stream.readCodedDouble());
      break;
    case kAlbumSection:
      _readAlbumDataFromStreamRange(stream, valueStart, length);
      break;
    case kRollSection:
      _readRollDataFromStreamRange(stream, valueStart, length);
      break;
    default:
      break;
  }
}

}  // namespace mrziphoto

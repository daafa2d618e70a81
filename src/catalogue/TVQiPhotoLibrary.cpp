#include "TVQiPhotoLibrary.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

#include "../archive/NSUnarchiver.h"
#include "../files/FileManager.h"
#include "../files/Path.h"
#include "../files/detail/OpenFile.h"
#include "../photos/RecordDatabase.h"
#include "../stream/TVQStreamData.h"
#include "../stream/detail/FourCharacterCode.h"
#include "../stream/detail/StreamedFile.h"
#include "../values/Limits.h"
#include "../values/Log.h"
#include "../values/NSException.h"
#include "../values/detail/Formatted.h"
#include "../values/detail/Generation.h"
#include "detail/CodedFields.h"
#include "detail/KeywordStore.h"
#include "detail/RecordIndex.h"

namespace mrziphoto {
namespace {

constexpr std::string_view kProbe = "iPhotoVersionForFilename:";
// The version stands behind the header of an archive or of the first section, well within these.
constexpr std::size_t kProbedBytes = 4096;

std::int32_t archivedVersion(NSUnarchiver& reader, const std::string& path) {
  try {
    return reader.decodeValueOfObjCType("i").intValue();
  } catch (const NSException& exception) {
    log("Can't determine archive version of %@ %@ - %@ %@", kProbe, path, exception.name(),
        exception.reason());
    return 0;
  }
}

std::int32_t codedVersion(TVQiPhotoCodedStreamData& stream, const std::string& path) {
  stream.setShouldSwapMode(TVQStreamData::bigEndian);
  const std::uint32_t code = stream.readCode();
  if (code != kVersionSection) {
    log("Can't determine stream version of %@ %@ - wrong header code %@", kProbe, path,
        fourCharacterText(code));
    return 0;
  }
  try {
    return stream.readCodedInt();
  } catch (const NSException& exception) {
    log("Can't determine stream version of %@ %@ - %@ %@", kProbe, path, exception.name(),
        exception.reason());
    return 0;
  }
}

/// The version at the front of the stream. Moves the stream.
std::int32_t versionOf(TVQiPhotoCodedStreamData& stream, const std::string& path) {
  stream.seekToDataOffset(0);
  const auto reader = NSUnarchiver::initForReadingWithData(stream.data());
  return reader ? archivedVersion(*reader, path) : codedVersion(stream, path);
}

/// Opens a catalogue file for reading: as a whole where it begins with an archive, else through a
/// window. Throws FileException for what cannot be read.
TVQiPhotoCodedStreamData openCatalogue(const std::string& path) {
  FileFailure failure;
  std::unique_ptr<detail::OpenFile> file = detail::OpenFile::atPath(path, &failure);
  if (!file) {
    throw FileException(std::move(failure));
  }
  const bool isArchive =
      NSUnarchiver::initForReadingWithData(file->read(0, kProbedBytes)) != nullptr;
  if (!isArchive && file->mayBeReadWhole()) {
    return TVQiPhotoCodedStreamData(std::make_shared<StreamedFile>(std::move(file), path));
  }
  const std::optional<Data> bytes = file->contents(&failure);
  if (!bytes) {
    throw FileException(std::move(failure));
  }
  return TVQiPhotoCodedStreamData(*bytes);
}

}  // namespace

const Class TVQiPhotoLibrary::kClass{"TVQiPhotoLibrary"};
const std::int32_t TVQiPhotoLibrary::kLastCodedVersion = lastVersionWith(&Generation::isCoded);

TVQiPhotoLibrary::TVQiPhotoLibrary() : _keywords(std::make_unique<KeywordStore>()) {}

TVQiPhotoLibrary::~TVQiPhotoLibrary() {
  // No record or album may keep a reference to a database that could go before it.
  setDatabase(nullptr);
  removeAllAlbums();
}

Ref<TVQiPhotoLibrary> TVQiPhotoLibrary::init() {
  Ref<TVQiPhotoLibrary> library = Ref<TVQiPhotoLibrary>::adopt(new TVQiPhotoLibrary);
  library->_imageRecRefs = OwnedList<ImageRecRef>::makeEmpty();
  *library->_keywords = KeywordStore::emptyList();
  return library;
}

std::int32_t TVQiPhotoLibrary::iPhotoVersionForFilename(const std::string& path) {
  TVQiPhotoCodedStreamData head(FileManager::readHead(path, kProbedBytes));
  return versionOf(head, path);
}

Ref<TVQiPhotoLibrary> TVQiPhotoLibrary::initWithContentsOfFile(const std::string& path,
                                                               Notice* failure) {
  const std::string folder = path::withoutLastComponent(path);
  const std::string file =
      FileManager::exists(path) ? path : path::join(folder, library_file::kCatalogue);
  TVQiPhotoCodedStreamData stream = openCatalogue(file);
  Ref<TVQiPhotoLibrary> library = Ref<TVQiPhotoLibrary>::adopt(new TVQiPhotoLibrary);
  library->_loadedFrom = file;
  bool isDecoded = false;
  try {
    library->_version = versionOf(stream, file);
    isDecoded = library->decode(stream);
  } catch (const FileException&) {
    throw;
  } catch (const NSException& exception) {
    library->noticeDamage(file, exception);
  } catch (const std::bad_alloc&) {
    throw FileException(
        {FileFailure::Cause::tooLarge, file, "there is not enough memory for what it holds"});
  }
  if (isDecoded && Generation::of(library->libraryVersion()).hasAlbumData) {
    try {
      library->loadFromXML(folder);
    } catch (const NSException& exception) {
      library->noticeDamage(path::join(folder, library_file::kAlbumData), exception);
      isDecoded = false;
    }
  }
  if (isDecoded) {
    return library;
  }
  if (failure != nullptr) {
    *failure = library->_notices.back();
  }
  return {};
}

void TVQiPhotoLibrary::noticeDamage(const std::string& file, const NSException& exception) {
  log("%@ - %@ = %@", exception.name(), exception.reason(), exception.userInfo());
  _notices.push_back(
      {'\'' + file + "' is damaged: " + exception.reason(), file, exception.offset()});
}

Ref<TVQiPhotoLibrary> TVQiPhotoLibrary::initWithData(const Data& bytes, std::int32_t version) {
  Ref<TVQiPhotoLibrary> library = Ref<TVQiPhotoLibrary>::adopt(new TVQiPhotoLibrary);
  library->_version = version;
  TVQiPhotoCodedStreamData stream(bytes);
  return library->decode(stream) ? library : nullptr;
}

bool TVQiPhotoLibrary::hasRoomForAlbum() {
  const bool hasRoom = numberOfAlbums() < Limits::current().albums;
  _albumsLeftOut += hasRoom ? 0 : 1;
  return hasRoom;
}

bool TVQiPhotoLibrary::hasRoomForRoll(std::uint32_t taken) {
  const bool hasRoom = taken < Limits::current().albums;
  _rollsLeftOut += hasRoom ? 0 : 1;
  return hasRoom;
}

void TVQiPhotoLibrary::noticeLeftOut(const std::string& file) {
  const auto tell = [&](std::string_view what, std::uint32_t& leftOut) {
    if (const std::uint32_t count = std::exchange(leftOut, 0); count > 0) {
      _notices.push_back(
          {detail::formatted("'{}' has more than {} {}, and {} of them were left out", file,
                             Limits::current().albums, what, count),
           file,
           {}});
      log("%@", _notices.back().sentence);
    }
  };
  tell("albums", _albumsLeftOut);
  tell("rolls", _rollsLeftOut);
}

const std::string& TVQiPhotoLibrary::directory() const {
  if (!_directory) {
    _directory =
        _database != nullptr ? _database->directory() : path::withoutLastComponent(_loadedFrom);
  }
  return *_directory;
}

void TVQiPhotoLibrary::setDatabase(RecordDatabase* database) {
  _database = database;
  for (const List<ImageRecRef>* records :
       {&_imageRecRefs, &_photoImageRecRefs, &_rollImageRecRefs}) {
    for (const Ref<ImageRecRef>& record : *records) {
      record->setDatabase(database);
    }
  }
  for (const Ref<Album>& album : _albums) {
    album->setDatabase(database);
  }
  if (_archiveAlbum) {
    _archiveAlbum->setDatabase(database);
  }
}

std::string TVQiPhotoLibrary::description() const {
  // This text is as long as the list of photos; the limit is there for what a few bytes make long.
  constexpr std::uint64_t kBytesAPhoto = 1024;
  Limits limits = Limits::current();
  limits.description = std::max(limits.description, kBytesAPhoto * _imageRecRefs.size());
  const Limits::Scope scope(limits);
  return detail::formatted(
      "version = {}, nextImageKey = {}, nextRollKey = {}, flag1 = {}, flag2 = {}, "
      "imagesDate1 = {}, imageRecRefs = {}, keywords = {}, nextKeywordKey = {}",
      _version, _nextImageKey, _nextRollKey, flag1 ? 1 : 0, flag2 ? 1 : 0, _imagesDate1,
      _imageRecRefs.value(), _keywords->value(), _nextKeywordKey);
}

}  // namespace mrziphoto

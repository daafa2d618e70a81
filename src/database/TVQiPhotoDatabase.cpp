#include "TVQiPhotoDatabase.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <utility>

#include "../files/FileFailure.h"
#include "../files/FileManager.h"
#include "../files/Path.h"
#include "../resources/Bundle.h"
#include "../resources/UserDefaults.h"
#include "../resources/Workspace.h"
#include "../values/Log.h"
#include "../values/NSException.h"
#include "../values/detail/Formatted.h"

namespace mrziphoto {
namespace {

const std::string kDumpDefault = "DumpiPhotoDatabase";

// Catalogue versions at which the library's files change.
constexpr std::int32_t kOldestSupported = 15;
constexpr std::int32_t kFirstWithLibrary6 = 51;
constexpr std::int32_t kLastWithDirectories = 100;

/// A data version and the lowest catalogue version that has it.
struct DataVersion {
  std::int32_t lowest;
  std::string_view text;
};

// The generations below these are told apart by the files in the folder.
constexpr std::array kDataVersions{
    DataVersion{150, "80"},
    DataVersion{101, "70"},
    DataVersion{51, "60"},
    DataVersion{25, "50"},
};
constexpr std::int32_t kLowestWithThumbnailFiles = 13;
// The first data version whose albums stand in the catalogue and not in files of their own.
constexpr std::int32_t kFirstWithoutAlbumFiles = 50;

/// True for the folder itself, too, and whatever links either is reached by.
bool isInFolder(const std::string& place, const std::string& folder) {
  const auto real = [](const std::string& each) {
    std::error_code error;
    return std::filesystem::weakly_canonical(each, error) / "";
  };
  return real(place).string().starts_with(real(folder).string());
}

}  // namespace

const Class TVQiPhotoDatabase::kClass{"TVQiPhotoDatabase"};

TVQiPhotoDatabase::~TVQiPhotoDatabase() {
  // Before the first of its parts goes.
  letGoOfRecords();
}

std::string TVQiPhotoDatabase::defaultDirectory() {
  // The environment may name a home folder that is relative.
  std::error_code ignored;
  const std::string home = FileManager::homeFolder();
  const std::string absolute = std::filesystem::absolute(home, ignored).string();
  return path::join(path::join(absolute.empty() ? home : absolute, "Pictures"), "iPhoto Library");
}

Ref<TVQiPhotoDatabase> TVQiPhotoDatabase::iPhotoDatabase() {
  return initWithContentsOfDirectory(defaultDirectory());
}

Ref<TVQiPhotoDatabase> TVQiPhotoDatabase::initWithContentsOfDirectory(const std::string& path,
                                                                      const OpeningOptions& options,
                                                                      OpeningFailure* failure) {
  Ref<TVQiPhotoDatabase> database = Ref<TVQiPhotoDatabase>::adopt(new TVQiPhotoDatabase);
  database->_rootDirectory = path::standardized(path);
  if (options.limits || options.stayInside || options.mayStartThreads) {
    database->_rules = ReadingRules{
        options.limits, options.stayInside ? path::resolvingSymlinks(database->_rootDirectory) : "",
        options.mayStartThreads};
  }
  const ReadingRules::Scope scope(database->readingRules());
  try {
    database->_loadWithContentsOfRootDirectory();
  } catch (const NSException& exception) {
    log("%@ - %@ = %@", exception.name(), exception.reason(), exception.userInfo());
    if (failure != nullptr) {
      *failure = database->failureOf(exception);
    }
    return {};
  }
  if (UserDefaults::boolForKey(kDumpDefault)) {
    database->writeDump();
  }
  return database;
}

/// What ended loading: that photos could not be read goes before what came of it.
OpeningFailure TVQiPhotoDatabase::failureOf(const NSException& exception) const {
  return _photosFailure ? *_photosFailure
                        : OpeningFailure::of(_rootDirectory, exception, _foundVersion);
}

void TVQiPhotoDatabase::writeDump() const {
  const std::string folder = FileManager::temporaryFolder();
  const std::string file =
      path::join(folder, detail::formatted("iPhoto-v{}", iPhotoLibraryVersion()));
  if (isInFolder(folder, _rootDirectory)) {
    log("No iPhoto database dump was written to %@, which lies in the library", file);
    return;
  }
  if (const std::optional<std::string> description = catalogueDescription()) {
    FileManager::writeAtomically(file, *description);
  }
  log("Wrote iPhoto database dump to %@", file);
}

std::string TVQiPhotoDatabase::inLibrary(std::string_view name) const {
  return path::join(_rootDirectory, name);
}

std::string TVQiPhotoDatabase::libraryDataFilename() const {
  std::string file = inLibrary("Library.iPhoto");
  return FileManager::exists(file) ? file : inLibrary("Library.data");
}

std::string TVQiPhotoDatabase::library6DataFilename() const { return inLibrary("Library6.iPhoto"); }

std::string TVQiPhotoDatabase::currentLibraryDataFilename() const {
  return iPhotoLibraryVersion() >= kFirstWithLibrary6 ? library6DataFilename()
                                                      : libraryDataFilename();
}

std::string TVQiPhotoDatabase::directoriesDataFilename() const { return inLibrary("Dir.data"); }

std::string TVQiPhotoDatabase::albumDataDirectory() const { return inLibrary("Albums"); }

std::string TVQiPhotoDatabase::albumDataFile() const { return inLibrary("AlbumData.xml"); }

std::optional<Date> TVQiPhotoDatabase::_timestampForFilename(const std::string& path) {
  return FileManager::modificationDate(path);
}

void TVQiPhotoDatabase::_loadWithContentsOfRootDirectory() {
  std::string file = libraryDataFilename();
  _photosFailure.reset();
  _foundVersion = 0;
  const std::int32_t version =
      FileManager::isFile(file) ? TVQiPhotoLibrary::iPhotoVersionForFilename(file) : 0;
  _foundVersion = version;
  if (version < kOldestSupported) {
    NSException::raise(
        kNSInvalidArgumentException,
        detail::formatted("iPhoto Library not supported before iPhoto 4 for '{}'", file));
  }
  if (version >= kFirstWithLibrary6) {
    file = library6DataFilename();
  }
  loadCatalogue(file);
  if (version <= kLastWithDirectories) {
    loadDirectories();
  } else {
    _directories = TVQiPhotoDirectories::init();
  }
  _loadAlbumData();

  if (_library) {
    _library->setDatabase(this);
  }
  if (_directories) {
    _directories->setDatabase(this);
  }
  if (_photoLibrary) {
    _photoLibrary->setDatabase(this);
  }
}

void TVQiPhotoDatabase::loadCatalogue(const std::string& path) {
  if (!FileManager::isFile(path)) {
    NSException::raise(kNSInvalidArgumentException,
                       detail::formatted("iPhoto Library does not exist at '{}'", path));
  }
  // Taken before the file is read: one that is replaced meanwhile is then seen to have changed.
  const std::optional<Date> timestamp = _timestampForFilename(path);
  Notice damage;
  _library = TVQiPhotoLibrary::initWithContentsOfFile(path, &damage);
  libraryTimestamp = timestamp;
  if (!_library) {
    _photosFailure = OpeningFailure::ofDamage(damage.sentence, damage.file);
    _notices.push_back(std::move(damage));
  } else if (_library->libraryVersion() < kOldestSupported) {
    // "Library.iPhoto" told a version; of a catalogue that tells none nothing is decoded.
    _photosFailure =
        OpeningFailure::ofDamage("the catalogue '" + path + "' does not tell its version", path);
  } else if (_library->albumDataFailure() &&
             _library->libraryVersion() > TVQiPhotoLibrary::kLastCodedVersion) {
    _photosFailure = OpeningFailure::ofFileFailure(*_library->albumDataFailure());
  }
}

void TVQiPhotoDatabase::loadDirectories() {
  const std::string file = directoriesDataFilename();
  if (!FileManager::isFile(file)) {
    NSException::raise(kNSInternalInconsistencyException,
                       detail::formatted("iPhoto Library component does not exist at '{}'", file));
  }
  const std::optional<Date> timestamp = _timestampForFilename(file);
  std::string reason = '\'' + file + "' is damaged";
  std::optional<std::size_t> offset;
  try {
    _directories = TVQiPhotoDirectories::initWithData(FileManager::readContents(file));
  } catch (const FileException& exception) {
    log("%@ - %@ = %@", exception.name(), exception.reason(), exception.userInfo());
    reason = exception.reason();
  } catch (const NSException& exception) {
    log("%@ - %@ = %@", exception.name(), exception.reason(), exception.userInfo());
    reason += ": " + exception.reason();
    offset = exception.offset();
  }
  if (!_directories) {
    _notices.push_back({"the folders of the photos are not known: " + reason, file, offset});
  }
  directoriesTimestamp = timestamp;
}

void TVQiPhotoDatabase::_loadAlbumData() {
  if (Value(iPhotoDataVersion()).intValue() < kFirstWithoutAlbumFiles) {
    _loadV4AlbumData();
  }
}

const std::string& TVQiPhotoDatabase::iPhotoVersion() const {
  if (!_iPhotoVersion) {
    const std::optional<std::string> application = Workspace::fullPathForApplication("iPhoto");
    const auto bundle = application ? Bundle::withPath(*application) : nullptr;
    _iPhotoVersion =
        bundle
            ? bundle->infoDictionaryValue("CFBundleShortVersionString").text().value_or("Unknown")
            : "iPhoto Not Present";
  }
  return *_iPhotoVersion;
}

std::int32_t TVQiPhotoDatabase::iPhotoLibraryVersion() const {
  return _library ? _library->libraryVersion() : 0;
}

std::string TVQiPhotoDatabase::iPhotoDataVersion() const {
  if (_iPhotoDataVersion) {
    return *_iPhotoDataVersion;
  }
  const std::int32_t version = iPhotoLibraryVersion();
  const auto* const row = std::ranges::find_if(
      kDataVersions, [version](const DataVersion& each) { return version >= each.lowest; });
  if (row != kDataVersions.end()) {
    _iPhotoDataVersion = row->text;
  } else if (version >= kLowestWithThumbnailFiles) {
    _iPhotoDataVersion = FileManager::exists(inLibrary("Thumb32.data")) ? "40" : "20";
  } else {
    const bool rotates = FileManager::exists(path::join(albumDataDirectory(), "Pending Rotation"));
    _iPhotoDataVersion = rotates ? "11" : "10";
  }
  return *_iPhotoDataVersion;
}

}  // namespace mrziphoto

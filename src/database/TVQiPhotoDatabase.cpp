#include "TVQiPhotoDatabase.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <utility>

#include "../files/FileFailure.h"
#include "../files/FileManager.h"
#include "../files/Path.h"
#include "../photos/detail/PhotoFolder.h"
#include "../resources/Bundle.h"
#include "../resources/detail/UserDefaults.h"
#include "../resources/detail/Workspace.h"
#include "../values/Log.h"
#include "../values/NSException.h"
#include "../values/detail/Formatted.h"
#include "../values/detail/Generation.h"

namespace mrziphoto {
namespace {

const std::string kDumpDefault = "DumpiPhotoDatabase";

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
  std::string file = inLibrary(library_file::kCatalogue);
  return FileManager::exists(file) ? file : inLibrary(library_file::kOldCatalogue);
}

std::string TVQiPhotoDatabase::library6DataFilename() const {
  return inLibrary(library_file::kCatalogue6);
}

std::string TVQiPhotoDatabase::currentLibraryDataFilename() const {
  return Generation::of(iPhotoLibraryVersion()).hasCatalogue6 ? library6DataFilename()
                                                              : libraryDataFilename();
}

std::string TVQiPhotoDatabase::directoriesDataFilename() const {
  return inLibrary(library_file::kDirectories);
}

std::string TVQiPhotoDatabase::albumDataDirectory() const {
  return inLibrary(library_file::kAlbums);
}

std::string TVQiPhotoDatabase::albumDataFile() const { return inLibrary(library_file::kAlbumData); }

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
  const Generation& generation = Generation::of(version);
  if (!generation.isSupported) {
    NSException::raise(
        kNSInvalidArgumentException,
        detail::formatted("iPhoto Library not supported before iPhoto 4 for '{}'", file));
  }
  if (generation.hasCatalogue6) {
    file = library6DataFilename();
  }
  loadCatalogue(file);
  if (generation.hasDirectories) {
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
  } else if (!Generation::of(_library->libraryVersion()).isSupported) {
    // "Library.iPhoto" told a version; of a catalogue that tells none nothing is decoded.
    _photosFailure =
        OpeningFailure::ofDamage("the catalogue '" + path + "' does not tell its version", path);
  } else if (_library->albumDataFailure() && !Generation::of(_library->libraryVersion()).isCoded) {
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
  if (Generation::ofDataVersion(iPhotoDataVersion()).hasAlbumFiles) {
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
  if (!_iPhotoDataVersion) {
    const Generation& generation = Generation::of(iPhotoLibraryVersion());
    const bool isOther =
        !generation.telltale.empty() && !FileManager::exists(inLibrary(generation.telltale));
    _iPhotoDataVersion = isOther ? generation.otherDataVersion : generation.dataVersion;
  }
  return *_iPhotoDataVersion;
}

}  // namespace mrziphoto

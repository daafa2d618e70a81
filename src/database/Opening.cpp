#include "Opening.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "../files/FileFailure.h"
#include "../files/FileManager.h"
#include "../files/Path.h"
#include "../values/NSException.h"
#include "../values/detail/Generation.h"

namespace mrziphoto {
namespace {

using Cause = OpeningFailure::Cause;

// Any of them makes a folder a library.
constexpr std::array<std::string_view, 2> kCatalogues{library_file::kCatalogue,
                                                      library_file::kOldCatalogue};
// What else lies in libraries and nowhere else.
constexpr std::array<std::string_view, 3> kCompanions{
    library_file::kCatalogue6, library_file::kAlbumData, library_file::kDirectories};
constexpr std::array<std::string_view, 3> kLaterFiles{"database/Photos.sqlite", "Photos.sqlite",
                                                      "database/photos.db"};
constexpr std::string_view kLaterExtension = "photoslibrary";

constexpr std::string_view kAllow = "allow this user to read it";
constexpr std::string_view kCheckPath = "check the path, and that the disk is connected";
constexpr std::string_view kCopyAgain = "copy the whole library folder again, or from a backup";

/// The first of these that is there.
std::optional<std::string> firstIn(const std::string& folder,
                                   std::span<const std::string_view> names) {
  for (const std::string_view name : names) {
    if (std::string file = path::join(folder, name); FileManager::exists(file)) {
      return file;
    }
  }
  return std::nullopt;
}

OpeningFailure ofFile(const FileFailure& failure, std::string what) {
  switch (failure.cause) {
    case FileFailure::Cause::notThere:
      return {Cause::notThere, std::move(what), std::string(kCheckPath), failure.path};
    case FileFailure::Cause::notAllowed:
      return {Cause::notAllowed, std::move(what), std::string(kAllow), failure.path};
    case FileFailure::Cause::tooLarge:
    case FileFailure::Cause::outside:
      return {Cause::unreadable, std::move(what), "", failure.path};
    default:
      return {Cause::unreadable, std::move(what), std::string(kCopyAgain), failure.path};
  }
}

OpeningFailure lacking(const std::string& folder, std::string_view name) {
  const std::string file = path::join(folder, name);
  if (FileManager::isFolder(file) != (path::extension(name).empty())) {
    if (FileManager::exists(file)) {
      return {Cause::unreadable,
              '\'' + file + "' is " + (FileManager::isFolder(file) ? "a folder" : "no folder"),
              std::string(kCopyAgain), file};
    }
  }
  const std::string_view kind = path::extension(name).empty() ? "folder" : "file";
  return {Cause::incomplete, "it lacks the " + std::string(kind) + " '" + std::string(name) + '\'',
          std::string(kCopyAgain), file};
}

/// A folder inside that is a library, which may be what is meant.
std::optional<std::string> libraryIn(const std::string& folder,
                                     const DirectoryEnumerator& entries) {
  constexpr std::size_t kMost = 100;
  std::size_t count = 0;
  for (const DirectoryEnumerator::Entry& entry : entries) {
    const std::string inside = path::join(folder, entry.name);
    if (entry.type == FileType::folder && ++count <= kMost && firstIn(inside, kCatalogues)) {
      return inside;
    }
  }
  return std::nullopt;
}

/// A folder that has no catalogue file.
OpeningFailure withoutCatalogue(const std::string& folder, const DirectoryEnumerator& entries) {
  if (firstIn(folder, kCompanions)) {
    return lacking(folder, kCatalogues.front());
  }
  const auto isShown = [](const auto& entry) { return !entry.name.starts_with('.'); };
  if (std::ranges::none_of(entries, isShown)) {
    return {Cause::empty, "the folder is empty", std::string(kCheckPath), folder};
  }
  const std::optional<std::string> inside = libraryIn(folder, entries);
  return {
      Cause::noLibrary, "no iPhoto library lies in this folder, which has no 'Library.iPhoto'",
      inside ? "a library lies in '" + *inside + '\'' : "name the folder in which that file lies",
      folder};
}

/// A folder whose catalogue file is there.
OpeningFailure withCatalogue(const std::string& folder, const std::string& catalogue,
                             const NSException& exception, std::int32_t version) {
  if (FileManager::isFolder(catalogue)) {
    return {Cause::unreadable, '\'' + catalogue + "' is a folder", std::string(kCopyAgain),
            catalogue};
  }
  if (version <= 0) {
    return {Cause::damaged, "the catalogue '" + catalogue + "' does not tell its version",
            std::string(kCopyAgain), catalogue};
  }
  const Generation& generation = Generation::of(version);
  if (!generation.isSupported) {
    return {Cause::tooOld,
            "it is a library of iPhoto 1 to 3 (catalogue version " + std::to_string(version) + ')',
            "let iPhoto 4 or a later one convert a copy of it", catalogue};
  }
  if (generation.hasCatalogue6 &&
      !FileManager::isFile(path::join(folder, library_file::kCatalogue6))) {
    return lacking(folder, library_file::kCatalogue6);
  }
  if (generation.hasDirectories &&
      !FileManager::isFile(path::join(folder, library_file::kDirectories))) {
    return lacking(folder, library_file::kDirectories);
  }
  if (!FileManager::isFolder(path::join(folder, library_file::kAlbums))) {
    return lacking(folder, library_file::kAlbums);
  }
  return {Cause::damaged, exception.reason(), std::string(kCopyAgain), catalogue};
}

}  // namespace

OpeningFailure OpeningFailure::of(const std::string& folder, const NSException& exception,
                                  std::int32_t catalogueVersion) {
  if (const std::optional<FileFailure> obstacle = FileManager::obstacle(folder)) {
    return ofFile(*obstacle, obstacle->cause == FileFailure::Cause::notThere
                                 ? "there is no such folder"
                                 : "it cannot be reached: " + obstacle->reason);
  }
  if (!FileManager::isFolder(folder)) {
    return {Cause::noFolder, "it is no folder",
            "name the library's folder, which has to be unpacked first when it is in an archive",
            folder};
  }
  if (path::extension(folder) == kLaterExtension || firstIn(folder, kLaterFiles)) {
    return {Cause::laterApplication,
            "it is a library of Photos, the application that came after iPhoto",
            "name the iPhoto library that it was made from, if there still is one", folder};
  }
  const DirectoryEnumerator entries(folder);
  if (entries.failure()) {
    return ofFile(*entries.failure(), "the folder cannot be read: " + entries.failure()->reason);
  }
  if (const auto* unreadable = dynamic_cast<const FileException*>(&exception)) {
    return ofFile(unreadable->failure(), unreadable->reason());
  }
  const std::optional<std::string> catalogue = firstIn(folder, kCatalogues);
  return catalogue ? withCatalogue(folder, *catalogue, exception, catalogueVersion)
                   : withoutCatalogue(folder, entries);
}

OpeningFailure OpeningFailure::ofDamage(std::string what, std::string file) {
  return {Cause::damaged, std::move(what), "copy the file again, or from a backup",
          std::move(file)};
}

OpeningFailure OpeningFailure::ofFileFailure(const FileFailure& failure) {
  return ofFile(failure, failure.sentence());
}

}  // namespace mrziphoto

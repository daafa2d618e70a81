// Noticing that the library was rewritten.

#include "../values/Log.h"
#include "../values/NSException.h"
#include "../values/detail/Formatted.h"
#include "TVQiPhotoDatabase.h"

namespace mrziphoto {
namespace {

/// A file that has gone counts as unchanged: iPhoto may be about to write it anew.
bool hasChanged(const std::optional<Date>& now, const std::optional<Date>& recorded) {
  return now && now != recorded;
}

}  // namespace

bool TVQiPhotoDatabase::reloadIfChanged() {
  const bool libraryChanged =
      hasChanged(_timestampForFilename(currentLibraryDataFilename()), libraryTimestamp);
  const bool directoriesChanged =
      hasChanged(_timestampForFilename(directoriesDataFilename()), directoriesTimestamp);
  if (!libraryChanged && !directoriesChanged) {
    return false;
  }
  letGoOfRecords();
  removeAllAlbums();
  _library = nullptr;
  _directories = nullptr;
  _photoFolders.clear();
  _notices.clear();
  _unreadable.clear();
  const ReadingRules::Scope scope(readingRules());
  try {
    _loadWithContentsOfRootDirectory();
  } catch (const NSException& exception) {
    log("%@ - %@ = %@", exception.name(), exception.reason(), exception.userInfo());
    if (!_photosFailure) {
      _photosFailure = failureOf(exception);
      _notices.push_back({detail::formatted("the library '{}' cannot be read any more: {}",
                                            _rootDirectory, _photosFailure->sentence()),
                          _photosFailure->file, exception.offset()});
    }
  }
  return true;
}

}  // namespace mrziphoto

// The album files that iPhoto 4 keeps in the "Albums" folder.

#include "../albums/ArchiveAlbum.h"
#include "../albums/LastImportAlbum.h"
#include "../platform/FileManager.h"
#include "../platform/NSException.h"
#include "../platform/Path.h"
#include "TVQiPhotoDatabase.h"

namespace mrziphoto {
namespace {

constexpr std::string_view kLastImportFile = "Last Import";
constexpr std::string_view kPhotoLibraryFile = "Photo Library";
constexpr std::string_view kPendingRotationFile = "Pending Rotation";

}  // namespace

void TVQiPhotoDatabase::_loadV4AlbumData() {
  const std::string folder = albumDataDirectory();
  if (!FileManager::isFolder(folder)) {
    NSException::raise(kNSInternalInconsistencyException, "Missing directory %@", folder);
  }
  Ref<Album> lastImport;
  Ref<Album> photoLibrary;
  const DirectoryEnumerator entries(folder);
  if (entries.failure()) {
    _notices.push_back(
        {"the albums could not be read: " + entries.failure()->sentence(), folder, {}});
  }
  for (const auto& entry : entries) {
    if (entry.type != FileType::regular) {
      continue;
    }
    std::string failure;
    const Ref<Album> album =
        Album::albumWithContentsOfFile(path::join(folder, entry.name), &failure);
    // Other systems leave files behind whose names begin with a point.
    if (!failure.empty() && !entry.name.starts_with('.')) {
      noteUnreadable("album files", failure);
    }
    if (!album || entry.name == kPendingRotationFile) {
      continue;
    }
    if (entry.name == kLastImportFile) {
      lastImport = album;
    } else if (entry.name == kPhotoLibraryFile) {
      photoLibrary = album;
    } else {
      addAlbum(album);
    }
  }
  if (!lastImport) {
    lastImport = Album::init<LastImportAlbum>();
  }
  if (!photoLibrary) {
    photoLibrary = Album::init<ArchiveAlbum>();
  }
  insertAlbumAtIndex(lastImport, 0);
  insertAlbumAtIndex(photoLibrary, 0);
  // Without a catalogue there is no list to keep them.
  _lastImport = _library ? lastImport.get() : nullptr;
  _photoLibrary = _library ? photoLibrary.get() : nullptr;
}

}  // namespace mrziphoto

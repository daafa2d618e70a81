// The album files that iPhoto 4 keeps in the "Albums" folder.

#include <algorithm>
#include <array>

#include "../albums/AlbumKinds.h"
#include "../files/FileManager.h"
#include "../files/Path.h"
#include "../values/Limits.h"
#include "../values/Log.h"
#include "../values/NSException.h"
#include "../values/detail/Formatted.h"
#include "TVQiPhotoDatabase.h"

namespace mrziphoto {
namespace {

constexpr std::string_view kLastImportFile = "Last Import";
constexpr std::string_view kPhotoLibraryFile = "Photo Library";
constexpr std::string_view kPendingRotationFile = "Pending Rotation";
constexpr std::array kFilesBesideTheList{kLastImportFile, kPhotoLibraryFile, kPendingRotationFile};

}  // namespace

void TVQiPhotoDatabase::_loadV4AlbumData() {
  const std::string folder = albumDataDirectory();
  if (!FileManager::isFolder(folder)) {
    NSException::raise(kNSInternalInconsistencyException,
                       detail::formatted("Missing directory {}", folder));
  }
  Ref<Album> lastImport;
  Ref<Album> photoLibrary;
  const DirectoryEnumerator entries(folder);
  if (entries.failure()) {
    _notices.push_back(
        {"the albums could not be read: " + entries.failure()->sentence(), folder, {}});
  }
  std::uint32_t leftOut = 0;
  for (const auto& entry : entries) {
    // Other systems leave files behind whose names begin with a point.
    const bool isHidden = entry.name.starts_with('.');
    if (entry.type != FileType::regular) {
      if (!isHidden && entry.type != FileType::folder) {
        const FileFailure failure{FileFailure::Cause::notRegular, path::join(folder, entry.name),
                                  "it is no regular file"};
        noteUnreadable("album files", failure.sentence());
      }
      continue;
    }
    const bool isListed =
        std::ranges::find(kFilesBesideTheList, entry.name) == kFilesBesideTheList.end();
    if (isListed && !isHidden && albums().size() >= Limits::current().albums) {
      ++leftOut;
      continue;
    }
    std::string failure;
    const Ref<Album> album =
        Album::albumWithContentsOfFile(path::join(folder, entry.name), &failure);
    if (!failure.empty() && !isHidden) {
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
  if (leftOut > 0) {
    _notices.push_back(
        {detail::formatted("'{}' has more than {} albums, and {} of them were left out", folder,
                           Limits::current().albums, leftOut),
         folder,
         {}});
    log("%@", _notices.back().sentence);
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
  _photoLibrary = _library ? photoLibrary : nullptr;
}

}  // namespace mrziphoto

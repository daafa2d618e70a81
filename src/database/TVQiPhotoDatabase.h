#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "../albums/Album.h"
#include "../albums/AlbumKinds.h"
#include "../albums/Keyword.h"
#include "../catalogue/TVQiPhotoLibrary.h"
#include "../directories/TVQiPhotoDirectories.h"
#include "../files/FileFailure.h"
#include "../files/ReadingRules.h"
#include "../images/NSImage.h"
#include "../photos/ImageRecRef.h"
#include "../photos/RecordDatabase.h"
#include "../thumbcache/iPhotoSegmentCache.h"
#include "../values/Array.h"
#include "../values/Date.h"
#include "../values/Export.h"
#include "../values/KeyedHash.h"
#include "../values/Object.h"
#include "Opening.h"

namespace mrziphoto {

/// One open iPhoto library folder: the entry to everything that the library holds. Nothing is ever
/// written to the folder.
///
/// A database and all that is reached from it belong to one thread at a time; two databases may
/// live in two threads. Without a catalogue, lists are empty.
class MRZIPHOTO_EXPORT TVQiPhotoDatabase final : public Object, public RecordDatabase {
 public:
  static const Class kClass;

  ~TVQiPhotoDatabase() override;

  /// The full path of the default library: the folder "iPhoto Library" in the folder "Pictures" of
  /// the user's home folder.
  [[nodiscard]] static std::string defaultDirectory();
  /// The default library; nothing when it cannot be opened.
  static Ref<TVQiPhotoDatabase> iPhotoDatabase();
  /// The library in the folder at `path`; nothing when it cannot be opened. The log and `failure`
  /// say why.
  static Ref<TVQiPhotoDatabase> initWithContentsOfDirectory(const std::string& path,
                                                            const OpeningOptions& options = {},
                                                            OpeningFailure* failure = nullptr);

  /// The library folder, in its standard form.
  [[nodiscard]] std::string directory() const override { return _rootDirectory; }
  /// Full paths of the library's files, whether or not they exist; "Library.iPhoto" where there is
  /// such a file, else "Library.data".
  [[nodiscard]] std::string libraryDataFilename() const;
  [[nodiscard]] std::string library6DataFilename() const;
  /// The catalogue file that fits the loaded catalogue's version.
  [[nodiscard]] std::string currentLibraryDataFilename() const;
  [[nodiscard]] std::string directoriesDataFilename() const;
  [[nodiscard]] std::string albumDataDirectory() const;
  [[nodiscard]] std::string albumDataFile() const;
  [[nodiscard]] std::optional<std::string> archivePath() const override;

  /// The version of the iPhoto application on this machine; "iPhoto Not Present" without one.
  [[nodiscard]] const std::string& iPhotoVersion() const;
  /// The catalogue's version number; 0 without a catalogue.
  [[nodiscard]] std::int32_t iPhotoLibraryVersion() const override;
  /// The iPhoto generation that wrote the data: "80", "70", "60", "50", "40", "20", "11" or "10".
  /// Worked out once.
  [[nodiscard]] std::string iPhotoDataVersion() const override;

  /// The albums, in the library's order.
  [[nodiscard]] List<Album> albums() const;
  /// The rolls, one album each.
  [[nodiscard]] List<RollAlbum> rolls() const;
  [[nodiscard]] List<Keyword> keywords() const;
  [[nodiscard]] Ref<Keyword> keywordForKey(const Value& key) const override;
  /// The photos, in the library's order.
  [[nodiscard]] List<ImageRecRef> photos() const;
  [[nodiscard]] List<ImageRecRef> photosForKeys(const List<Key>& keys) const override;
  /// The first photo with that key; nothing when there is none.
  [[nodiscard]] Ref<ImageRecRef> photoForKey(const Ref<Key>& key) const;
  [[nodiscard]] Ref<ImageRecRef> rollRecRefForKey(const Value& key) const override;
  /// The records that stand for rolls.
  [[nodiscard]] List<ImageRecRef> rollRecRefs() const;
  [[nodiscard]] std::optional<std::string> relativeDirectoryForKey(const Value& key) const override;
  [[nodiscard]] std::optional<std::string> directoryForKey(const Value& key) const override;
  [[nodiscard]] Ref<Object> object() const override {
    return Ref<Object>(const_cast<TVQiPhotoDatabase*>(this));
  }
  [[nodiscard]] std::optional<std::string> updateImagePath(const std::string& path) const override;
  [[nodiscard]] Ref<PhotoFolder> photoFolder(const std::string& path) const override;
  [[nodiscard]] const ReadingRules* readingRules() const override {
    return _rules ? &*_rules : nullptr;
  }
  void noteUnreadable(std::string_view what, const std::string& reason) const override;
  /// The full path of the file of the small thumbnails, whether or not it exists.
  [[nodiscard]] std::string thumbnailCacheFilename() const;
  /// The file of the small thumbnails, opened on first request. Nothing when there is none that
  /// can be read, which is logged once.
  [[nodiscard]] Ref<iPhotoSegmentCache> thumbnailSegmentCache() const;
  /// The thumbnail that the file holds for the photo of that key (a `Key` or a number), decoded
  /// anew: 64 by 64 pixels. Nothing when it holds none, or the file ends inside of it.
  [[nodiscard]] Ref<NSBitmapImageRep> cacheThumbnailForKey(const Value& key) const;
  /// A new image of that size around the same thumbnail, which is decoded once and kept for the
  /// database's life: some 16 KB for each photo that was asked.
  [[nodiscard]] Ref<NSImage> thumbnailForKeyImageSize(const Value& key, NSSize size) const override;
  void addAlbum(const Ref<Album>& album);
  void insertAlbumAtIndex(const Ref<Album>& album, std::int32_t position);
  void removeAllAlbums();

  /// Looks whether the catalogue file or "Dir.data" has another modification date than when it was
  /// loaded, and if so loads the library anew. True when a change was seen, also when loading
  /// failed, which the log tells: the database then answers nothing for what is missing. The
  /// version texts and the thumbnails that were read stay. Records and albums handed out before
  /// belong to the old catalogue and have no database any more.
  bool reloadIfChanged();

  /// What of the library was missing, repaired or left out so far: first the catalogue's notices,
  /// then those of the files around it. Loading anew begins anew.
  [[nodiscard]] std::vector<Notice> notices() const;
  /// Why the library's photos could not be read although it is open: its lists are then empty, and
  /// tell nothing. Nothing when they were read.
  [[nodiscard]] const std::optional<OpeningFailure>& photosFailure() const {
    return _photosFailure;
  }

  /// The catalogue's description; nothing without a catalogue.
  [[nodiscard]] std::optional<std::string> catalogueDescription() const;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

 private:
  TVQiPhotoDatabase() = default;

  [[nodiscard]] std::string inLibrary(std::string_view name) const;
  void _loadWithContentsOfRootDirectory();
  void loadCatalogue(const std::string& path);
  void loadDirectories();
  void _loadAlbumData();
  void _loadV4AlbumData();
  void writeDump() const;
  void noticeThumbnailCache(const std::string& file) const;
  [[nodiscard]] OpeningFailure failureOf(const NSException& exception) const;
  [[nodiscard]] static std::optional<Date> _timestampForFilename(const std::string& path);

  /// Files of one kind that could not be read, told in one sentence.
  struct Unreadable {
    std::string firstReason;
    // Hashes of all reasons, which name their files: a file may be tried many times.
    std::unordered_set<std::size_t> reasons;
  };

  std::string _rootDirectory;
  std::optional<ReadingRules> _rules;  // where they are others than the thread's
  std::optional<OpeningFailure> _photosFailure;
  std::int32_t _foundVersion = 0;
  Ref<TVQiPhotoLibrary> _library;
  Ref<TVQiPhotoDirectories> _directories;
  // The photo-library album of iPhoto 4, which stands in the catalogue's album list, too.
  Ref<Album> _photoLibrary;
  std::optional<Date> libraryTimestamp;
  std::optional<Date> directoriesTimestamp;
  mutable std::vector<Notice> _notices;
  mutable std::map<std::string, Unreadable, std::less<>> _unreadable;
  mutable std::optional<std::string> _iPhotoVersion;
  mutable std::optional<std::string> _iPhotoDataVersion;
  mutable TextMap<Ref<PhotoFolder>> _photoFolders;
  mutable Ref<iPhotoSegmentCache> _thumbnailCache;
  mutable bool _thumbnailCacheAttempted = false;
  mutable std::unordered_map<std::uint32_t, Ref<NSBitmapImageRep>, KeyedHash> _thumbnails;
};

}  // namespace mrziphoto

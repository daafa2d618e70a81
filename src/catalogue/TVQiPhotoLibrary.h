#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "../albums/Album.h"
#include "../albums/AlbumKinds.h"
#include "../albums/Keyword.h"
#include "../files/FileFailure.h"
#include "../photos/ImageRecRef.h"
#include "../photos/Key.h"
#include "../photos/RecordDatabase.h"
#include "../values/Array.h"
#include "../values/Data.h"
#include "../values/Export.h"
#include "../values/Object.h"

namespace mrziphoto {

class Fact;
class NSException;
class PhotoTable;
class RecordDatabase;
class RecordIndex;
class TVQiPhotoCodedStreamData;

/// The catalogue of one library, as its files hold it: image records, rolls, albums and keywords.
///
/// Lists are answered as views that show what is added later. Every record
/// and album in them is the catalogue's; a host may keep a reference, but a record that outlives
/// its catalogue has no database any more.
class MRZIPHOTO_EXPORT TVQiPhotoLibrary final : public Object {
 public:
  static const Class kClass;
  /// Catalogues of later versions leave the photos to album data alone.
  static const std::int32_t kLastCodedVersion;

  ~TVQiPhotoLibrary() override;

  /// The catalogue version of a catalogue file, read from its first bytes; 0 when the file does not
  /// tell it, and the log says why. Throws NSException for a file too short to hold anything, and
  /// FileException for one that cannot be read.
  static std::int32_t iPhotoVersionForFilename(const std::string& path);
  /// The catalogue of a file (of "Library.iPhoto" in the same folder where that file is missing)
  /// and, above version 15, of "AlbumData.xml" beside it. Nothing when either cannot be decoded;
  /// the log and `failure` say why. Throws FileException for a catalogue file that cannot be read;
  /// album data that cannot be is passed over, see `albumDataFailure`.
  static Ref<TVQiPhotoLibrary> initWithContentsOfFile(const std::string& path,
                                                      Notice* failure = nullptr);
  /// The catalogue of a catalogue file's bytes alone, laid out by that version, which
  /// `iPhotoVersionForFilename` tells; of version 0 nothing is decoded. Nothing when the bytes
  /// cannot be decoded; the log says why.
  static Ref<TVQiPhotoLibrary> initWithData(const Data& bytes, std::int32_t version = 0);
  /// An empty catalogue.
  static Ref<TVQiPhotoLibrary> init();

  [[nodiscard]] std::int32_t libraryVersion() const { return _version; }
  /// The folder that holds the library; fixed by the first call.
  [[nodiscard]] const std::string& directory() const;
  /// The folder in which the library lies now, onto which recorded paths are mapped; nothing when
  /// no album data was read.
  [[nodiscard]] const std::optional<std::string>& archivePath() const { return _archivePath; }

  /// The database is not owned; it is handed on to every record and album.
  void setDatabase(RecordDatabase* database);
  [[nodiscard]] RecordDatabase* database() const { return _database.get(); }

  /// The records with a roll key, in load order.
  [[nodiscard]] const List<ImageRecRef>& photos() const;
  /// The records without a roll key, which stand for rolls, in load order.
  [[nodiscard]] const List<ImageRecRef>& rollRecRefs() const;
  /// Makes those of the two lists above that do not exist yet.
  void _makePhotoArrays() const;
  /// The first photo whose key equals this one; nothing when none does.
  [[nodiscard]] Ref<ImageRecRef> photoForKey(const Ref<Key>& key) const;
  /// The photos of these keys in order; a key that finds none is left out, and logged as
  /// "No photo for key: %@".
  [[nodiscard]] List<ImageRecRef> photosForKeys(const List<Key>& keys) const;
  /// The first roll record whose key equals this one, a `Key` or a number; nothing when none does,
  /// and for arguments of any other kind.
  [[nodiscard]] Ref<ImageRecRef> rollRecRefForKey(const Value& key) const;

  /// The archive album's rolls; nothing without an archive album.
  [[nodiscard]] List<RollAlbum> rolls() const;
  [[nodiscard]] std::uint32_t numberOfRolls() const;
  /// Hands a roll to the archive album; dropped when there is none.
  void addRoll(Ref<RollAlbum> roll);

  [[nodiscard]] const List<Album>& albums() const { return _albums; }
  [[nodiscard]] std::uint32_t numberOfAlbums() const;
  /// Appends an album and gives it the database; an absent one is passed over, here and below.
  void addAlbum(const Ref<Album>& album);
  void addAlbums(const List<Album>& albums);
  /// `position` lies between 0, the front, and `numberOfAlbums`; others are brought into that
  /// range.
  void insertAlbumAtIndex(const Ref<Album>& album, std::int32_t position);
  void removeAllAlbums();

  /// The keywords; nothing without a keyword store.
  [[nodiscard]] List<Keyword> keywords() const;
  [[nodiscard]] std::uint32_t numberOfKeywords() const;
  /// Appends to a keyword store that is a list.
  void addKeyword(Ref<Keyword> keyword);
  /// The first keyword whose key number equals the integer value of `key`: a number, a decimal text
  /// or a `Key`. Nothing when none does, and for arguments of any other kind.
  [[nodiscard]] Ref<Keyword> keywordForKey(const Value& key) const;
  /// The keywords that the store finds for these key numbers, in order; a store that is a list
  /// finds none.
  [[nodiscard]] List<Keyword> keywordsForKeys(const Array& keys) const;

  /// A path under the folder where the library was recorded to lie, moved to where it lies now; any
  /// other path unchanged.
  [[nodiscard]] std::string updateImagePath(const std::string& path) const;

  /// What of the catalogue was missing, repaired or left out when it was read, in the order in
  /// which that was found.
  [[nodiscard]] const std::vector<Notice>& notices() const { return _notices; }

  /// Why "AlbumData.xml" could not be read, also when there is none; nothing when it was, and for a
  /// catalogue that has none.
  [[nodiscard]] const std::optional<FileFailure>& albumDataFailure() const {
    return _albumDataFailure;
  }

  /// The catalogue's fields as one text, with every image record.
  [[nodiscard]] std::string description() const override;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }

 private:
  class KeywordStore;

  TVQiPhotoLibrary();
  [[nodiscard]] const RecordIndex& photoIndex() const;
  [[nodiscard]] const RecordIndex& rollIndex() const;

  /// Takes in the catalogue file's bytes, laid out by `_version`. False, and a log line, for bytes
  /// that cannot be decoded: the catalogue is then of no use.
  [[nodiscard]] bool decode(TVQiPhotoCodedStreamData& stream);
  /// Takes in "AlbumData.xml" of a folder. Throws NSException for a file that is no property list.
  void loadFromXML(const std::string& folder);
  /// Logs and keeps that a file cannot be decoded.
  void noticeDamage(const std::string& file, const NSException& exception);
  /// Whether `Limits` let in one more; else it is counted as left out.
  [[nodiscard]] bool hasRoomForAlbum();
  /// The caller counts the rolls that were taken: asked before one is added, the archive album
  /// would list those of its children, and keep them.
  [[nodiscard]] bool hasRoomForRoll(std::uint32_t taken);
  /// Tells of what of the file was left out since it was last asked.
  void noticeLeftOut(const std::string& file);

  // The section walk.
  struct Reading;
  struct Section;
  void decodeSections(TVQiPhotoCodedStreamData& stream);
  void readArchivedHeader(TVQiPhotoCodedStreamData& stream);
  void decodeSection(TVQiPhotoCodedStreamData& stream, Reading& reading);
  void readSection(TVQiPhotoCodedStreamData& stream, const Section& section, Reading& reading);
  void _readRollDataFromStreamRange(const TVQiPhotoCodedStreamData& stream, std::uint32_t location,
                                    std::uint32_t length, Reading& reading);
  void _readAlbumDataFromStreamRange(const TVQiPhotoCodedStreamData& stream, std::uint32_t location,
                                     std::uint32_t length, Reading& reading);
  void takeArchivedAlbum(const Ref<Album>& album);
  void readImageRecords(TVQiPhotoCodedStreamData& stream, Reading& reading);
  void takeImageRecords(Reading& reading);

  // The album data.
  void takeArchivePath(const std::optional<std::string>& recorded, const std::string& folder);
  void loadImageRecords(const Ref<PhotoTable>& photos);
  void noticeStandIn(std::string_view what);
  void loadAlbums(const Fact& listOfAlbums);
  void loadRolls(const Fact& listOfRolls);
  void loadKeywords(const Fact& listOfKeywords);

  DatabaseReference _database;
  std::string _loadedFrom;
  mutable std::optional<std::string> _directory;
  std::optional<std::string> _archivePath;
  std::optional<std::string> _lastArchivePath;
  std::int32_t _version = 0;
  Value _nextImageKey;
  Value _nextRollKey;
  bool flag1 = false;
  bool flag2 = false;
  Value _imagesDate1;
  OwnedList<ImageRecRef> _imageRecRefs;
  mutable OwnedList<ImageRecRef> _rollImageRecRefs;
  mutable OwnedList<ImageRecRef> _photoImageRecRefs;
  std::unique_ptr<KeywordStore> _keywords;
  Value _nextKeywordKey;
  OwnedList<Album> _albums = OwnedList<Album>::makeEmpty();
  Ref<ArchiveAlbum> _archiveAlbum;
  std::uint32_t _albumsLeftOut = 0;
  std::uint32_t _rollsLeftOut = 0;
  std::vector<Notice> _notices;
  std::optional<FileFailure> _albumDataFailure;

  // Find by number what a walk over the list would find.
  mutable std::unique_ptr<RecordIndex> _photoIndex;
  mutable std::unique_ptr<RecordIndex> _rollIndex;
};

}  // namespace mrziphoto

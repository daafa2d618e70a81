#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "../images/NSSize.h"
#include "../values/Dictionary.h"
#include "../values/Export.h"
#include "../values/Object.h"
#include "ImageRec.h"
#include "Key.h"
#include "RecordDatabase.h"

namespace mrziphoto {

class Fact;
class NSImage;
class PhotoFolder;
class PhotoReader;
class PhotoTable;
class RecordDatabase;
class TVQiPhotoUserData;
enum class PhotoField : std::uint8_t;
enum class PhotoStore : std::uint8_t;

/// One photo of a library; a record without a roll key stands for a film roll instead.
///
/// A record draws its answers from up to four sources: the archived dictionary (records read from
/// an archive), the image info (records of the album data and of the coded catalogue), the info
/// store and the attributes store. Each question goes through them in a fixed order; where no
/// source has the answer, the answer is nothing, unless another one is stated. Costly answers are
/// worked out on first request and kept for the record's life.
///
/// All questions that involve the database answer nothing until `setDatabase` was called. Questions
/// that need the text of a key throw NSException when the key has no value.
class MRZIPHOTO_EXPORT ImageRecRef final : public Object {
 public:
  static const Class kClass;

  ImageRecRef();
  ~ImageRecRef() override;
  static Ref<ImageRecRef> init() { return make<ImageRecRef>(); }

  /// Gives the record its image info and its image key.
  void setImageInfoForKey(Ref<Dictionary> imageInfo, std::uint32_t key);
  /// The same with a decimal text for the key, read as `Key::initWithKeyString` reads it.
  void setImageInfoForKeyString(Ref<Dictionary> imageInfo, std::string_view key);
  /// Gives the record a row of a table, which holds its image key and answers for the stores that
  /// the row has: they are made from it when they are asked for by name.
  void setRow(Ref<PhotoTable> table, std::uint32_t row);
  /// Lets go of what can be worked out again: stores that were made from a row, camera values,
  /// images.
  /// What was given to the record stays. For hosts that go through a large library once.
  void unload();
  /// The database is not owned.
  void setDatabase(RecordDatabase* database) { _database = database; }
  [[nodiscard]] RecordDatabase* database() const { return _database.get(); }

  /// The photo's own stores.
  void setInfo(Ref<ImageRec> info);
  void setImageAttributes(Ref<AttributeMgr> attributes);
  /// Stores that a host hands in, used where the photo has none of its own.
  void setDBInfo(Ref<ImageRec> info);
  void setDBImageAttributes(Ref<AttributeMgr> attributes);
  [[nodiscard]] Ref<ImageRec> dbInfo() const;

  /// The image key: a `Key`, or what the archive stored as key.
  [[nodiscard]] Value key() const;
  /// The number of `key`. Throws when the key has none; nothing without a key.
  [[nodiscard]] Value photoId() const;
  /// The number of `key` as decimal text; empty without a key.
  [[nodiscard]] std::string keyStringValue() const;
  /// The key's number when the key is nothing but that number, which no object needs to be made
  /// for. For indexes over many records.
  [[nodiscard]] std::optional<std::int64_t> plainKeyNumber() const;
  /// How often, in this process, a record that had a key was given another one. An index by key
  /// that was made before the last time may be out of date.
  [[nodiscard]] static std::uint64_t keyChanges();
  [[nodiscard]] Value directoryKey() const;
  /// The key of the photo's roll; nothing for a record that stands for a roll.
  [[nodiscard]] Value rollKey() const;
  /// True when `rollKey` answers something; asks no file of the archive and album-data generations
  /// unless the answer lies there.
  [[nodiscard]] bool hasRollKey() const { return !rollKey().isNothing(); }

  /// The archived date; for records without an archived dictionary the info store's.
  [[nodiscard]] std::optional<Date> date() const;
  [[nodiscard]] std::optional<Date> archiveDate() const;
  [[nodiscard]] std::optional<Date> modificationDate() const;
  [[nodiscard]] std::optional<std::string> annotation() const;
  [[nodiscard]] std::optional<std::string> comments() const { return annotation(); }
  [[nodiscard]] std::optional<std::string> caption() const;
  [[nodiscard]] std::optional<std::string> title() const { return caption(); }
  /// The file name's extension as stored; "?ext?" when it is not.
  [[nodiscard]] std::string extension() const;
  /// The original's extension as stored; "?origExt?" when it is not.
  [[nodiscard]] std::string originalExtension() const;
  [[nodiscard]] std::optional<std::string> originalFilename() const;
  /// Bytes: as stored, else as the file system says of the file at `imagePath`.
  [[nodiscard]] Value fileSize() const;
  [[nodiscard]] Value rotation() const;
  /// Pixels, as the info store has them (0.0 where it lacks them); without an info store those of
  /// `image`, whose file is opened for it.
  [[nodiscard]] Value imageWidth() const;
  [[nodiscard]] Value imageHeight() const;
  /// Width and height of the image; 0 where they are unknown.
  [[nodiscard]] NSSize imageSize() const;
  /// The photo's keywords: `Keyword` records, or keys or texts that stand for none. An array,
  /// empty when there are none; a keyword key that the database does not know is left out.
  [[nodiscard]] Value keywords() const;

  /// The absolute folder of the photo with its symbolic links resolved. Logs
  /// "%@ - directory '%@' does not exist for %@" when there is none.
  [[nodiscard]] std::optional<std::string> directory() const;
  /// The folder of the image file.
  [[nodiscard]] std::optional<std::string> _imageDirectory() const;
  /// The photo's folder relative to the library folder; the empty text for the library folder.
  [[nodiscard]] std::optional<std::string> relativeDirectory() const;
  /// The image file's name.
  [[nodiscard]] std::optional<std::string> _filename() const;
  [[nodiscard]] std::optional<std::string> filepath() const;
  /// The image file, where the library lies now.
  [[nodiscard]] std::optional<std::string> imagePath() const;
  /// The image file relative to the library folder.
  [[nodiscard]] std::optional<std::string> filename() const;

  [[nodiscard]] std::string _thumbnailFilename() const;
  [[nodiscard]] std::optional<std::string> thumbnailDirectory() const;
  [[nodiscard]] std::optional<std::string> thumbnailPath() const;
  [[nodiscard]] std::optional<std::string> _originalImageFilename() const;
  [[nodiscard]] std::optional<std::string> originalImageDirectory() const;
  [[nodiscard]] std::optional<std::string> originalImagePath() const;
  /// The file of the picture before it was edited, where the record's source names one, and where
  /// the library lies now; `originalImagePath` also answers where it would lie by the custom of the
  /// library's generation.
  [[nodiscard]] std::optional<std::string> recordedOriginalPath() const;
  /// True when the original has another path than the image; no file is looked at.
  [[nodiscard]] bool hasBeenEdited() const;

  /// The kind of the images that are answered: the class that a host has registered under the name
  /// "TVQAttributedImage", else `NSImage`. Looked for once in the life of the process.
  static const Class& imageClass();
  /// The image of the file at that path, made without looking at the file. The last one is kept for
  /// each thread, so that asking for the same path again gives the same object. Nothing where the
  /// library was built without images.
  static Ref<NSImage> imageWithPath(const std::string& path);

  /// The photo's picture, which is not valid where its file is missing or no image.
  [[nodiscard]] Ref<NSImage> image() const;
  [[nodiscard]] Ref<NSImage> displayImage() const { return image(); }
  /// The thumbnail's file, else the small bitmap that the database has for the photo, as an image
  /// of the photo's size. Each of the two is kept once it was found; nothing when there is none.
  [[nodiscard]] Ref<NSImage> thumbnail() const;
  [[nodiscard]] Ref<NSImage> displayThumbnail() const;
  /// The picture before it was edited; `image` when it was not.
  [[nodiscard]] Ref<NSImage> originalImage() const;
  /// A copy of `originalImage` whose longer side has 240 pixels, or 241 by rounding up, or itself
  /// where it is no larger; `thumbnail` when the photo was not edited. Kept.
  [[nodiscard]] Ref<NSImage> originalThumbnail() const;
  /// Makes what `originalThumbnail` answers for an edited photo.
  void _makeOriginalThumbnail() const;

  /// The info store: the photo's own, else the one in the file beside the photo, else the one that
  /// was handed in. Looked for once. A file that cannot be read as one is logged.
  [[nodiscard]] Ref<ImageRec> info() const;
  /// The attributes store, found in the same order; up to library version 149 a missing file is
  /// logged and gives an empty store.
  [[nodiscard]] Ref<AttributeMgr> imageAttributes() const;
  /// The photo's camera values; empty ones when the photo has no camera block. Throws NSException
  /// for a block that cannot be read, at every call.
  [[nodiscard]] Ref<TVQiPhotoUserData> exifData() const;

  /// The value that the camera values have for a key which is no operation of the record's; throws
  /// NSException "NSUnknownKeyException" when they have none either.
  [[nodiscard]] Value valueForUndefinedKey(std::string_view key) const override;
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;
  /// True when key-value access to this record answers that key.
  [[nodiscard]] bool respondsToSelector(std::string_view key) const;

  /// The old names of `valueForUndefinedKey`. A use of them is logged as deprecated.
  [[nodiscard]] Value handleQueryWithUnboundKey(std::string_view key) const;
  [[nodiscard]] Value tvq_handleQueryWithUnboundKey(std::string_view key) const;

  /// Writes `count` bytes of the data, from `location` on, to the log in hexadecimal; less where
  /// the data ends before.
  static void _dumpDataLocationCount(const Data& data, std::uint32_t location, std::uint32_t count);

  /// "%@: %@, directory = %@, attributes = %@, info = %@".
  [[nodiscard]] std::string description() const override;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  void initWithCoder(NSUnarchiver& coder) override;
  void encodeWithCoder(NSArchiver& coder) const override;

  // Entries of the archived dictionary.
  static constexpr std::string_view kDirectory = "Directory";
  static constexpr std::string_view kKey = "Key";
  static constexpr std::string_view kRoll = "Roll";
  static constexpr std::string_view kDate = "Date";
  // Entries of the image info, besides "Roll".
  static constexpr std::string_view kImagePath = "ImagePath";
  static constexpr std::string_view kThumbPath = "ThumbPath";
  static constexpr std::string_view kOriginalPath = "OriginalPath";
  static constexpr std::string_view kComment = "Comment";
  static constexpr std::string_view kCaption = "Caption";
  static constexpr std::string_view kDateAsTimerInterval = "DateAsTimerInterval";
  static constexpr std::string_view kModDateAsTimerInterval = "ModDateAsTimerInterval";
  static constexpr std::string_view kKeywords = "Keywords";

 private:
  friend class PhotoReader;
  struct Beside;
  struct Stored;

  [[nodiscard]] Beside& beside() const;
  [[nodiscard]] bool rowAnswersFor(PhotoStore store) const {
    return (_rowStores >> static_cast<unsigned>(store) & 1U) != 0;
  }
  void standInForRow(PhotoStore store) {
    _rowStores &= static_cast<std::uint8_t>(~(1U << static_cast<unsigned>(store)));
  }
  void takeKey(std::uint32_t key);
  [[nodiscard]] bool isArchived() const;
  [[nodiscard]] Value archived(std::string_view name) const;

  // Stored facts.
  [[nodiscard]] Fact fact(PhotoField field) const;
  [[nodiscard]] bool hasImageInfo() const;
  [[nodiscard]] Value imageInfo(PhotoField field) const;
  [[nodiscard]] bool hasInfo() const;
  [[nodiscard]] Value infoEntry(PhotoField field) const;
  [[nodiscard]] Value infoNumber(PhotoField field) const;
  [[nodiscard]] Value attribute(PhotoField field) const;
  [[nodiscard]] bool isToldByRow(PhotoStore store) const;
  [[nodiscard]] Value keywordForKey(const Value& key) const;
  [[nodiscard]] Ref<ImageRec> keptInfo() const;
  [[nodiscard]] Ref<AttributeMgr> keptAttributes() const;
  [[nodiscard]] Ref<ImageRec> loadInfo() const;
  [[nodiscard]] Ref<AttributeMgr> loadImageAttributes() const;

  // Files and pictures.
  [[nodiscard]] std::optional<std::string> originalIn(
      const std::optional<std::string>& folder) const;
  bool keepHasBeenEdited(const std::optional<std::string>& original,
                         const std::optional<std::string>& image) const;
  [[nodiscard]] std::optional<std::string> updated(const std::optional<std::string>& path) const;
  [[nodiscard]] std::optional<std::string> directoryFromImageInfo() const;
  [[nodiscard]] Ref<PhotoFolder> folder() const;
  [[nodiscard]] Value imageSide(float NSSize::*side) const;
  [[nodiscard]] Ref<NSImage> keptThumbnail(Ref<NSImage>& kept) const;
  static void initialize();

  // A library holds a million records; the flags lie where the base leaves room.
  bool _hasImageKey : 1 = false;
  mutable bool _infoAttempted : 1 = false;
  // `directory` has passed the image path through the database's `updateImagePath`.
  mutable bool _updatedImagePath : 1 = false;
  mutable bool _hasBeenEditedIsValid : 1 = false;
  mutable bool _hasBeenEdited : 1 = false;
  std::uint8_t _rowStores = 0;  // a bit for each store that the row answers for
  DatabaseReference _database;
  mutable Ref<PhotoFolder> _directory;
  // What only some records have.
  mutable std::unique_ptr<Beside> _beside;
  Ref<PhotoTable> _table;
  std::uint32_t _row = 0;
  std::uint32_t _imageKey = 0;
};

}  // namespace mrziphoto

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "../files/ReadingRules.h"
#include "../images/NSSize.h"
#include "../values/Array.h"
#include "../values/Export.h"
#include "../values/Object.h"
#include "../values/Value.h"

namespace mrziphoto {

class RecordDatabase;
class Value;

/// The database of a record, an album or a key manager, which does not own it: nothing once the
/// database has gone, or has let go of what it handed out.
class MRZIPHOTO_EXPORT DatabaseReference {
 public:
  DatabaseReference() = default;
  DatabaseReference(RecordDatabase* database);  // NOLINT(google-explicit-constructor)

  [[nodiscard]] RecordDatabase* get() const;
  RecordDatabase* operator->() const { return get(); }
  bool operator==(std::nullptr_t) const { return get() == nullptr; }
  /// The database as a value for key-value access; nothing for one that is no object.
  [[nodiscard]] Value value() const;

 private:
  friend class RecordDatabase;
  struct Link;

  Ref<Link> _link;
};

class ImageRecRef;
class Key;
class Keyword;
class NSImage;
class PhotoFolder;

/// The questions that photo records and albums put to the database that holds them. What outlives
/// its database has none.
class MRZIPHOTO_EXPORT RecordDatabase {
 public:
  /// The database itself, for key-value access; nothing for one that is no object.
  [[nodiscard]] virtual Ref<Object> object() const { return {}; }
  /// The library folder.
  [[nodiscard]] virtual std::string directory() const = 0;
  /// The folder onto which paths recorded in the album data are mapped; nothing when none is known.
  [[nodiscard]] virtual std::optional<std::string> archivePath() const = 0;
  /// A path recorded in the album data, rewritten to where the library lies now. Nothing without a
  /// catalogue.
  [[nodiscard]] virtual std::optional<std::string> updateImagePath(
      const std::string& path) const = 0;
  /// The folder of a directory key as full path, and relative to the library folder; nothing for an
  /// unknown key.
  [[nodiscard]] virtual std::optional<std::string> directoryForKey(const Value& key) const = 0;
  [[nodiscard]] virtual std::optional<std::string> relativeDirectoryForKey(
      const Value& key) const = 0;
  /// The folder of photos at that path, the same object each time.
  [[nodiscard]] virtual Ref<PhotoFolder> photoFolder(const std::string& path) const = 0;

  /// How the library's files are to be read; nothing for as the thread's rules say.
  [[nodiscard]] virtual const ReadingRules* readingRules() const { return nullptr; }
  /// Takes note of a file of the library that is there and yet cannot be read: what files of its
  /// kind are called ("attributes files"), and a sentence why, which names the file. Told again of
  /// the same file, it still counts one.
  virtual void noteUnreadable(std::string_view /*what*/, const std::string& /*reason*/) const {}

  /// The keyword of a key (a number or its decimal text), or nothing.
  [[nodiscard]] virtual Ref<Keyword> keywordForKey(const Value& key) const = 0;
  /// The photos of these keys, in their order; unknown keys are logged and left out.
  [[nodiscard]] virtual List<ImageRecRef> photosForKeys(const List<Key>& keys) const = 0;
  /// The record that stands for a roll; nothing for an unknown key (a `Key` or a number).
  [[nodiscard]] virtual Ref<ImageRecRef> rollRecRefForKey(const Value& key) const = 0;

  /// The small thumbnail that the library keeps for the photo of that key (a `Key` or a number), as
  /// an image that is drawn in that size; nothing when it keeps none.
  [[nodiscard]] virtual Ref<NSImage> thumbnailForKeyImageSize(const Value& key,
                                                              NSSize size) const = 0;

  /// The catalogue's version number; 0 without a catalogue.
  [[nodiscard]] virtual std::int32_t iPhotoLibraryVersion() const = 0;
  /// The iPhoto generation that wrote the data: "80", "70", "60", "50", "40", "20", "11" or "10".
  [[nodiscard]] virtual std::string iPhotoDataVersion() const = 0;

 protected:
  RecordDatabase() = default;
  // Nobody refers to a copy yet.
  RecordDatabase(const RecordDatabase& /*other*/) {}
  RecordDatabase& operator=(const RecordDatabase& /*other*/) { return *this; }
  ~RecordDatabase();

  /// Leaves all that had this database without one.
  void letGoOfRecords();

 private:
  friend class DatabaseReference;

  DatabaseReference _references;
};

/// The rules by which a record of that database reads; the database may be absent.
[[nodiscard]] inline const ReadingRules* rulesOf(const RecordDatabase* database) {
  return database != nullptr ? database->readingRules() : nullptr;
}

}  // namespace mrziphoto

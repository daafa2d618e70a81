#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "../photos/ArchivedRecord.h"
#include "../photos/ImageRec.h"
#include "../photos/ImageRecRef.h"
#include "../photos/Key.h"
#include "../photos/RecordDatabase.h"
#include "../values/Array.h"
#include "../values/Export.h"
#include "../values/Object.h"

namespace mrziphoto {

/// A kind of album: its class, and the name of an album of that kind that was given none.
struct AlbumKind : Class {
  std::string_view defaultName;
};

/// All thirteen kinds, the plain album first.
[[nodiscard]] MRZIPHOTO_EXPORT std::span<const AlbumKind* const> albumKinds();

/// The image keys of an album's photos, in album order.
class MRZIPHOTO_EXPORT KeyMgr final : public ArchivedRecord {
 public:
  static const Class kClass;

  KeyMgr() = default;
  /// A key manager over this list, which it shares with the caller.
  static Ref<KeyMgr> initWithKeys(List<Key> keys);
  /// The same over keys that hold these numbers, which are made when somebody asks for them.
  static Ref<KeyMgr> initWithKeyNumbers(std::vector<std::uint32_t> numbers);

  /// The database is not owned.
  void setDatabase(RecordDatabase* database) { _database = database; }
  [[nodiscard]] RecordDatabase* database() const { return _database.get(); }

  /// The keys: the list itself of a key manager made in memory; of an archived one a new list at
  /// every call, from its list or its packed form. A packed form whose count disagrees with its
  /// length is logged and yields the keys that are there.
  [[nodiscard]] List<Key> imageKeys() const;
  /// The numbers of `imageKeys`, at less cost; a key without a number is left out.
  [[nodiscard]] std::vector<std::uint32_t> keyNumbers() const;
  /// The photos of the keys; nothing without a database.
  [[nodiscard]] List<ImageRecRef> photos() const;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;
  /// The archived dictionary itself; for a key manager made in memory a new one over its keys.
  [[nodiscard]] Ref<Dictionary> storedDictionary() const override;

  static constexpr std::string_view kKeys = "Keys";
  static constexpr std::string_view kKeyList = "KeyList";

 private:
  [[nodiscard]] std::vector<std::uint32_t> packedNumbers() const;

  DatabaseReference _database;
  // The keys stand in one place: in the archived dictionary, in this list, or, until somebody asks
  // for the list, in these numbers.
  mutable List<Key> _keys = List<Key>::makeEmpty();
  mutable std::optional<std::vector<std::uint32_t>> _numbers;
};

/// A named group of photos: a plain album, and the base of the twelve other kinds.
///
/// An album reaches its photos, and a roll album its roll record, only through its database; until
/// `setDatabase` was called those questions answer nothing.
class MRZIPHOTO_EXPORT Album : public ArchivedRecord {
 public:
  static const AlbumKind kClass;

  Album() = default;
  /// An empty album of the kind `T` with the kind's default name.
  template <class T>
  static Ref<T> init() {
    Ref<T> album = make<T>();
    static_cast<Album&>(*album).startWithDefaultName();
    return album;
  }
  /// An album of the kind `T` from an entry of the album data: "AlbumName", "AlbumKey" or else
  /// "AlbumId", "Annotation", and "KeyList", whose elements are decimal texts or numbers.
  template <class T>
  static Ref<T> initWithDictionary(const Dictionary& albumData) {
    Ref<T> album = init<T>();
    static_cast<Album&>(*album).takeAlbumData(albumData);
    return album;
  }
  template <class T>
  static Ref<T> albumWithContentsOfDictionary(const Dictionary& albumData) {
    return initWithDictionary<T>(albumData);
  }
  /// The album of an album file; the archive decides its kind. Nothing for a path without a last
  /// component, for ".DS_Store", for a file that cannot be read, which is logged and
  /// told in `failure`, and for an archive that holds something other than an album.
  static Ref<Album> albumWithContentsOfFile(const std::string& path,
                                            std::string* failure = nullptr);

  [[nodiscard]] std::string_view defaultAlbumName() const;

  /// The database is not owned.
  virtual void setDatabase(RecordDatabase* database);
  [[nodiscard]] RecordDatabase* database() const { return _database.get(); }

  /// A `Key` or a number, as the archive or the album data gave it.
  [[nodiscard]] Value key() const { return entry(kKey); }
  [[nodiscard]] Value albumId() const { return key(); }
  [[nodiscard]] virtual std::optional<std::string> albumName() const { return entry(kName).text(); }
  void setAlbumName(const Value& name) { setEntry(kName, name); }
  [[nodiscard]] std::optional<std::string> title() const { return albumName(); }
  [[nodiscard]] Value rollKey() const { return entry(kRoll); }
  [[nodiscard]] Value roll() const { return entry(kRoll); }
  [[nodiscard]] Ref<AttributeMgr> attributes() const;
  void setAttributes(const Ref<AttributeMgr>& attributes) { setEntry(kAttributes, attributes); }
  /// The album's comment: of its attributes, else its own.
  [[nodiscard]] std::optional<std::string> annotation() const;
  [[nodiscard]] virtual std::optional<std::string> comments() const { return annotation(); }
  /// The modification date of the attributes; nothing without attributes.
  [[nodiscard]] std::optional<Date> modificationDate() const;
  /// Does nothing without attributes.
  void setModificationDate(const Value& date);
  /// The dates of kinds that have some; nothing for all others.
  [[nodiscard]] virtual std::optional<Date> date() const { return std::nullopt; }
  [[nodiscard]] virtual std::optional<Date> archiveDate() const { return std::nullopt; }

  [[nodiscard]] Ref<KeyMgr> photoKeys() const;
  /// The album's photos; empty when it has no keys, and for keys that find no photo.
  [[nodiscard]] List<ImageRecRef> photos() const;
  /// The albums contained in this one, empty when there are none: a new list at every call.
  [[nodiscard]] List<Album> children() const;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

  // Entries of the album dictionary.
  static constexpr std::string_view kName = "Name";
  static constexpr std::string_view kKey = "Key";
  static constexpr std::string_view kAnnotation = "Annotation";
  static constexpr std::string_view kKeys = "Keys";
  static constexpr std::string_view kRoll = "Roll";
  static constexpr std::string_view kAttributes = "Attributes";
  static constexpr std::string_view kChildren = "Children";
  // Entries of album data; "Annotation" stands in both.
  static constexpr std::string_view kAlbumName = "AlbumName";
  static constexpr std::string_view kAlbumKey = "AlbumKey";
  static constexpr std::string_view kAlbumId = "AlbumId";
  static constexpr std::string_view kKeyList = "KeyList";

 protected:
  /// Fills a new album from an entry of the album data.
  virtual void takeAlbumData(const Dictionary& albumData);

 private:
  void startWithDefaultName();

  DatabaseReference _database;
};

}  // namespace mrziphoto

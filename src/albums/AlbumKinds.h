#pragma once

#include "../photos/ArchivedRecord.h"
#include "Album.h"

namespace mrziphoto {

/// The photos of one film roll. Its name, comments and dates are those of the roll record that the
/// database finds for the album's key; where there is none, the album's own.
///
/// From album data it also takes "RollName", which wins over "AlbumName", and
/// "RollDateAsTimerInterval", which becomes its modification date.
class MRZIPHOTO_EXPORT RollAlbum final : public Album {
 public:
  static const AlbumKind kClass;

  /// The roll record, looked up anew at every call; nothing without a database.
  [[nodiscard]] Ref<ImageRecRef> _rollRecRef() const;
  [[nodiscard]] std::optional<std::string> albumName() const override;
  [[nodiscard]] std::optional<std::string> comments() const override;
  [[nodiscard]] std::optional<Date> date() const override;
  [[nodiscard]] std::optional<Date> archiveDate() const override;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

  static constexpr std::string_view kRollName = "RollName";
  static constexpr std::string_view kRollDateAsTimerInterval = "RollDateAsTimerInterval";

 protected:
  void takeAlbumData(const Dictionary& albumData) override;
};

/// The whole photo library as an album, with its rolls; named "Photo Library" by default.
class MRZIPHOTO_EXPORT ArchiveAlbum final : public Album {
 public:
  static const AlbumKind kClass;

  /// Appends a roll album; an absent one is passed over.
  void addRoll(Ref<RollAlbum> roll);
  /// The roll albums: those added, else those among the children; never nothing. The list is made
  /// once; later changes to the children are not seen.
  [[nodiscard]] const List<RollAlbum>& rolls() const;

  /// Hands the database on to the children and to the rolls.
  void setDatabase(RecordDatabase* database) override;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

 private:
  mutable OwnedList<RollAlbum> _rolls;
};

/// A folder of albums.
class MRZIPHOTO_EXPORT FolderAlbum final : public Album {
 public:
  static const AlbumKind kClass;

  /// The plain albums in the folder and, in their place, those of the folders in it, each time that
  /// one stands there; all other kinds are left out, and so is a folder inside itself. A new list
  /// at every call. Where there are more than `Limits::flattenedAlbums`, a log line says that the
  /// list is cut.
  [[nodiscard]] List<Album> albums() const;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;
};

/// The photos that bear a keyword.
class MRZIPHOTO_EXPORT KeywordAlbum final : public Album {
 public:
  static const AlbumKind kClass;

  /// The comments of the roll record of the album's own key, which each call logs.
  [[nodiscard]] std::optional<std::string> comments() const override;
  /// The present instant, at every call.
  [[nodiscard]] std::optional<Date> date() const override { return Date::now(); }
  [[nodiscard]] std::optional<Date> archiveDate() const override { return Date::now(); }

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;
};

/// The photos of a book.
class MRZIPHOTO_EXPORT BookAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

/// An album whose photos iPhoto works out anew; reading one from an archive logs its description.
class MRZIPHOTO_EXPORT DynamicAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  void initWithCoder(NSUnarchiver& coder) override;
};

/// An album that a filter fills.
class MRZIPHOTO_EXPORT FilterAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

/// The photos of the last import; named "Last Import" by default.
class MRZIPHOTO_EXPORT LastImportAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

/// An album that was published on the web.
class MRZIPHOTO_EXPORT PublishedAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }

 protected:
  void logNewerVersion(const Class& olderClass, const NSUnarchiver& coder,
                       std::uint32_t version) const override;
};

/// Photos that wait for their rotation.
class MRZIPHOTO_EXPORT RotationAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

/// The photos of a slideshow.
class MRZIPHOTO_EXPORT SlideshowAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

/// Photos in the trash.
class MRZIPHOTO_EXPORT TrashAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

/// The arguments of a filter.
class MRZIPHOTO_EXPORT Filter final : public ArchivedRecord {
 public:
  static const Class kClass;
  /// The arguments; nothing when an archive held something else in their place.
  [[nodiscard]] Ref<Dictionary> arguments() const { return _dictionary; }
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;
};

/// A book, as archives hold it.
class MRZIPHOTO_EXPORT Book final : public ArchivedRecord {
 public:
  static const Class kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

/// A page of a book, as archives hold it.
class MRZIPHOTO_EXPORT Page final : public ArchivedRecord {
 public:
  static const Class kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

}  // namespace mrziphoto

#pragma once

#include <memory>
#include <optional>
#include <string>

#include "../photos/ArchivedRecord.h"
#include "../photos/RecordDatabase.h"
#include "../values/Array.h"
#include "../values/Data.h"
#include "../values/Export.h"
#include "../values/Object.h"

namespace mrziphoto {

/// One entry of the directory table.
class MRZIPHOTO_EXPORT DirectoryRec final : public ArchivedRecord {
 public:
  static const Class kClass;

  /// The directory key as stored: a number or a `Key`.
  [[nodiscard]] Value directoryKey() const { return entry(kKey); }
  /// The directory key as a number. Throws what `Key::value` throws.
  [[nodiscard]] Value directoryKeyValue() const;
  /// The folder, relative to the library folder.
  [[nodiscard]] std::optional<std::string> directory() const { return entry(kPath).text(); }

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

  static constexpr std::string_view kKey = "Key";
  static constexpr std::string_view kPath = "Path";
};

/// The directory table of the older libraries, "Dir.data": directory keys to the folders, relative
/// to the library folder, in which image files lie.
class MRZIPHOTO_EXPORT TVQiPhotoDirectories final : public Object {
 public:
  static const Class kClass;

  ~TVQiPhotoDirectories() override;
  /// A table without entries.
  static Ref<TVQiPhotoDirectories> init();
  /// The table of a file; nothing, and one log line, when it cannot be read.
  static Ref<TVQiPhotoDirectories> initWithContentsOfFile(const std::string& path);
  /// The table of an archive that holds any object and an array of `DirectoryRec`; nothing, and one
  /// log line, for an archive that is damaged. Throws NSException for bytes that are no archive.
  static Ref<TVQiPhotoDirectories> initWithData(const Data& bytes);

  /// The database is not owned.
  void setDatabase(RecordDatabase* database) { _database = database; }
  [[nodiscard]] RecordDatabase* database() const { return _database.get(); }

  /// The relative folder of the first entry with that key (a number or a `Key`); nothing when no
  /// entry has it, and for a `Key` without a number.
  [[nodiscard]] std::optional<std::string> directoryForKey(const Value& key) const;
  /// The same by a walk from the first entry to the last.
  [[nodiscard]] std::optional<std::string> directoryByWalk(const Value& key) const;

  /// "%@: directoriesKey = %@, directories = %@".
  [[nodiscard]] std::string description() const override;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

 private:
  class Index;
  TVQiPhotoDirectories();

  DatabaseReference _database;
  Value directoriesKey;
  Ref<Array> directories;
  mutable std::unique_ptr<Index> _index;
};

}  // namespace mrziphoto

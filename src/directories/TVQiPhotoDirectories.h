#pragma once

#include <memory>
#include <optional>
#include <string>

#include "../photos/RecordDatabase.h"
#include "../values/Data.h"
#include "../values/Export.h"
#include "../values/List.h"
#include "../values/Object.h"
#include "DirectoryRec.h"

namespace mrziphoto {

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

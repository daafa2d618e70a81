#pragma once

#include <bit>

#include <MRZiPhoto/albums/Keyword.h>
#include <MRZiPhoto/catalogue/TVQiPhotoLibrary.h>

#include "Testing.h"
#include "support/ArchivedAs.h"
#include "support/CodedBuilder.h"
#include "support/StandInDatabase.h"

namespace mrziphoto {

/// The archive of an album section: a number, then the albums one by one.
inline std::string albumArchive(const std::vector<Value>& objects) {
  NSArchiver archiver;
  archiver.encodeInt(0);
  for (const Value& object : objects) {
    archiver.encodeObject(object);
  }
  return std::string(archiver.archivedData().bytes());
}

/// The fields of a photo of roll 5.
inline CodedBuilder codedPhoto(std::int32_t key) {
  return CodedBuilder().item("idKY", key).item("idRL", 5);
}

/// A keyword store whose keywords have bare numbers as keys.
inline Value keywordStore(const std::vector<std::pair<std::string_view, int>>& keywords) {
  const Ref<Array> used = make<Array>();
  for (const auto& [text, key] : keywords) {
    used->append(Keyword::initWithDictionary(Dictionary{{"String", text}, {"Key", key}}));
  }
  return archivedAs<KeywordMgr>({{"UsedKeywords", used}});
}

/// The bytes of a catalogue of that version: up to version 50 the sections stand behind an archive
/// with the keyword store, above they begin with the version.
inline std::string catalogueBytes(std::int32_t version, const CodedBuilder& sections,
                                  const Value& keywords = {},
                                  std::endian order = std::endian::little) {
  if (version > 50) {
    return CodedBuilder().item("dbVS", version).raw(sections.bytes()).bytes();
  }
  NSArchiver archiver(order);
  archiver.encodeInt(version);
  archiver.encodeObject(keywords);
  return std::string(archiver.archivedData().bytes()) + "\1\2\3\4\5\6" + sections.bytes();
}

/// A catalogue file in a folder of its own, loaded, with a stand-in for its database.
class CodedLibrary {
 public:
  explicit CodedLibrary(const std::string& bytes) {
    _folder.write("Library.iPhoto", bytes);
    const CollectedLog log;
    _library = TVQiPhotoLibrary::initWithContentsOfFile(_folder / "Library.iPhoto");
    _log = log.lines();
    if (_library) {
      _database.archive = std::nullopt;
      _database.version = _library->libraryVersion();
      _library->setDatabase(&_database);
    }
  }
  CodedLibrary(std::int32_t version, const CodedBuilder& sections)
      : CodedLibrary(catalogueBytes(version, sections)) {}
  ~CodedLibrary() {
    if (_library) {
      _library->setDatabase(nullptr);
    }
  }
  CodedLibrary(const CodedLibrary&) = delete;
  CodedLibrary& operator=(const CodedLibrary&) = delete;

  explicit operator bool() const { return static_cast<bool>(_library); }
  /// The test ends when the catalogue could not be loaded.
  const TVQiPhotoLibrary* operator->() const {
    return _library ? _library.get() : throw std::runtime_error("not loaded: " + _log.at(0));
  }
  /// What was logged while the catalogue was loaded.
  [[nodiscard]] const Texts& log() const { return _log; }
  /// The path of an entry of the folder.
  [[nodiscard]] std::string path(const std::string& name) const { return _folder / name; }

 private:
  TemporaryFolder _folder;
  StandInDatabase _database;
  Ref<TVQiPhotoLibrary> _library;
  Texts _log;
};

}  // namespace mrziphoto

#pragma once

#include <filesystem>
#include <string>

#include <MRZiPhoto/archive/NSArchiver.h>
#include <MRZiPhoto/database/TVQiPhotoDatabase.h>

#include "TemporaryFolder.h"

namespace mrziphoto {

/// A library folder that a test fills file by file.
class LibraryFolder {
  TemporaryFolder _folder;

 public:
  /// The folder as a database names it.
  const std::string root = std::filesystem::canonical(_folder.path()).string();

  void write(const std::string& name, std::string_view contents) const {
    std::filesystem::create_directories(std::filesystem::path(root + "/" + name).parent_path());
    _folder.write(name, contents);
  }
  void writeArchive(const std::string& name, const std::vector<Value>& objects) const {
    NSArchiver archiver;
    for (const Value& object : objects) {
      archiver.encodeObject(object);
    }
    write(name, archiver.archivedData().bytes());
  }
  /// A catalogue file whose archive holds the version.
  void writeArchivedVersion(const std::string& name, std::int32_t version) const {
    NSArchiver archiver;
    archiver.encodeValueOfObjCType("i", version);
    write(name, archiver.archivedData().bytes());
  }
  /// A coded catalogue file of nothing but the version.
  void writeCodedVersion(const std::string& name, std::int32_t version) const {
    std::string bytes("dbVS\0\0\0\4", 8);
    for (const int shift : {24, 16, 8, 0}) {
      bytes += static_cast<char>(version >> shift);
    }
    write(name, bytes);
  }
  /// "AlbumData.xml" around the entries of its dictionary.
  void writeAlbumData(const std::string& entries) const {
    write("AlbumData.xml",
          "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + entries +
              "</dict></plist>\n");
  }
  [[nodiscard]] Ref<TVQiPhotoDatabase> open() const {
    return TVQiPhotoDatabase::initWithContentsOfDirectory(root);
  }
};

/// Property-list elements, for album data.
namespace xml {
inline std::string text(const std::string& value) { return "<string>" + value + "</string>"; }
inline std::string number(int value) { return "<integer>" + std::to_string(value) + "</integer>"; }
inline std::string entry(const std::string& key, const std::string& value) {
  return "<key>" + key + "</key>" + value;
}
inline std::string dict(const std::string& entries) { return "<dict>" + entries + "</dict>"; }
inline std::string array(const std::string& elements) { return "<array>" + elements + "</array>"; }
}  // namespace xml

}  // namespace mrziphoto

#pragma once

#include <sys/stat.h>

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>

#include "CodedBuilder.h"
#include "Testing.h"

namespace mrziphoto {

/// A library folder that a test fills file by file.
class LibraryFolder {
  TemporaryFolder _folder;

 public:
  /// The folder as a database names it.
  const std::string root = fs::canonical(_folder.path()).string();

  [[nodiscard]] std::string operator/(const std::string& name) const { return root + "/" + name; }
  void write(const std::string& name, std::string_view contents) const {
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
    archiver.encodeInt(version);
    write(name, archiver.archivedData().bytes());
  }
  /// A coded catalogue file of nothing but the version.
  void writeCodedVersion(const std::string& name, std::int32_t version) const {
    write(name, CodedBuilder().item("dbVS", version).bytes());
  }
  /// Both catalogue files of a version above 50.
  void writeCodedVersions(std::int32_t version) const {
    writeCodedVersion("Library.iPhoto", version);
    writeCodedVersion("Library6.iPhoto", version);
  }
  /// "AlbumData.xml" around the entries of its dictionary.
  void writeAlbumData(const std::string& entries) const {
    write("AlbumData.xml",
          "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + entries +
              "</dict></plist>\n");
  }
  void makePipe(const std::string& name) const {
    ASSERT_EQ(mkfifo((*this / name).c_str(), 0644), 0) << name;
  }
  /// Moves the modification date of a file.
  void makeLater(const std::string& name, std::chrono::seconds by = std::chrono::seconds(2)) const {
    fs::last_write_time(*this / name, fs::last_write_time(*this / name) + by);
  }
  [[nodiscard]] Ref<TVQiPhotoDatabase> tryToOpen(const OpeningOptions& options,
                                                 OpeningFailure& failure) const {
    return TVQiPhotoDatabase::initWithContentsOfDirectory(root, options, &failure);
  }
  /// The test ends when the library cannot be opened.
  [[nodiscard]] Ref<TVQiPhotoDatabase> open(const OpeningOptions& options = {}) const {
    OpeningFailure failure;
    const Ref<TVQiPhotoDatabase> database = tryToOpen(options, failure);
    return database ? database : throw std::runtime_error(failure.sentence());
  }
  /// The text with "ROOT" for the folder.
  [[nodiscard]] std::string rooted(const std::string& text) const {
    return replaced(text, root, "ROOT");
  }
  /// What a database tells, with "ROOT" for the folder.
  [[nodiscard]] Texts noticesOf(const TVQiPhotoDatabase& database) const {
    Texts sentences;
    for (const Notice& notice : database.notices()) {
      sentences.push_back(rooted(notice.sentence));
    }
    return sentences;
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

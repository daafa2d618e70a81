#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>

namespace mrziphoto::tool {

/// Where nothing may be written: a library's folder with all below it, and the folders that its
/// pictures lie in, wherever these are.
class LibraryPlaces {
 public:
  explicit LibraryPlaces(const TVQiPhotoDatabase& database) : _database(database) {}

  [[nodiscard]] std::string library() const { return _database.directory(); }
  /// True for a path that leads through the library's folder, whether or not it leads out again by
  /// a link, and for one in a folder of its pictures.
  [[nodiscard]] bool hold(const std::filesystem::path& path) const;

 private:
  [[nodiscard]] bool keepsPicturesIn(const std::filesystem::path& folder) const;

  const TVQiPhotoDatabase& _database;
};

}  // namespace mrziphoto::tool

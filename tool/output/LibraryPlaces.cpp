#include "LibraryPlaces.h"

#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unordered_set>

#include <MRZiPhoto/files/FileManager.h>
#include <MRZiPhoto/files/Path.h>
#include <MRZiPhoto/photos/ImageRecRef.h>

namespace mrziphoto::tool {
namespace {

namespace fs = std::filesystem;

bool isSame(const fs::path& place, const fs::path& other) {
  std::error_code error;
  return fs::equivalent(place, other, error);
}

}  // namespace

bool LibraryPlaces::hold(const fs::path& path) const {
  std::error_code error;
  const fs::path whole = fs::absolute(path, error).lexically_normal();
  for (fs::path folder = whole; folder != folder.parent_path(); folder = folder.parent_path()) {
    if (isSame(folder, library())) {
      return true;
    }
  }
  return keepsPicturesIn(whole.parent_path());
}

bool LibraryPlaces::keepsPicturesIn(const fs::path& folder) const {
  std::unordered_set<std::string> known;
  for (const Ref<ImageRecRef>& photo : _database.photos()) {
    for (const std::optional<std::string>& file :
         {photo->imagePath(), photo->originalImagePath(), photo->thumbnailPath()}) {
      const auto [each, isNew] = known.insert(path::withoutLastComponent(file.value_or("")));
      if (isNew && isSame(folder, FileManager::locate(*each).value_or(*each))) {
        return true;
      }
    }
    photo->unload();
  }
  return false;
}

}  // namespace mrziphoto::tool

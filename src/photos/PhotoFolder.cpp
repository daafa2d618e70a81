#include "detail/PhotoFolder.h"

#include "../files/FileManager.h"
#include "../files/Path.h"

namespace mrziphoto {

PhotoFolder::PhotoFolder(const std::string& path, const PhotoFolder* around) : _path(path) {
  if (around != nullptr && !around->_exists) {
    return;
  }
  if (around != nullptr && FileManager::fileType(path) == FileType::folder) {
    _exists = true;
    _path = path::join(around->path(), path::lastComponent(path));
  } else if (FileManager::isFolder(path)) {
    _exists = true;
    _path = path::resolvingSymlinks(path);
  }
}

std::string PhotoFolder::storeFolder(bool inDataFolder) const {
  return inDataFolder ? path::join(_path, "Data") : _path;
}

bool PhotoFolder::holdsStore(bool inDataFolder, std::string_view name) const {
  if (!_exists) {
    return false;
  }
  Listing& listing = _listings[inDataFolder ? 1 : 0];
  if (!listing.wasRead) {
    listing.wasRead = true;
    for (const auto& entry : DirectoryEnumerator(storeFolder(inDataFolder))) {
      listing.names.insert(entry.name);
    }
  }
  return !listing.names.empty() && listing.names.contains(name);
}

const Class& PhotoFolder::objectClass() const {
  static constexpr Class kClass{"PhotoFolder"};
  return kClass;
}

}  // namespace mrziphoto

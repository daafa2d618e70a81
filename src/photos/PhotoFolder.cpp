#include "PhotoFolder.h"

#include "../platform/FileManager.h"
#include "../platform/Path.h"

namespace mrziphoto {

PhotoFolder::PhotoFolder(const std::string& path) : _path(path::resolvingSymlinks(path)) {}

std::string PhotoFolder::storeFolder(bool inDataFolder) const {
  return inDataFolder ? path::join(_path, "Data") : _path;
}

bool PhotoFolder::holdsStore(bool inDataFolder, std::string_view name) const {
  Listing& listing = _listings[inDataFolder ? 1 : 0];
  if (!listing.wasRead) {
    listing.wasRead = true;
    for (const auto& entry : DirectoryEnumerator(storeFolder(inDataFolder))) {
      listing.names.insert(entry.name);
    }
  }
  return !listing.names.empty() && listing.names.contains(std::string(name));
}

const Class& PhotoFolder::objectClass() const {
  static constexpr Class kClass{"PhotoFolder"};
  return kClass;
}

}  // namespace mrziphoto

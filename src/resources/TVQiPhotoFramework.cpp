#include "TVQiPhotoFramework.h"

#include <cstdlib>
#include <string>
#include <string_view>

#include "../files/FileManager.h"
#include "../files/Path.h"
#include "../files/detail/OwnFile.h"

namespace mrziphoto {
namespace {

constexpr std::string_view kInstalled = "share/MRZiPhoto/resources";
// A library lies in "lib" of the place where all is installed, or in a folder within "lib".
constexpr int kFoldersAbove = 2;

/// The folder of the string tables; empty where there is none, and texts are then their own keys.
std::string resourceFolder() {
  if (const char* named = std::getenv("MRZIPHOTO_RESOURCES"); named != nullptr && *named != '\0') {
    return detail::fromOwnStart(named);
  }
  std::string place = path::withoutLastComponent(detail::ownFile());
  for (int above = 0; above < kFoldersAbove; ++above) {
    place = path::withoutLastComponent(place);
    std::string folder = path::join(place, kInstalled);
    if (FileManager::isFolder(folder)) {
      return folder;
    }
  }
#ifdef MRZIPHOTO_RESOURCE_FOLDER
  // A program that has the library inside itself may lie anywhere.
  if (FileManager::isFolder(MRZIPHOTO_RESOURCE_FOLDER)) {
    return MRZIPHOTO_RESOURCE_FOLDER;
  }
#endif
  return {};
}

}  // namespace

Ref<Bundle> TVQiPhotoFramework::bundle() {
  static const Ref<Bundle> instance = make<Bundle>(resourceFolder());
  return instance;
}

}  // namespace mrziphoto

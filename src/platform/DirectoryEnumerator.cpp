#include "DirectoryEnumerator.h"

#include <dirent.h>
#include <memory>
#include <optional>
#include <string_view>

#include "FileManager.h"
#include "Path.h"

namespace mrziphoto {
namespace {

/// Most file systems tell the type with the name, which saves a question for each entry.
FileType typeOf(const std::string& folder, const dirent& entry) {
  switch (entry.d_type) {
    case DT_REG:
      return FileType::regular;
    case DT_DIR:
      return FileType::folder;
    case DT_LNK:
      return FileType::symbolicLink;
    case DT_UNKNOWN:
      return FileManager::fileType(path::join(folder, entry.d_name)).value_or(FileType::unknown);
    default:
      return FileType::other;
  }
}

}  // namespace

DirectoryEnumerator::DirectoryEnumerator(const std::string& folder) {
  const std::optional<std::string> place = FileManager::locate(folder);
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(place ? opendir(place->c_str()) : nullptr,
                                                   [](DIR* open) { return closedir(open); });
  if (!stream) {
    return;
  }
  while (const dirent* entry = readdir(stream.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") {
      _entries.push_back({std::string(name), typeOf(*place, *entry)});
    }
  }
}

}  // namespace mrziphoto

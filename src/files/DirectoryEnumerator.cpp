#include <cerrno>
#include <dirent.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>

#include "FileManager.h"
#include "Path.h"
#include "ReadingRules.h"

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
  const std::string place = FileManager::locate(folder).value_or(folder);
  if (!ReadingRules::current().allow(place)) {
    _failure = FileManager::obstacle(folder);
    if (!_failure) {
      _failure = FileFailure::outside(folder, ReadingRules::current().onlyInside);
    }
    return;
  }
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(place.c_str()),
                                                   [](DIR* open) { return closedir(open); });
  if (!stream) {
    // Otherwise an entry that is no folder would count as not there.
    const int error = errno;
    _failure = FileManager::isFile(folder)
                   ? FileFailure{FileFailure::Cause::notRegular, folder, "it is no folder"}
                   : FileFailure::ofSystem(folder, error);
    return;
  }
  // Links on the way may have been changed meanwhile: what counts is where the folder lies that was
  // opened, which the system tells of the descriptor.
  const std::string opened = "/proc/self/fd/" + std::to_string(dirfd(stream.get()));
  const ReadingRules& rules = ReadingRules::current();
  if (!rules.onlyInside.empty() && access(opened.c_str(), F_OK) == 0 && !rules.allow(opened)) {
    _failure = FileFailure::outside(folder, rules.onlyInside);
    return;
  }
  errno = 0;
  while (const dirent* entry = readdir(stream.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") {
      _entries.push_back({std::string(name), typeOf(place, *entry)});
    }
    errno = 0;
  }
  if (errno != 0) {
    _failure = FileFailure::ofSystem(folder, errno);
  }
}

}  // namespace mrziphoto

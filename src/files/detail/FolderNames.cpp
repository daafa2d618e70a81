#include "FolderNames.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <sys/stat.h>
#include <utf8proc.h>

#include "../../values/KeyedHash.h"
#include "../../values/detail/Text.h"
#include "../FileManager.h"

namespace mrziphoto::detail {
namespace {

/// What tells one state of a folder from another.
struct Version {
  dev_t device = 0;
  ino_t number = 0;
  std::chrono::nanoseconds modified{};

  bool operator==(const Version&) const = default;
};

std::optional<Version> versionOf(const std::string& folder) {
  struct stat status {};
  if (stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
    return std::nullopt;
  }
  return Version{status.st_dev, status.st_ino,
                 std::chrono::seconds(status.st_mtim.tv_sec) +
                     std::chrono::nanoseconds(status.st_mtim.tv_nsec)};
}

/// Clocks of file systems tick coarsely: a folder that changed just now may change again and bear
/// the same time.
bool changedJustNow(const Version& version) {
  constexpr std::chrono::milliseconds kTick{100};
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return now - version.modified < kTick && version.modified - now < kTick;
}

/// The folders read last, for all threads.
class Cache {
 public:
  std::shared_ptr<const FolderNames> find(const std::string& folder, const Version& version) {
    const std::lock_guard lock(_mutex);
    const auto found = _folders.find(folder);
    return found != _folders.end() && found->second.version == version ? found->second.names
                                                                       : nullptr;
  }

  void keep(const std::string& folder, const Version& version,
            const std::shared_ptr<const FolderNames>& names) {
    const std::lock_guard lock(_mutex);
    const std::size_t cost = names->cost() + folder.size() + sizeof(Kept);
    if (_cost + cost > kMostBytes) {
      _folders.clear();
      _cost = 0;
    }
    _folders.insert_or_assign(folder, Kept{version, names});
    _cost += cost;  // that of a folder that was replaced counts until all are dropped
  }

 private:
  struct Kept {
    Version version;
    std::shared_ptr<const FolderNames> names;
  };
  static constexpr std::size_t kMostBytes = std::size_t{64} << 20;

  std::mutex _mutex;
  TextMap<Kept> _folders;
  std::size_t _cost = 0;
};

Cache& cache() {
  static Cache instance;
  return instance;
}

}  // namespace

std::optional<std::string> foldedName(std::string_view name) {
  // No character decomposes into more than one and a half parts a byte.
  std::vector<utf8proc_int32_t> characters(name.size() * 2);
  const auto capacity = static_cast<utf8proc_ssize_t>(characters.size());
  const utf8proc_ssize_t count = utf8proc_decompose(
      reinterpret_cast<const utf8proc_uint8_t*>(name.data()),
      static_cast<utf8proc_ssize_t>(name.size()), characters.data(), capacity, UTF8PROC_DECOMPOSE);
  if (count < 0 || count > capacity) {
    return std::nullopt;
  }
  characters.resize(static_cast<std::size_t>(count));
  std::string result;
  result.reserve(name.size());
  for (const utf8proc_int32_t character : characters) {
    text::appendUtf8(result, static_cast<std::uint32_t>(utf8proc_tolower(character)));
  }
  return result;
}

std::shared_ptr<const FolderNames> FolderNames::of(const std::string& folder) {
  const std::optional<Version> version = versionOf(folder);
  if (!version) {
    return nullptr;
  }
  if (auto kept = cache().find(folder, *version)) {
    return kept;
  }
  auto names = std::make_shared<const FolderNames>(folder);
  if (names->isWhole() && !changedJustNow(*version)) {
    cache().keep(folder, *version, names);
  }
  return names;
}

FolderNames::FolderNames(const std::string& folder) {
  const DirectoryEnumerator entries(folder);
  _isWhole = !entries.failure();
  for (const DirectoryEnumerator::Entry& entry : entries) {
    if (const std::optional<std::string> folded = foldedName(entry.name)) {
      _rows.push_back({KeyedHash{}(*folded), _names.size(), entry.name.size()});
      _names += entry.name;
    }
  }
  std::ranges::sort(_rows, [this](const Row& left, const Row& right) {
    return left.hash != right.hash ? left.hash < right.hash : nameOf(left) < nameOf(right);
  });
}

std::optional<std::string> FolderNames::nameLike(std::string_view name) const {
  const std::optional<std::string> wanted = foldedName(name);
  if (!wanted) {
    return std::nullopt;
  }
  const std::size_t hash = KeyedHash{}(*wanted);
  for (auto row = std::ranges::lower_bound(_rows, hash, {}, &Row::hash);
       row != _rows.end() && row->hash == hash; ++row) {
    if (foldedName(nameOf(*row)) == wanted) {
      return std::string(nameOf(*row));
    }
  }
  return std::nullopt;
}

}  // namespace mrziphoto::detail

#include "Path.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>

#include "FileManager.h"

namespace mrziphoto::path {
namespace {

std::string_view withoutSlashesAtEnd(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) {
    path.remove_suffix(1);
  }
  return path;
}

std::string_view lastComponentOf(std::string_view path) {
  path = withoutSlashesAtEnd(path);
  return path == "/" ? path : path.substr(path.rfind('/') + 1);
}

/// Calls `use` with each component, without those that are empty.
template <class Use>
void forEachComponent(std::string_view path, Use&& use) {
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('/'), path.size());
    if (end != 0) {
      use(path.substr(0, end));
    }
    path.remove_prefix(std::min(end + 1, path.size()));
  }
}

std::string withTildeExpanded(std::string_view path) {
  if (!path.starts_with('~')) {
    return std::string(path);
  }
  const std::size_t end = std::min(path.find('/'), path.size());
  const std::string user(path.substr(1, end - 1));
  const std::optional<std::string> home =
      user.empty() ? FileManager::homeFolder() : FileManager::homeFolderOfUser(user);
  return home ? *home + std::string(path.substr(end)) : std::string(path);
}

/// Adds a piece of a path; slashes that follow each other become one.
void append(std::string& path, std::string_view piece) {
  while (!piece.empty()) {
    if (piece[0] == '/' && path.ends_with('/')) {
      piece.remove_prefix(1);
      continue;
    }
    // Runs without doubled slashes are taken at once.
    const std::size_t end = piece.find("//");
    const std::string_view taken = piece.substr(0, end == std::string_view::npos ? end : end + 1);
    path += taken;
    piece.remove_prefix(taken.size());
  }
}

/// The real path of an existing entry.
std::optional<std::string> realPath(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                         &std::free);
  return real ? std::optional<std::string>(real.get()) : std::nullopt;
}

}  // namespace

std::string join(std::string_view folder, std::string_view component) {
  std::string result;
  result.reserve(folder.size() + 1 + component.size());
  append(result, folder);
  append(result, folder.empty() || component.empty() ? "" : "/");
  append(result, component);
  result.resize(withoutSlashesAtEnd(result).size());
  return result;
}

std::string lastComponent(std::string_view path) { return std::string(lastComponentOf(path)); }

std::string withoutLastComponent(std::string_view path) {
  path = withoutSlashesAtEnd(path);
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) {
    return {};
  }
  return std::string(withoutSlashesAtEnd(path.substr(0, slash + 1)));
}

std::string extension(std::string_view path) {
  const std::string_view name = lastComponentOf(path);
  const std::size_t point = name.rfind('.');
  return point == std::string_view::npos || point == 0 ? std::string()
                                                       : std::string(name.substr(point + 1));
}

std::string withExtension(std::string_view path, std::string_view extension) {
  path = withoutSlashesAtEnd(path);
  std::string result(path);
  if (!path.empty() && path != "/") {
    result += '.';
    result += extension;
  }
  return result;
}

std::vector<std::string> components(std::string_view path) {
  std::vector<std::string> result;
  if (path.starts_with('/')) {
    result.emplace_back("/");
  }
  forEachComponent(path, [&result](std::string_view each) { result.emplace_back(each); });
  if (path.ends_with('/') && result.back() != "/") {
    result.emplace_back("/");
  }
  return result;
}

std::string fromComponents(const std::vector<std::string>& components) {
  std::string result;
  for (const std::string& component : components) {
    append(result, result.empty() || component.empty() ? "" : "/");
    append(result, component);
    result.resize(withoutSlashesAtEnd(result).size());
  }
  return result;
}

std::string standardized(std::string_view path) {
  const std::string whole = withTildeExpanded(path);
  const bool isAbsolute = whole.starts_with('/');
  std::vector<std::string_view> kept;
  forEachComponent(whole, [&](std::string_view each) {
    if (each == ".." && isAbsolute) {
      if (!kept.empty()) {
        kept.pop_back();
      }
    } else if (each != ".") {
      kept.push_back(each);
    }
  });
  std::string result = isAbsolute ? "/" : "";
  for (const std::string_view each : kept) {
    result += result.empty() || result == "/" ? "" : "/";
    result += each;
  }
  // A relative path of nothing but points is the present folder.
  return result.empty() && !whole.empty() ? "." : result;
}

std::string resolvingSymlinks(std::string_view path) {
  std::string result(path);
  if (path.find('\0') != std::string_view::npos) {
    return result;  // the system would read it up to there only
  }
  const std::optional<std::string> real = realPath(result);
  if (!real || path.starts_with('/')) {
    return real.value_or(result);
  }
  const std::optional<std::string> present = realPath(".");
  if (!present || *real == *present) {
    return present ? "." : *real;
  }
  const std::string inPresent = *present == "/" ? *present : *present + '/';
  return real->starts_with(inPresent) ? real->substr(inPresent.size()) : *real;
}

}  // namespace mrziphoto::path

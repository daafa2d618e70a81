#include "NamedFiles.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>
#include <optional>
#include <span>
#include <utility>

#include <MRZiPhoto/files/FileManager.h>
#include <MRZiPhoto/files/Path.h>
#include <MRZiPhoto/values/KeyedHash.h>
#include <MRZiPhoto/values/detail/Text.h>

#include "../output/ComposedText.h"

namespace mrziphoto::tool {
namespace {

// Folders for pictures of the generations, apart from those that bear a year.
constexpr std::array<std::string_view, 5> kPictureFolders{"Data", "Masters", "Modified",
                                                          "Originals", "Previews"};
// iPhoto 9 makes several small pictures of each photo there, of which album data names one.
constexpr std::string_view kMadePictures = "Thumbnails";
constexpr std::size_t kYearDigits = 4;

// What systems leave in folders that they show, besides files whose name begins with a point.
constexpr std::array<std::string_view, 3> kSystemFiles{"Icon\r", "Thumbs.db", "desktop.ini"};
constexpr std::string_view kStoreExtension = "attr";

bool isNumber(std::string_view name) {
  return !name.empty() && std::ranges::all_of(name, text::isDigit);
}

bool isSameName(std::string_view name, std::string_view other) {
  return foldedFileName(name) == foldedFileName(other);
}

bool isOneOf(std::span<const std::string_view> names, std::string_view name) {
  return std::ranges::any_of(names, [&](std::string_view each) { return isSameName(each, name); });
}

bool holdsPicturesByCustom(const std::string& name) {
  return isOneOf(kPictureFolders, name) || (name.size() == kYearDigits && isNumber(name));
}

/// True for files that are no pictures: photos of older libraries have stores, "123" and
/// "123.attr".
bool isHousekeeping(const std::string& name) {
  return isSameName(path::extension(name), kStoreExtension) || isNumber(name) ||
         isOneOf(kSystemFiles, name);
}

// A number stands for a path. Nobody can make two paths that bear the same one: the hash is keyed.
std::uint64_t identityOf(std::string_view path) { return KeyedHash{}(path); }

std::uint64_t identityOfFile(std::uint64_t folder, std::string_view name) {
  return KeyedHash{}(folder ^ std::rotl(identityOf(foldedFileName(name)), 1));
}

std::string realPathOf(const std::string& path) {
  return path::resolvingSymlinks(FileManager::locate(path).value_or(path));
}

/// True for what cannot be reached, so that there is no telling whether it exists.
bool mayExist(std::string_view path) {
  const auto obstacle = FileManager::obstacle(std::string(path));
  return obstacle && obstacle->cause != FileFailure::Cause::notThere;
}

std::string_view lastName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

NamedFiles::NamedFiles(const std::string& library)
    : _library(library), _realLibrary(realPathOf(library)) {
  const DirectoryEnumerator entries(library);
  if (entries.failure()) {
    _unreadableFolders.push_back(*entries.failure());
  }
  for (const auto& entry : entries) {
    if (holdsPicturesByCustom(entry.name)) {
      _pictureFolders.insert(entry.name);
    }
  }
}

NamedFiles::Folder NamedFiles::folderOf(std::string_view path) {
  const std::string_view folder = path.substr(0, path.size() - lastName(path).size());
  const std::uint64_t number = identityOf(folder);
  const auto known = _folders.find(number);
  if (known != _folders.end()) {
    return known->second;
  }
  const std::optional<std::string> real = findFolder(path::standardized(folder));
  if (real && real->starts_with(_realLibrary + '/')) {
    const std::string inside = real->substr(_realLibrary.size() + 1);
    if (const std::string name = inside.substr(0, inside.find('/'));
        !isSameName(name, kMadePictures)) {
      _pictureFolders.insert(name);
    }
  }
  const Folder found{identityOf(real ? *real : folder), real || mayExist(folder)};
  _folders.emplace(number, found);
  return found;
}

/// The folder's real path; nothing when there is no such folder. Of a folder that is no link, it is
/// told by that of the folder around it.
std::optional<std::string> NamedFiles::findFolder(const std::string& folder) {
  const std::optional<std::string> place = FileManager::locate(folder);
  if (place && FileManager::fileType(*place) == FileType::folder) {
    return path::join(realPathOfParent(folder), lastName(*place));
  }
  return place && FileManager::isFolder(*place) ? std::optional(path::resolvingSymlinks(*place))
                                                : std::nullopt;
}

const std::string& NamedFiles::realPathOfParent(const std::string& folder) {
  const std::string parent = path::withoutLastComponent(folder);
  const auto known = _realPaths.find(parent);
  return known != _realPaths.end() ? known->second
                                   : _realPaths.emplace(parent, realPathOf(parent)).first->second;
}

bool NamedFiles::add(const std::string& path) {
  const Folder folder = folderOf(path);
  _files.push_back(identityOfFile(folder.identity, lastName(path)));
  return folder.exists;
}

void NamedFiles::forEachUnnamed(const UseFile& use, const std::function<void()>& lookedAtOne) {
  std::ranges::sort(_files);
  for (const std::string& name : _pictureFolders) {
    // Such a folder may be a link to another disk. Links further in are not followed: they may lead
    // anywhere.
    if (const std::string folder = path::join(_library, name); FileManager::isFolder(folder)) {
      searchFolder(folder, use, lookedAtOne);
    }
  }
}

void NamedFiles::searchFolder(const std::string& path, const UseFile& use,
                              const std::function<void()>& lookedAtOne) {
  struct Found {
    std::string path;
    std::string realPath;
  };
  std::vector<Found> folders{{path, realPathOf(path)}};
  while (!folders.empty()) {
    const Found folder = std::move(folders.back());
    folders.pop_back();
    const std::uint64_t identity = identityOf(folder.realPath);
    std::vector<Found> subfolders;
    std::vector<std::string> unnamed;
    const DirectoryEnumerator entries(folder.path);
    if (entries.failure()) {
      _unreadableFolders.push_back(*entries.failure());
    }
    for (const auto& [name, type] : entries) {
      lookedAtOne();
      if (name.starts_with('.')) {
        continue;
      }
      if (type == FileType::folder) {
        subfolders.push_back({path::join(folder.path, name), path::join(folder.realPath, name)});
      } else if (!std::ranges::binary_search(_files, identityOfFile(identity, name)) &&
                 !isHousekeeping(name) && FileManager::isFile(path::join(folder.path, name))) {
        unnamed.push_back(path::join(folder.path, name));
      }
    }
    std::ranges::sort(unnamed);
    std::ranges::for_each(unnamed, use);
    // The last is searched first.
    std::ranges::sort(subfolders, std::ranges::greater(), &Found::path);
    std::ranges::move(subfolders, std::back_inserter(folders));
  }
}

}  // namespace mrziphoto::tool

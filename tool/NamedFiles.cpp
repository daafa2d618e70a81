#include "NamedFiles.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include <MRZiPhoto/platform/DirectoryEnumerator.h>
#include <MRZiPhoto/platform/FileManager.h>
#include <MRZiPhoto/platform/Path.h>
#include <MRZiPhoto/platform/Text.h>

#include "ComposedText.h"

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

bool holdsPicturesByCustom(const std::string& name) {
  return std::ranges::find(kPictureFolders, name) != kPictureFolders.end() ||
         (name.size() == kYearDigits && isNumber(name));
}

/// True for files that are nobody's pictures: photos of older libraries have stores, "123" and
/// "123.attr".
bool isHousekeeping(const std::string& name) {
  return path::extension(name) == kStoreExtension || isNumber(name) ||
         std::ranges::find(kSystemFiles, name) != kSystemFiles.end();
}

std::uint64_t hashOf(std::uint64_t seed, std::string_view text) {
  constexpr std::uint64_t kFnvPrime = 0x100000001B3;
  std::uint64_t hash = seed ^ 0xCBF29CE484222325;
  for (const char c : text) {
    hash = (hash ^ static_cast<unsigned char>(c)) * kFnvPrime;
  }
  return hash ^ hash >> 32;
}

std::uint64_t identityOfFolder(const std::string& realPath) { return hashOf(0, realPath); }

std::uint64_t identityOfFile(std::uint64_t folder, std::string_view name) {
  return hashOf(folder, foldedFileName(name));
}

std::string realPathOf(const std::string& path) {
  return path::resolvingSymlinks(FileManager::locate(path).value_or(path));
}

std::string_view lastName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

NamedFiles::NamedFiles(const std::string& library)
    : _library(library), _realLibrary(realPathOf(library)) {
  for (const auto& entry : DirectoryEnumerator(library)) {
    if (holdsPicturesByCustom(entry.name)) {
      _pictureFolders.insert(entry.name);
    }
  }
}

const NamedFiles::Folder& NamedFiles::folderOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  const std::string folder(path.substr(0, slash == std::string_view::npos ? 0 : slash));
  const auto known = _folders.find(folder);
  if (known != _folders.end()) {
    return known->second;
  }
  const std::string real = realPathOf(folder);
  const bool exists = FileManager::isFolder(real);
  if (exists && real.starts_with(_realLibrary + '/')) {
    const std::string inside = real.substr(_realLibrary.size() + 1);
    if (const std::string name = inside.substr(0, inside.find('/')); name != kMadePictures) {
      _pictureFolders.insert(name);
    }
  }
  return _folders.emplace(folder, Folder{identityOfFolder(real), exists}).first->second;
}

void NamedFiles::add(const std::string& path) {
  _files.push_back(identityOfFile(folderOf(path).identity, lastName(path)));
}

void NamedFiles::forEachUnnamed(const std::function<void(const std::string& path)>& use) {
  std::ranges::sort(_files);
  for (const std::string& name : _pictureFolders) {
    // Such a folder may be a link to another disk. Links further in are not followed: they may lead
    // anywhere.
    if (const std::string folder = path::join(_library, name); FileManager::isFolder(folder)) {
      searchFolder(folder, use);
    }
  }
}

void NamedFiles::searchFolder(const std::string& path,
                              const std::function<void(const std::string& path)>& use) const {
  std::vector<std::string> folders{path};
  while (!folders.empty()) {
    const std::string folder = std::move(folders.back());
    folders.pop_back();
    const std::uint64_t identity = identityOfFolder(path::resolvingSymlinks(folder));
    std::vector<std::string> subfolders;
    std::vector<std::string> unnamed;
    for (const auto& entry : DirectoryEnumerator(folder)) {
      if (entry.name.starts_with('.')) {
        continue;
      }
      if (entry.type == FileType::folder) {
        subfolders.push_back(path::join(folder, entry.name));
      } else if (!isHousekeeping(entry.name) &&
                 !std::ranges::binary_search(_files, identityOfFile(identity, entry.name)) &&
                 FileManager::isFile(path::join(folder, entry.name))) {
        unnamed.push_back(path::join(folder, entry.name));
      }
    }
    std::ranges::sort(unnamed);
    std::ranges::for_each(unnamed, use);
    // The last is searched first.
    std::ranges::sort(subfolders, std::ranges::greater());
    std::ranges::move(subfolders, std::back_inserter(folders));
  }
}

}  // namespace mrziphoto::tool

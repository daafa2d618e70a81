#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <MRZiPhoto/files/FileFailure.h>
#include <MRZiPhoto/values/KeyedHash.h>

namespace mrziphoto::tool {

/// The files that the photos of a library name, and the search for those that none names.
///
/// Eight bytes a file are kept, and little for each folder. Names count as one when a Mac file
/// system takes them for the same.
class NamedFiles {
 public:
  /// `library` is the library's folder.
  explicit NamedFiles(const std::string& library);

  /// A file that a photo names; it need not exist. False when not even its folder does; a folder
  /// that cannot be reached may exist.
  bool add(const std::string& path);
  /// True when there is a folder of the file at that path.
  [[nodiscard]] bool hasFolderOf(const std::string& path) { return folderOf(path).exists; }

  /// Folders in which files were looked for and that could not be read.
  [[nodiscard]] const std::vector<FileFailure>& unreadableFolders() const {
    return _unreadableFolders;
  }

  using UseFile = std::function<void(const std::string& path)>;
  /// Calls `use` for every file in the library's picture folders that none of the added is, folder
  /// by folder. Picture folders are the folders directly in the library's in which named files lie
  /// or which by custom hold pictures, with all that is in them. What systems and iPhoto keep for
  /// themselves beside the pictures is passed over. `lookedAtOne` is called for each entry of these
  /// folders.
  void forEachUnnamed(const UseFile& use, const std::function<void()>& lookedAtOne);

 private:
  struct Folder {
    std::uint64_t identity;
    bool exists;
  };

  Folder folderOf(std::string_view path);
  const std::string& realPathOfParent(const std::string& folder);
  [[nodiscard]] std::optional<std::string> findFolder(const std::string& folder);
  void searchFolder(const std::string& path, const UseFile& use,
                    const std::function<void()>& lookedAtOne);

  std::string _library;
  std::string _realLibrary;
  // By a number that is made from the path as photos spell it.
  std::unordered_map<std::uint64_t, Folder> _folders;
  // Real paths of the folders around those, by the path as photos spell it: there are few.
  TextMap<std::string> _realPaths;
  // Names of folders directly in the library's.
  std::set<std::string> _pictureFolders;
  std::vector<std::uint64_t> _files;
  std::vector<FileFailure> _unreadableFolders;
};

}  // namespace mrziphoto::tool

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "../values/Data.h"
#include "../values/Date.h"
#include "../values/Export.h"
#include "FileFailure.h"

namespace mrziphoto {

/// What an entry of a folder is, without following a symbolic link.
enum class FileType : std::uint8_t { regular, folder, symbolicLink, other, unknown };

/// The entries of one folder, in the order in which the file system yields them; sub-folders are
/// not entered. The folder is read when the enumerator is made; one that cannot be read has no
/// entries, and tells why.
class MRZIPHOTO_EXPORT DirectoryEnumerator {
 public:
  struct Entry {
    /// The name as the file system spells it.
    std::string name;
    /// `unknown` for an entry that went while the folder was read.
    FileType type;
  };

  explicit DirectoryEnumerator(const std::string& folder);

  /// Why the folder, or the rest of it, could not be read; nothing when it was.
  [[nodiscard]] const std::optional<FileFailure>& failure() const { return _failure; }
  [[nodiscard]] auto begin() const { return _entries.begin(); }
  [[nodiscard]] auto end() const { return _entries.end(); }

 private:
  std::vector<Entry> _entries;
  std::optional<FileFailure> _failure;
};

/// What the system asks of the file system. Paths are UTF-8. Libraries spell their files as a Mac
/// file system does, which ignores case and Unicode normal form: where nothing lies at a path as it
/// is spelled, every question but `writeAtomically` is answered for the entry that `locate` finds.
/// Nothing here throws unless it says so; a question about a path that cannot be followed is
/// answered as for one at which nothing exists.
class MRZIPHOTO_EXPORT FileManager {
 public:
  FileManager() = delete;

  /// True when something exists at the path, behind symbolic links.
  [[nodiscard]] static bool exists(const std::string& path);
  /// True when it is a folder, behind symbolic links.
  [[nodiscard]] static bool isFolder(const std::string& path);
  /// True when something exists there that is no folder, behind symbolic links.
  [[nodiscard]] static bool isFile(const std::string& path);
  /// The type of the entry itself, links not followed; nothing when there is none.
  [[nodiscard]] static std::optional<FileType> fileType(const std::string& path);
  /// Size in bytes, behind symbolic links; nothing when nothing exists there.
  [[nodiscard]] static std::optional<std::uint64_t> size(const std::string& path);
  /// When the contents were last changed, behind symbolic links, to the fraction of the second that
  /// the file system keeps.
  [[nodiscard]] static std::optional<Date> modificationDate(const std::string& path);
  /// The whole file in a buffer of its own. Nothing for what cannot be read, for all that is no
  /// regular file, and for a file of more bytes than `Limits::fileSize` or than the memory holds;
  /// `failure` then tells why. A file that becomes shorter while it is read gives what is left of
  /// it, one that grows what it was.
  [[nodiscard]] static std::optional<Data> contents(const std::string& path,
                                                    FileFailure* failure = nullptr);
  /// The same. Throws FileException for what cannot be read.
  [[nodiscard]] static Data readContents(const std::string& path);
  /// The first `count` bytes of the file, or all that it has. Throws FileException likewise.
  [[nodiscard]] static Data readHead(const std::string& path, std::size_t count);
  /// Why nothing is known of the entry at that path: nothing is there, or the way to it is barred.
  /// Nothing when something is there.
  [[nodiscard]] static std::optional<FileFailure> obstacle(const std::string& path);

  /// Makes the file hold these bytes: all of them, or it stays as it was (and the answer is false).
  /// Other readers see the old file or the new one. A symbolic link is replaced, not followed.
  static bool writeAtomically(const std::string& path, std::string_view bytes);

  /// The path of the entry that is really there: as it is spelled or, component by component, the
  /// entry that differs from it in nothing but case and Unicode normal form (of several, the first
  /// in the order of their bytes). Nothing when there is none. A folder is read once, and again
  /// when it has changed, so that asking for each of its files costs little.
  [[nodiscard]] static std::optional<std::string> locate(const std::string& path);

  /// The folder for scratch files: the environment's TMPDIR, else "/tmp".
  [[nodiscard]] static std::string temporaryFolder();
  /// The user's home folder: the environment's HOME, else what the user database says; "/" when
  /// neither knows.
  [[nodiscard]] static std::string homeFolder();
  /// The home folder of the user of that name; nothing for an unknown user.
  [[nodiscard]] static std::optional<std::string> homeFolderOfUser(const std::string& name);
};

}  // namespace mrziphoto

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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

}  // namespace mrziphoto

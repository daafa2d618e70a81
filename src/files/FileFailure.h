#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "../values/Export.h"
#include "../values/NSException.h"

namespace mrziphoto {

/// Why a file or folder cannot be read, for a host that must tell one case from another.
struct MRZIPHOTO_EXPORT FileFailure {
  enum class Cause : std::uint8_t {
    notThere,
    notAllowed,
    folder,      // where a file is wanted
    notRegular,  // a pipe, a device or a socket; or a file where a folder is wanted
    tooLarge,    // more than `Limits::fileSize`, or than the memory holds
    outside,     // outside of the only folder that may be read, see `ReadingRules`
    system,      // the system cannot read it: a broken disk, symbolic links in a circle
  };

  Cause cause = Cause::notThere;
  std::string path;
  /// In a few words, behind a colon: "Permission denied", "it is a folder".
  std::string reason;

  /// "'/L/AlbumData.xml' cannot be read: Permission denied".
  [[nodiscard]] std::string sentence() const { return '\'' + path + "' cannot be read: " + reason; }
  /// The failure of a call to the system that left `error` in errno.
  [[nodiscard]] static FileFailure ofSystem(const std::string& path, int error);
  /// The failure of what lies outside of the only folder that may be read.
  [[nodiscard]] static FileFailure outside(const std::string& path, const std::string& folder);
};

/// A file that cannot be read, where that ends more than its reading.
class MRZIPHOTO_EXPORT FileException final : public NSException {
 public:
  explicit FileException(FileFailure failure);

  [[nodiscard]] const FileFailure& failure() const { return _failure; }

 private:
  FileFailure _failure;
};

/// Something of a library that was missing, repaired or left out. Programs that show the library
/// should show its notices, too.
struct Notice {
  /// One whole sentence for people, without a full stop at its end. It names what is missing, the
  /// file, how many, and where in the file: "the catalogue '/L/Library6.iPhoto' holds 9 of 40
  /// photos: the field 'idCP' at offset 1234 has the size -5".
  std::string sentence;
  /// The full path of the file that the sentence names; empty when it names none.
  std::string file;
  /// The place in the file, in bytes from its start, where one is known.
  std::optional<std::uint64_t> offset;

  bool operator==(const Notice&) const = default;
};

}  // namespace mrziphoto

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "../values/Export.h"
#include "../values/Limits.h"

namespace mrziphoto {

struct FileFailure;
class NSException;

/// What a host may ask for when it opens a library.
struct OpeningOptions {
  /// How much of the library's files is taken, when it is opened and whenever something of it is
  /// read later. Nothing: by the limits that are in force on the thread at the time.
  std::optional<Limits> limits = std::nullopt;
  /// Opens no file and lists no folder outside of the library folder, wherever the catalogue's
  /// paths and links in the folder lead. Paths are answered as ever; a file outside counts as one
  /// that cannot be read. Paths out of the library are usual: pictures that were only referenced
  /// lie elsewhere.
  bool stayInside = false;
  /// Lets a second thread read one half of a file of 16 MiB and more that is read as a whole; it
  /// has ended when the call that started it returns. Without this no threads are started.
  bool mayStartThreads = false;
};

/// Why a library cannot be opened, or its photos cannot be read.
struct MRZIPHOTO_EXPORT OpeningFailure {
  enum class Cause : std::uint8_t {
    notThere,
    notAllowed,
    noFolder,          // a file
    empty,             // a folder without any file
    noLibrary,         // a folder with other files
    tooOld,            // of iPhoto 1 to 3
    laterApplication,  // a library of Photos, which came after iPhoto
    incomplete,        // a file is missing without which there are no photos
    unreadable,        // a file is there, and yet cannot be read
    damaged,
  };

  Cause cause = Cause::notThere;
  /// What is wrong, in a few words that go on behind a colon: "it lacks the file 'Dir.data'".
  std::string what;
  /// What to try, likewise; empty where nothing helps.
  std::string advice;
  /// The full path of the file or folder that is the cause.
  std::string file;

  /// `what` and `advice` in one.
  [[nodiscard]] std::string sentence() const {
    return advice.empty() ? what : what + "; " + advice;
  }
  /// The failure to open the library in that folder which ended in that exception.
  /// `catalogueVersion` is what its catalogue tells, 0 when nothing.
  [[nodiscard]] static OpeningFailure of(const std::string& folder, const NSException& exception,
                                         std::int32_t catalogueVersion);
  /// The failure to make anything of a file that was read.
  [[nodiscard]] static OpeningFailure ofDamage(std::string what, std::string file);
  /// The failure to read the library's photos from a file.
  [[nodiscard]] static OpeningFailure ofFileFailure(const FileFailure& failure);
};

}  // namespace mrziphoto

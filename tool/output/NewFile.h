#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Failure.h"
#include "Interrupts.h"
#include "LibraryPlaces.h"

namespace mrziphoto::tool {

/// A file that is written under another name beside its place and takes its place when it is whole,
/// so that nobody ever sees half of it; until then, what was there before stays. Symbolic links are
/// followed, dangling ones included. A place that is no file of a folder, such as a
/// named pipe or "/dev/stdout", whatever that leads to, is written to as it is.
///
/// The new file takes over the permissions of the one that it replaces. There is one at a time; a
/// signal that ends the program removes it.
class NewFile {
 public:
  /// Throws `Failure` for a place that cannot be written to, and for one that belongs to the
  /// library.
  NewFile(const std::string& path, const LibraryPlaces& library);
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  /// Removes the file unless it has taken its place.
  ~NewFile();

  /// To be written to from front to back.
  [[nodiscard]] std::FILE* stream() const { return _stream.get(); }
  void write(std::string_view bytes);
  /// The file is whole, and will be there after a power failure, too. Throws `Failure` when it is
  /// not.
  void takePlace();

  /// Throws the `Failure` that says that writing did not succeed, and why (`errno`); `ClosedPipe`
  /// for a pipe that nobody reads.
  [[noreturn]] void fail() const;

 private:
  struct Closer {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };

  void makeScratchFile();
  void openDescriptor(int descriptor);
  void syncFolder() const;

  std::string _path;             // as it was named
  std::filesystem::path _place;  // behind symbolic links
  std::string _scratch;          // empty when the place is written to directly
  std::optional<RemovedWhenEnded> _removal;
  std::unique_ptr<std::FILE, Closer> _stream;
};

/// Throws `Failure` when the ending of the file's name is that of another format of pictures than
/// the one that will be in it. `format` is its usual ending: "png".
void expectEnding(const std::string& path, std::string_view format);

}  // namespace mrziphoto::tool

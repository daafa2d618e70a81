#pragma once

#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

#include <MRZiPhoto/catalogue/TVQiPhotoLibrary.h>
#include <MRZiPhoto/values/Log.h>
#include <MRZiPhoto/values/NSException.h>

namespace mrziphoto {

/// A file in memory with the input of a fuzz target.
class InputFile {
 public:
  explicit InputFile(std::string_view bytes) : _file(memfd_create("input", MFD_CLOEXEC)) {
    while (!bytes.empty()) {
      const ssize_t written = write(_file, bytes.data(), bytes.size());
      bytes.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : bytes.size());
    }
  }
  ~InputFile() { close(_file); }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(_file); }

 private:
  int _file;
};

/// Loads a catalogue file with these bytes and asks for everything in it.
inline void playCatalogue(std::string_view bytes) {
  setLogSink({});
  const InputFile file(bytes);
  try {
    const Ref<TVQiPhotoLibrary> library = TVQiPhotoLibrary::initWithContentsOfFile(file.path());
    if (!library) {
      return;
    }
    for (const List<ImageRecRef>& records : {library->photos(), library->rollRecRefs()}) {
      for (const Ref<ImageRecRef>& record : records) {
        (void)record->description();
      }
    }
    (void)library->albums().value().description();
    (void)library->rolls().value().description();
    (void)library->description();
  } catch (const NSException&) {
    return;
  }
}

}  // namespace mrziphoto

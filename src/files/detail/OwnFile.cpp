#include "OwnFile.h"

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <link.h>
#include <memory>
#include <system_error>
#include <unistd.h>

#include "../Path.h"

namespace mrziphoto::detail {
namespace {

/// What has to be kept from the start: a shared library's name may be relative to the folder.
struct Start {
  std::string folder;
  const char* library = "";  // empty for the program itself
};

Start findStart() {
  Start start;
  const std::unique_ptr<char, void (*)(void*)> folder(getcwd(nullptr, 0), std::free);
  start.folder = folder ? folder.get() : "";
  Dl_info information{};
  link_map* loaded = nullptr;
  if (dladdr1(reinterpret_cast<const void*>(&findStart), &information,
              reinterpret_cast<void**>(&loaded), RTLD_DL_LINKMAP) != 0 &&
      loaded != nullptr) {
    start.library = loaded->l_name;
  }
  return start;
}

const Start& start() {
  static const Start found = findStart();
  return found;
}

[[maybe_unused]] const Start& atLoad = start();

}  // namespace

const std::string& ownFile() {
  static const std::string file = [] {
    std::error_code error;
    // The program has no name there, and the word that started it may be no path.
    return (*start().library == '\0'
                ? std::filesystem::read_symlink("/proc/self/exe", error)
                : std::filesystem::canonical(fromOwnStart(start().library), error))
        .string();
  }();
  return file;
}

std::string fromOwnStart(const std::string& path) {
  return path.starts_with('/') ? path : path::join(start().folder, path);
}

}  // namespace mrziphoto::detail

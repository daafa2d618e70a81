#include "OwnFile.h"

#include <dlfcn.h>
#include <filesystem>
#include <link.h>
#include <system_error>

#include "../Path.h"

namespace mrziphoto::detail {
namespace {

struct Start {
  std::string file;
  std::string folder;
};

Start findStart() {
  std::error_code error;
  Start start;
  start.folder = std::filesystem::current_path(error).string();
  Dl_info information{};
  link_map* loaded = nullptr;
  if (dladdr1(reinterpret_cast<const void*>(&findStart), &information,
              reinterpret_cast<void**>(&loaded), RTLD_DL_LINKMAP) != 0 &&
      loaded != nullptr) {
    // The program has no name there, and the word that started it may be no path.
    const char* const path = *loaded->l_name != '\0' ? loaded->l_name : "/proc/self/exe";
    start.file = std::filesystem::canonical(path, error).string();
  }
  return start;
}

const Start& start() {
  static const Start found = findStart();
  return found;
}

[[maybe_unused]] const Start& atLoad = start();

}  // namespace

const std::string& ownFile() { return start().file; }

std::string fromOwnStart(const std::string& path) {
  return path.starts_with('/') ? path : path::join(start().folder, path);
}

}  // namespace mrziphoto::detail

#include "ImageBackend.h"

#include <dlfcn.h>
#include <unistd.h>

#include "../../files/Path.h"
#include "../../files/detail/OwnFile.h"
#include "../../values/Log.h"

namespace mrziphoto::detail {

#ifdef MRZIPHOTO_IMAGE_MODULE
namespace {

/// The module beside the library, or program, that this code is part of. Where none is, its name
/// alone, which is looked for in the run path and among the system's libraries.
std::string modulePath() {
  std::string beside = path::join(path::withoutLastComponent(ownFile()), MRZIPHOTO_IMAGE_MODULE);
  return ::access(beside.c_str(), F_OK) == 0 ? beside : MRZIPHOTO_IMAGE_MODULE;
}

const ImageBackend* load() {
  void* const module = dlopen(modulePath().c_str(), RTLD_NOW | RTLD_LOCAL);
  void* const function = module != nullptr ? dlsym(module, kMakeImageBackend) : nullptr;
  if (function == nullptr) {
    const char* reason = dlerror();
    log("Pictures cannot be read: %@", reason != nullptr ? reason : "their module is empty");
    return nullptr;
  }
  const ImageBackend* made = reinterpret_cast<MakeImageBackend>(function)();
  if (made == nullptr) {
    log("Pictures cannot be read: libvips does not start");
  }
  return made;
}

}  // namespace

const ImageBackend* ImageBackend::shared() {
  static const ImageBackend* const loaded = load();
  return loaded;
}

bool ImageBackend::isBuiltIn() { return true; }

#else

const ImageBackend* ImageBackend::shared() { return nullptr; }

bool ImageBackend::isBuiltIn() { return false; }

#endif

}  // namespace mrziphoto::detail

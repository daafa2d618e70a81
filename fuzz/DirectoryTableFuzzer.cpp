#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <MRZiPhoto/directories/TVQiPhotoDirectories.h>
#include <MRZiPhoto/photos/Key.h>
#include <MRZiPhoto/values/Log.h>
#include <MRZiPhoto/values/NSException.h>

// A directory table, "Dir.data". Its index and a walk over it have to find the same folder.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mrziphoto;
  setLogSink({});
  try {
    const auto table =
        TVQiPhotoDirectories::initWithData(Data({}, {reinterpret_cast<const char*>(data), size}));
    if (!table) {
      return 0;
    }
    for (std::uint32_t key = 0; key < 8; ++key) {
      for (const Value& asked : {Value(key), Value(Key::initWithKey(key))}) {
        if (table->directoryForKey(asked) != table->directoryByWalk(asked)) {
          std::abort();
        }
      }
    }
    (void)table->description();
  } catch (const NSException&) {
    return 0;
  }
  return 0;
}

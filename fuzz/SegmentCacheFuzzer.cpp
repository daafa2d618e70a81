#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <MRZiPhoto/thumbcache/iPhotoSegmentCache.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mrziphoto;
  const auto cache =
      iPhotoSegmentCache::initWithData(Data({}, {reinterpret_cast<const char*>(data), size}));
  for (std::uint32_t i = 0; cache && i < 100; ++i) {
    const std::uint32_t position = cache->itemIndexForKey(i);
    if (position != iPhotoSegmentCache::kNotFound && position >= cache->numberOfItems()) {
      std::abort();
    }
    for (const auto& item : {cache->itemBytesAtIndex(i), cache->itemBytesForKey(i, 16384)}) {
      (void)std::string(item.value_or(Data()).bytes());  // touches every byte
    }
  }
  return 0;
}

// Decodes every thumbnail of a library's segment cache: cache_slots LIBRARY

#include <cstdint>
#include <cstdio>

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>

int main(int argc, char** argv) {
  const auto database =
      argc > 1 ? mrziphoto::TVQiPhotoDatabase::initWithContentsOfDirectory(argv[1]) : nullptr;
  const auto cache = database ? database->thumbnailSegmentCache() : nullptr;
  if (!cache) {
    return 1;
  }
  std::uint32_t found = 0;
  unsigned sum = 0;
  // The made-up cache numbers its photos from 1 on.
  for (std::uint32_t key = 1; key <= cache->numberOfItems(); ++key) {
    const auto bitmap = database->cacheThumbnailForKey(key);
    found += bitmap ? 1U : 0U;
    sum += bitmap ? bitmap->bitmapData()[0] : 0U;
  }
  std::printf("%u thumbnails, %u\n", found, sum);
  return found == cache->numberOfItems() ? 0 : 1;
}

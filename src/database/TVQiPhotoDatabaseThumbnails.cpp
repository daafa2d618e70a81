// The small thumbnails that a library keeps of all its photos in one file.

#include <bit>
#include <cstring>

#include "../files/FileManager.h"
#include "../files/detail/OpenFile.h"
#include "../values/Log.h"
#include "../values/detail/Formatted.h"
#include "../values/detail/Generation.h"
#include "TVQiPhotoDatabase.h"

namespace mrziphoto {
namespace {

constexpr std::uint32_t kSide = 64;
constexpr std::uint32_t kBytesPerPixel = 4;

// The rotation that puts a pixel's last byte in front of the others.
constexpr int kTurn = std::endian::native == std::endian::little ? 8 : -8;

void copyPixels(std::string_view from, std::span<std::uint8_t> to) {
  for (std::size_t offset = 0; offset < to.size(); offset += kBytesPerPixel) {
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, from.data() + offset, sizeof pixel);
    pixel = std::rotl(pixel, kTurn);
    std::memcpy(to.data() + offset, &pixel, sizeof pixel);
  }
}

}  // namespace

std::string TVQiPhotoDatabase::thumbnailCacheFilename() const {
  return inLibrary(Generation::of(iPhotoLibraryVersion()).hasCatalogue6
                       ? library_file::kThumbnails
                       : library_file::kOldThumbnails);
}

Ref<iPhotoSegmentCache> TVQiPhotoDatabase::thumbnailSegmentCache() const {
  if (!_thumbnailCache && !_thumbnailCacheAttempted) {
    const ReadingRules::Scope scope(readingRules());
    const std::string file = thumbnailCacheFilename();
    _thumbnailCache =
        iPhotoSegmentCache::initWithContentsOfFile(FileManager::locate(file).value_or(file));
    if (!_thumbnailCache) {
      log("Can't find a valid %@", file);
      noticeThumbnailCache(file);
    }
    _thumbnailCacheAttempted = true;
  }
  return _thumbnailCache;
}

/// A library need not have the file; one that is there should be of use.
void TVQiPhotoDatabase::noticeThumbnailCache(const std::string& file) const {
  FileFailure failure;
  const bool isOpen = detail::OpenFile::atPath(file, &failure) != nullptr;
  if (isOpen || failure.cause != FileFailure::Cause::notThere) {
    const std::string reason =
        isOpen ? detail::formatted("'{}' is damaged: it is no thumbnail cache", file)
               : failure.sentence();
    _notices.push_back({"the small thumbnails are not to be had: " + reason, file, {}});
  }
}

Ref<NSBitmapImageRep> TVQiPhotoDatabase::cacheThumbnailForKey(const Value& key) const {
  const Ref<iPhotoSegmentCache> cache = thumbnailSegmentCache();
  const Value number = cache ? findKeyNumber(key) : Value();
  if (number.isNothing()) {
    return {};
  }
  // Whatever the size of an item: a smaller one is followed by bytes of the next.
  const std::optional<Data> bytes =
      cache->itemBytesForKey(number.unsignedIntValue(), kSide * kSide * kBytesPerPixel);
  if (!bytes) {
    return {};
  }
  Ref<NSBitmapImageRep> bitmap = make<NSBitmapImageRep>(kSide, kSide);
  copyPixels(bytes->bytes(), bitmap->bitmapData());
  return bitmap;
}

Ref<NSImage> TVQiPhotoDatabase::thumbnailForKeyImageSize(const Value& key, NSSize size) const {
  const Value value = findKeyNumber(key);
  if (value.isNothing()) {
    return {};
  }
  const std::uint32_t number = value.unsignedIntValue();
  auto found = _thumbnails.find(number);
  if (found == _thumbnails.end()) {
    const Ref<NSBitmapImageRep> bitmap = cacheThumbnailForKey(key);
    if (!bitmap) {
      return {};
    }
    found = _thumbnails.emplace(number, bitmap).first;
  }
  Ref<NSImage> image = NSImage::initWithSize(size, ImageRecRef::imageClass());
  if (image) {
    image->addRepresentation(found->second);
  }
  return image;
}

}  // namespace mrziphoto

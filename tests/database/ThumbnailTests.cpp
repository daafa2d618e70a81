#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/files/FileManager.h>
#include <MRZiPhoto/photos/Key.h>

#include "sample/Bytes.h"
#include "support/CodedLibrary.h"
#include "support/LibraryFolder.h"

namespace mrziphoto {
namespace {

constexpr std::size_t kSlotSize = 16384;

/// The database of a library of that version whose catalogue holds nothing.
Ref<TVQiPhotoDatabase> openedAs(const LibraryFolder& library, std::int32_t version) {
  const std::string name = version <= 50 ? "Library.iPhoto" : "Library6.iPhoto";
  library.writeCodedVersion("Library.iPhoto", version);
  library.write(name, catalogueBytes(version, CodedBuilder()));
  library.writeArchive("Dir.data", {1, make<Array>()});
  library.writeAlbumData("");
  return library.open();
}

/// Slots of four bytes that repeat, for these keys.
std::string segmentCache(const std::vector<std::pair<std::uint32_t, std::string>>& slots,
                         std::uint32_t itemSize = kSlotSize) {
  std::string bytes = "iPhotoSegmentCache";
  bytes.resize(132);
  sample::appendLittleEndian(bytes, itemSize);
  sample::appendLittleEndian(bytes, static_cast<std::uint32_t>(slots.size()));
  bytes.resize(4096);
  for (const auto& [key, pixel] : slots) {
    for (std::uint32_t i = 0; i < itemSize; i += 4) {
      bytes += pixel;
    }
  }
  for (const auto& [key, pixel] : slots) {
    for (const std::uint32_t word : {1U, 0U, key, 0U}) {
      sample::appendLittleEndian(bytes, word);
    }
  }
  return bytes;
}

std::vector<int> firstPixel(const Ref<NSBitmapImageRep>& bitmap) {
  const auto data = bitmap ? bitmap->bitmapData() : std::span<std::uint8_t>();
  return {data.begin(), data.begin() + std::min<std::ptrdiff_t>(4, std::ssize(data))};
}

TEST(Thumbnails, ComeFromTheFileOfTheGeneration) {
  for (const auto& [version, name] : {std::pair{25, "Thumb64.data"},
                                      {50, "Thumb64.data"},
                                      {51, "Thumb64Segment.data"},
                                      {52, "THUMB64segment.data"}}) {
    const LibraryFolder library;
    library.write(name, segmentCache({{7, "\x10\x20\x30\x40"}}));
    const auto database = openedAs(library, version);
    EXPECT_EQ(firstPixel(database->cacheThumbnailForKey(7)), (std::vector{0x40, 0x10, 0x20, 0x30}))
        << version;
    EXPECT_EQ(database->thumbnailSegmentCache(), database->thumbnailSegmentCache());
  }
}

TEST(Thumbnails, AreMissedOnce) {
  const LibraryFolder library;
  const auto database = openedAs(library, 60);
  CollectedLog log;
  EXPECT_FALSE(database->thumbnailForKeyImageSize(7, {4, 3}));
  library.write("Thumb64Segment.data", segmentCache({{7, "rgba"}}));
  EXPECT_FALSE(database->thumbnailForKeyImageSize(7, {4, 3}));
  EXPECT_EQ(log.lines(),
            std::vector{"Can't find a valid " + library.root + "/Thumb64Segment.data"});
}

TEST(Thumbnails, AreFoundByKey) {
  const LibraryFolder library;
  library.write("Thumb64Segment.data",
                segmentCache({{0, "none"}, {7, "rgba"}, {0xFFFFFFFF, "RGBA"}}));
  const auto database = openedAs(library, 60);
  for (const Value& key : {Value(7), Value(7.0), Value(Key::initWithKey(7))}) {
    EXPECT_EQ(firstPixel(database->cacheThumbnailForKey(key)),
              (std::vector<int>{'a', 'r', 'g', 'b'}));
  }
  EXPECT_EQ(firstPixel(database->cacheThumbnailForKey(0xFFFFFFFF)),
            (std::vector<int>{'A', 'R', 'G', 'B'}));
  for (const Value& key : {Value(8), Value("7 and more"), Value()}) {
    EXPECT_FALSE(database->cacheThumbnailForKey(key)) << key.description();
    EXPECT_FALSE(database->thumbnailForKeyImageSize(key, {4, 3})) << key.description();
  }
}

TEST(Thumbnails, OutliveAReload) {
  const LibraryFolder library;
  library.write("Thumb64Segment.data", segmentCache({{7, "rgba"}}));
  const auto database = openedAs(library, 60);
  const auto cache = database->thumbnailSegmentCache();
  const auto image = database->thumbnailForKeyImageSize(7, {4, 3});
  const fs::path file = library.root + "/Dir.data";
  fs::last_write_time(file, fs::file_time_type{});
  EXPECT_TRUE(database->reloadIfChanged());
  EXPECT_EQ(database->thumbnailSegmentCache(), cache);
  if (image) {  // built with images
    EXPECT_EQ(database->thumbnailForKeyImageSize(7, {4, 3})->bitmap(), image->bitmap());
  }
}

// Whatever the size of an item, a bitmap takes as many bytes as it has; none lies outside the file.
TEST(Thumbnails, LieWhollyInsideTheFile) {
  const LibraryFolder library;
  std::vector<std::pair<std::uint32_t, std::string>> slots;
  for (std::uint32_t key = 1; key <= 5; ++key) {
    slots.emplace_back(key, std::string(4, static_cast<char>('0' + key)));
  }
  library.write("Thumb64Segment.data", segmentCache(slots, kSlotSize / 4));
  const auto database = openedAs(library, 60);
  const auto bitmap = database->cacheThumbnailForKey(2);
  ASSERT_TRUE(bitmap);
  EXPECT_EQ(bitmap->bitmapData().front(), '2');
  EXPECT_EQ(bitmap->bitmapData().back(), '5');
  EXPECT_FALSE(database->cacheThumbnailForKey(3));
}

TEST(Thumbnails, ShareOneBitmap) {
  if (!NSImage::isSupported()) {
    GTEST_SKIP() << "built without images";
  }
  const LibraryFolder library;
  library.write("Thumb64Segment.data", segmentCache({{7, "\x10\xF0\x05\xFF"}}));
  const auto database = openedAs(library, 60);
  const auto large = database->thumbnailForKeyImageSize(7, {3000, 2000});
  const auto small = database->thumbnailForKeyImageSize(Key::initWithKey(7), {30, 20});
  EXPECT_NE(large, small);
  EXPECT_EQ(large->size(), (NSSize{3000, 2000}));
  EXPECT_EQ(small->size(), (NSSize{30, 20}));
  EXPECT_EQ(large->bitmap(), small->bitmap());
  EXPECT_EQ(large->bitmap()->colorSpaceName(), "NSCalibratedRGBColorSpace");

  // As a file it is the stored picture, byte for byte.
  ASSERT_TRUE(FileManager::writeAtomically(library.root + "/a.png", large->pngData()->bytes()));
  const auto read = NSImage::initByReferencingFile(library.root + "/a.png")->bitmap();
  EXPECT_TRUE(std::ranges::equal(read->bitmapData(), large->bitmap()->bitmapData()));
}

}  // namespace
}  // namespace mrziphoto

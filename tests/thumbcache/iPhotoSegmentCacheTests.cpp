#include <MRZiPhoto/thumbcache/iPhotoSegmentCache.h>

#include "sample/Bytes.h"
#include "support/Testing.h"

namespace mrziphoto {
namespace {

struct Item {
  std::uint32_t inUse;
  std::uint32_t key;
};

std::string headerBytes(std::uint32_t itemSize, std::uint32_t numberOfItems) {
  std::string bytes = "iPhotoSegmentCache";
  bytes.resize(132, '?');
  sample::appendLittleEndian(bytes, itemSize);
  sample::appendLittleEndian(bytes, numberOfItems);
  bytes.resize(4096, '?');
  return bytes;
}

/// A file of items whose bytes are 'a', 'b', 'c' and so on.
std::string fileOf(const std::vector<Item>& items, std::uint32_t itemSize) {
  std::string bytes = headerBytes(itemSize, static_cast<std::uint32_t>(items.size()));
  for (std::size_t i = 0; i < items.size(); ++i) {
    bytes.append(itemSize, static_cast<char>('a' + i % 26));
  }
  for (const Item& item : items) {
    for (const std::uint32_t word : {item.inUse, 17U, item.key, 18U}) {
      sample::appendLittleEndian(bytes, word);
    }
  }
  return bytes;
}

Ref<iPhotoSegmentCache> opened(const std::string& bytes) {
  return iPhotoSegmentCache::initWithData(Data({}, bytes));
}

constexpr std::uint32_t kNone = iPhotoSegmentCache::kNotFound;

TEST(iPhotoSegmentCache, OpensByItsSignatureOnly) {
  EXPECT_TRUE(opened("iPhotoSegmentCache"));
  EXPECT_TRUE(opened(headerBytes(64, 1000)));
  EXPECT_FALSE(opened("iPhotoSegmentCach"));
  for (std::size_t i = 0; i < 18; ++i) {
    std::string bytes = fileOf({}, 16);
    bytes[i] ^= 0x20;
    EXPECT_FALSE(opened(bytes)) << i;
  }
}

TEST(iPhotoSegmentCache, FindsItems) {
  const std::string bytes = fileOf({{1, 70}, {0, 71}, {0xFFFFFFFF, 72}}, 16384);
  const Ref<iPhotoSegmentCache> cache = opened(bytes);
  EXPECT_EQ(cache->numberOfItems(), 3U);
  EXPECT_EQ(cache->itemSize(), 16384U);
  EXPECT_EQ(cache->itemIndex().bytes().data(), bytes.data() + 53248);
  EXPECT_EQ(cache->itemIndex().size(), 48U);
  EXPECT_EQ(cache->itemBytesAtIndex(2)->bytes().data(), bytes.data() + 36864);
  EXPECT_EQ(cache->itemBytesAtIndex(3), std::nullopt);
  EXPECT_EQ(cache->itemIndexForKey(72), 2U);
  EXPECT_EQ(cache->itemIndexForKey(71), kNone);
  EXPECT_EQ(cache->itemBytesForKey(70)->bytes(), std::string(16384, 'a'));
  EXPECT_EQ(cache->itemBytesForKey(71), std::nullopt);
}

TEST(iPhotoSegmentCache, AnswersWhatAWalkOverTheIndexAnswers) {
  const TemporaryFolder folder;
  std::mt19937 random(4);
  for (const std::uint32_t count : {1U, 10U, 9000U}) {
    std::vector<Item> items(count);
    for (Item& item : items) {
      item = {static_cast<std::uint32_t>(random() % 3),
              static_cast<std::uint32_t>(random() % count)};
    }
    const std::string bytes = fileOf(items, 4);
    folder.write("segments", bytes);
    const auto fromFile = iPhotoSegmentCache::initWithContentsOfFile(folder / "segments");
    fs::remove(folder / "segments");
    ASSERT_TRUE(fromFile);
    EXPECT_FALSE(fromFile->itemBytesAtIndex(count - 1, 200'000));
    for (const Ref<iPhotoSegmentCache>& cache : {opened(bytes), fromFile}) {
      for (std::uint32_t key = 0; key <= count; ++key) {
        const auto found = std::ranges::find_if(
            items, [key](const Item& item) { return item.inUse != 0 && item.key == key; });
        const auto index = static_cast<std::uint32_t>(found - items.begin());
        ASSERT_EQ(cache->itemIndexForKey(key), found == items.end() ? kNone : index);
        const std::optional<Data> item = cache->itemBytesForKey(key);
        ASSERT_EQ(item ? item->bytes() : "none",
                  found == items.end() ? "none" : bytes.substr(4096 + index * 4, 4));
      }
    }
  }
  for (const std::string& none : {folder / "segments", folder.path(), std::string("/dev/null")}) {
    EXPECT_FALSE(iPhotoSegmentCache::initWithContentsOfFile(none)) << none;
  }
}

TEST(iPhotoSegmentCache, ServesWhatLiesWhollyInsideTheFile) {
  const std::vector<Item> items{{1, 70}, {1, 71}, {1, 72}};
  const std::string whole = fileOf(items, 100);
  const std::size_t index = 4096 + 300;
  for (std::size_t size = 18; size <= whole.size(); ++size) {
    // A piece of memory of that very size, so that a sanitizer sees what is read beyond it.
    const std::vector<char> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    const auto cache = iPhotoSegmentCache::initWithData(Data({}, {cut.data(), cut.size()}));
    ASSERT_EQ(cache->itemIndex().size() % 16, 0U) << size;
    for (std::uint32_t i = 0; i < items.size(); ++i) {
      ASSERT_EQ(cache->itemBytesAtIndex(i).has_value(), 4096 + (i + 1) * 100 <= size) << size;
      ASSERT_EQ(cache->itemIndexForKey(70 + i) == i, index + (i + 1) * 16 <= size) << size;
    }
  }
}

TEST(iPhotoSegmentCache, BelievesNoCount) {
  for (const std::uint32_t itemSize : {0U, 16U, 0xFFFFFFFFU}) {
    const std::string bytes = headerBytes(itemSize, 0xFFFFFFFF) + std::string(64, '\0');
    const Ref<iPhotoSegmentCache> cache = opened(bytes);
    EXPECT_EQ(cache->itemBytesAtIndex(0).has_value(), itemSize <= 64);
    EXPECT_EQ(cache->itemBytesAtIndex(0xFFFFFFFE).has_value(), itemSize == 0);
    EXPECT_EQ(cache->itemIndexForKey(0), kNone);
  }
}

TEST(iPhotoSegmentCache, AnswersAsManyBytesAsTheReaderWants) {
  const std::string bytes = fileOf({{1, 70}, {1, 71}}, 100);
  const Ref<iPhotoSegmentCache> cache = opened(bytes);
  EXPECT_EQ(cache->itemBytesForKey(70, 150)->bytes(), std::string(100, 'a') + std::string(50, 'b'));
  EXPECT_EQ(cache->itemBytesForKey(71, 40)->bytes(), std::string(40, 'b'));
  EXPECT_TRUE(cache->itemBytesForKey(71, 132));
  EXPECT_FALSE(cache->itemBytesForKey(71, 133));
}

TEST(iPhotoSegmentCache, AnswersAFileAsItIsNow) {
  const TemporaryFolder folder;
  const std::string path = folder / "segments";
  const auto write = [&](const std::vector<Item>& items, std::chrono::seconds later) {
    const bool isNew = !fs::exists(path);
    const auto time = isNew ? fs::file_time_type() : fs::last_write_time(path);
    folder.write("segments", fileOf(items, 16));
    fs::last_write_time(path, time + later);
  };
  constexpr std::chrono::seconds kNoTime(0);
  write({{1, 70}, {1, 71}, {1, 72}}, kNoTime);
  const auto cache = iPhotoSegmentCache::initWithContentsOfFile(path);
  const auto itemOf = [&](std::uint32_t key) {
    const std::optional<Data> bytes = cache->itemBytesForKey(key);
    return bytes ? std::string(bytes->bytes().substr(0, 1)) : "none";
  };
  EXPECT_EQ(itemOf(71), "b");
  // The time of a mapped file stays for a while when it is written to.
  write({{1, 71}, {1, 70}, {1, 72}}, kNoTime);
  EXPECT_EQ(itemOf(70), "b");
  EXPECT_EQ(itemOf(71), "a");
  write({{1, 80}, {0, 70}, {1, 71}}, kNoTime);
  EXPECT_EQ(itemOf(70), "none");
  EXPECT_EQ(itemOf(71), "c");
  // A key that was not there before is found when the time has moved on.
  write({{1, 71}, {1, 90}, {1, 90}}, std::chrono::seconds(1));
  EXPECT_EQ(itemOf(90), "b");
  folder.write("segments", fileOf({{1, 5}}, 100));
  EXPECT_EQ(cache->itemSize(), 100U);
  EXPECT_EQ(itemOf(5), "a");
  folder.write("segments", "another file");
  EXPECT_EQ(cache->numberOfItems(), 0U);
  EXPECT_EQ(itemOf(5), "none");
}

}  // namespace
}  // namespace mrziphoto

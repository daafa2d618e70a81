#include <MRZiPhoto/table/detail/FirstIndex.h>
#include <MRZiPhoto/table/detail/RowIndex.h>

#include "support/Testing.h"

namespace mrziphoto {
namespace {

template <class Key>
std::optional<std::uint32_t> walk(const std::vector<Key>& keys, const Key& key) {
  const auto found = std::ranges::find(keys, key);
  return found == keys.end() ? std::nullopt
                             : std::optional(static_cast<std::uint32_t>(found - keys.begin()));
}

TEST(RowIndex, FindsTheFirstRowAsAWalkWould) {
  std::mt19937 random(1);
  std::vector<std::vector<std::uint32_t>> lists{
      {}, {0}, {0xFFFFFFFF}, {0, 0xFFFFFFFF}, {5, 5, 4, 5}, {7, 8, 9, 10}};
  for (const std::uint32_t range : {300U, 3000U, 0xFFFFFFFFU}) {
    std::vector<std::uint32_t> keys(400);
    std::ranges::generate(keys, [&] { return random() % range; });
    lists.push_back(keys);
  }
  for (const std::vector<std::uint32_t>& keys : lists) {
    const RowIndex index(keys);
    std::vector<std::uint32_t> asked{0, 1, 0x7FFFFFFF, 0xFFFFFFFF};
    for (const std::uint32_t key : keys) {
      asked.insert(asked.end(), {key - 1, key, key + 1});
    }
    for (const std::uint32_t key : asked) {
      index.prefetch(key);
      EXPECT_EQ(index.find(key), walk(keys, key)) << key;
    }
    std::vector<std::uint32_t> sorted = keys;
    std::ranges::sort(sorted);
    EXPECT_EQ(index.hasEqualKeys(), std::ranges::adjacent_find(sorted) != sorted.end());
  }
}

TEST(FirstIndex, FindsTextsOfAllLengths) {
  Texts texts;
  for (std::size_t length = 0; length < 40; ++length) {
    for (const char last : {'\0', 'a', 'b'}) {
      std::string text(length, 'a');
      if (length != 0) {
        text.back() = last;
      }
      texts.push_back(text);
    }
  }
  FirstIndex<std::string_view> index;
  for (std::uint32_t i = 0; i < texts.size(); ++i) {
    EXPECT_EQ(index.add(texts[i], i), walk(texts, texts[i]));
  }
  for (const std::string& text : texts) {
    EXPECT_EQ(index.find(text), walk(texts, text));
  }
  EXPECT_EQ(index.find("other"), std::nullopt);
}

}  // namespace
}  // namespace mrziphoto

#include <array>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <MRZiPhoto/platform/Dictionary.h>
#include <MRZiPhoto/platform/KeyedHash.h>

namespace mrziphoto {
namespace {

std::vector<std::string> keysOf(const Dictionary& dictionary) {
  std::vector<std::string> keys;
  for (const Dictionary::Entry& entry : dictionary) {
    keys.emplace_back(entry.key.text());
  }
  return keys;
}

/// Compares with a plain walk at every size, below and above the one from which an index is used.
TEST(Dictionary, FindsWhatAWalkFinds) {
  std::mt19937 random(7);  // NOLINT(bugprone-random-generator-seed): the same on every run
  Dictionary dictionary;
  std::map<std::string, int> expected;
  std::vector<std::string> order;
  for (int i = 0; i < 3000; ++i) {
    const std::string key = std::to_string(random() % 2000);
    if (expected.insert_or_assign(key, i).second) {
      order.push_back(key);
    }
    dictionary.set(key, i);
    const std::string other = std::to_string(random() % 2000);
    const auto found = expected.find(other);
    ASSERT_EQ(dictionary.get(other), found == expected.end() ? Value() : Value(found->second));
  }
  EXPECT_EQ(keysOf(dictionary), order);
  EXPECT_FALSE(dictionary.contains(""));
}

TEST(Dictionary, OfEqualKeysTheLaterValueStandsInTheEarlierPlace) {
  for (const int count : {2, 30, 300}) {
    std::vector<Dictionary::Entry> entries;
    entries.reserve(static_cast<std::size_t>(count) + 1);
    for (int i = 0; i < count; ++i) {
      entries.push_back({DictionaryKey(std::to_string(i)), i});
    }
    entries.push_back({DictionaryKey("0"), "later"});
    const Dictionary dictionary(std::move(entries));
    EXPECT_EQ(dictionary.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(dictionary.begin()->key.text(), "0");
    EXPECT_EQ(dictionary.get("0"), "later");
    EXPECT_EQ(dictionary.get(std::to_string(count - 1)), count - 1);
  }
}

TEST(Dictionary, TakesManyRepeatsOfOneKey) {
  std::vector<Dictionary::Entry> entries;
  for (int i = 0; i < 300'000; ++i) {
    entries.push_back({DictionaryKey("a"), i});
  }
  const Dictionary dictionary(std::move(entries));
  EXPECT_EQ(keysOf(dictionary), std::vector<std::string>{"a"});
  EXPECT_EQ(dictionary.get("a"), 299'999);
}

/// The answers that the authors of the hash gave.
TEST(KeyedHash, IsSipHash) {
  constexpr std::array<std::uint64_t, 2> kKey{0x0706050403020100, 0x0F0E0D0C0B0A0908};
  std::string bytes;
  for (char next = 0; next < 15; ++next) {
    bytes += next;
  }
  EXPECT_EQ(sipHash(kKey, ""), 0x726FDB47DD0E0E31);
  EXPECT_EQ(sipHash(kKey, bytes.substr(0, 8)), 0x93F5F5799A932462);
  EXPECT_EQ(sipHash(kKey, bytes), 0xA129CA6149BE45E5);
  EXPECT_EQ(KeyedHash{}("one"), KeyedHash{}(std::string("one")));
  EXPECT_NE(KeyedHash{}("one"), KeyedHash{}("two"));
}

TEST(Dictionary, EqualityIgnoresOrder) {
  const Dictionary one{{"a", 1}, {"b", "two"}};
  const Dictionary two{{"b", "two"}, {"a", 1.0}};
  EXPECT_TRUE(one.isEqual(two));
  EXPECT_EQ(one.hash(), two.hash());
  EXPECT_FALSE(one.isEqual(Dictionary{{"a", 1}}));
  EXPECT_FALSE(one.isEqual(Dictionary{{"a", 1}, {"b", nullptr}}));
  EXPECT_FALSE(one.isEqual(Dictionary{{"a", 1}, {"c", "two"}}));
}

TEST(Dictionary, HoldsEmptyAndUnusualKeys) {
  Dictionary dictionary;
  const std::string zero("a\0b", 3);
  dictionary.set("", 1);
  dictionary.set(zero, 2);
  dictionary.set("a", nullptr);
  EXPECT_EQ(dictionary.get(""), 1);
  EXPECT_EQ(dictionary.get(zero), 2);
  EXPECT_TRUE(dictionary.contains("a")) << "an entry of nothing is an entry";
}

}  // namespace
}  // namespace mrziphoto

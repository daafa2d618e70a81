#include <MRZiPhoto/albums/KeywordMgr.h>
#include <MRZiPhoto/photos/Key.h>

#include "support/ArchivedAs.h"
#include "support/Testing.h"

namespace mrziphoto {
namespace {

/// Keys of every shape, most of them several times over.
std::vector<Value> keysOfAllKinds() {
  std::vector<Value> keys;
  for (int round = 0; round < 2; ++round) {
    for (const Value& number :
         {Value(7), Value(-1), Value(4294967295U), Value(7.0), Value(7.5), Value(Decimal{70, -1}),
          Value("7"), Value(std::uint64_t{1} << 63)}) {
      keys.push_back(number);
      keys.emplace_back(Key::initWithKeyValue(number));
    }
    keys.emplace_back(archivedAs<Key>({{"Key", 7}, {"More", 1}}));
  }
  return keys;
}

TEST(KeywordMgr, FindsKeywordsAsAWalkOverThemWould) {
  NSArchiver archiver;
  const Ref<Array> used = make<Array>();
  used->append("no keyword");
  used->append(Keyword::initWithString("no key"));
  for (const Value& key : keysOfAllKinds()) {
    used->append(Keyword::initWithDictionary(Dictionary{{"Key", key}}));
  }
  archiver.encodeObject(archivedAs<KeywordMgr>({{"UsedKeywords", used}}));
  const Ref<KeywordMgr> manager = NSUnarchiver::initForReadingWithData(archiver.archivedData())
                                      ->decodeObject()
                                      .object<KeywordMgr>();
  std::vector<Value> asked = keysOfAllKinds();
  asked.insert(asked.end(), {Value(), Value(8), Value(Key::initWithKey(8)), Value("x")});
  for (const Value& key : asked) {
    Ref<Keyword> walked;
    for (const Value& element : *manager->objectForKey("UsedKeywords").array()) {
      const Ref<Keyword> keyword = element.object<Keyword>();
      if (!walked && keyword && !keyword->key().isNothing() && keyword->key() == key) {
        walked = keyword;
      }
    }
    EXPECT_EQ(manager->keywordForKeyNumber(key), walked) << key.description();
  }
}

}  // namespace
}  // namespace mrziphoto

#include <MRZiPhoto/albums/KeywordMgr.h>
#include <MRZiPhoto/photos/Key.h>

#include "support/ArchivedAs.h"
#include "support/KeyValueAnswers.h"
#include "support/StandInDatabase.h"
#include "support/Testing.h"

namespace mrziphoto {
namespace {

Ref<KeywordMgr> managerOver(const Ref<Dictionary>& stored) {
  NSArchiver archiver;
  archiver.encodeObject(make<ArchivedAs<KeywordMgr>>(stored));
  return NSUnarchiver::initForReadingWithData(archiver.archivedData())
      ->decodeObject()
      .object<KeywordMgr>();
}

Ref<Keyword> keyword(std::string_view text, const Value& key) {
  return Keyword::initWithDictionary(Dictionary{{"String", text}, {"Key", key}});
}

TEST(Keyword, ComesFromTextsDictionariesAndAnythingElse) {
  CollectedLog log;
  const Ref<Keyword> birthday = Keyword::initWithString("Birthday");
  EXPECT_EQ(birthday->string(), "Birthday");
  EXPECT_EQ(birthday->keyword(), "Birthday");
  EXPECT_TRUE(birthday->key().isNothing());
  EXPECT_TRUE(birthday->keyValue().isNothing());
  EXPECT_EQ(keyword("x", Key::initWithKey(3))->keyValue(), Value(3));
  expectAnswers(*keyword("x", Key::initWithKey(3)),
                {{"key", Key::initWithKey(3)}, {"keyValue", 3}, {"keyword", "x"}, {"string", "x"}});
  EXPECT_EQ(keyword("x", 3)->keyValue(), Value(3));
  EXPECT_TRUE(log.lines().empty());
  EXPECT_EQ(Keyword::initWithString(5)->string(), std::nullopt);
  EXPECT_EQ(log.lines(), Texts{"Don't know how to init Keyword from 5'"});
}

TEST(Keyword, ShowsTheFavouriteByItsName) {
  const Ref<Keyword> favourite = Keyword::initWithString("_Favorite_");
  EXPECT_EQ(favourite->string(), "_Favorite_");
  EXPECT_NE(favourite->keyword(), "_Favorite_") << "the string tables supply a text";
}

TEST(KeywordMgr, ListsOneEntryAndSearchesTheOther) {
  const Ref<KeywordMgr> manager = managerOver(
      dictionary({{"KeywordList", list({keyword("a", 1), "b", dictionary({{"String", "c"}})})},
                  {"UsedKeywords", list({"text", keyword("used", 1), keyword("later", 1),
                                         keyword("object", Key::initWithKey(2))})}}));
  expectAnswers(*manager, {{"count", 3}, {"keywords", manager->keywords().value()}});
  EXPECT_EQ(manager->keywords()[2]->string(), "c");
  EXPECT_TRUE(manager->keywords().isSameList(manager->keywords()));
  ASSERT_TRUE(manager->keywordForKeyNumber(1));
  EXPECT_EQ(manager->keywordForKeyNumber(1)->string(), "used");
  EXPECT_FALSE(manager->keywordForKeyNumber(2)) << "a Key equals no bare number";
  EXPECT_TRUE(manager->keywordForKeyNumber(Key::initWithKey(2)));
  EXPECT_FALSE(manager->keywordForKeyNumber(3));
  EXPECT_EQ(managerOver(dictionary({{"UsedKeywords", list({"x"})}}))->count(), 1U);
  EXPECT_EQ(managerOver(dictionary({}))->count(), 0U);
}

}  // namespace
}  // namespace mrziphoto

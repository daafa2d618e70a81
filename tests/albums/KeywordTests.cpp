#include <MRZiPhoto/albums/Keyword.h>
#include <MRZiPhoto/photos/Key.h>

#include "support/ArchivedAs.h"
#include "support/KeyValueAnswers.h"
#include "support/StandInDatabase.h"

namespace mrziphoto {
namespace {

Ref<KeywordMgr> managerOver(const Ref<Dictionary>& stored) {
  return throughArchive(make<ArchivedAs<KeywordMgr>>(stored)).object<KeywordMgr>();
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

TEST(KeywordMgr, FindsTheFirstKeywordWhoseKeyIsEqual) {
  const Value more = throughArchive(archivedAs<Key>({{"Key", 7}, {"More", 1}}));
  const Ref<Array> used = list({"no keyword", Keyword::initWithString("no key")});
  const std::vector<Value> keys{7,        Key::initWithKey(7),
                                -1,       4294967295U,
                                7.5,      "7",
                                more,     std::uint64_t{1} << 63,
                                7.0,      Key::initWithKeyValue("7"),
                                Value(0), Key::initWithKeyValue(-1)};
  for (const Value& key : keys) {
    used->append(keyword(std::to_string(used->size()), key));
  }
  const Ref<KeywordMgr> manager = managerOver(dictionary({{"UsedKeywords", used}}));
  for (const auto& [key, found] : Rows<Value, std::string>{{7, "2"},
                                                           {7.0, "2"},
                                                           {Decimal{70, -1}, "2"},
                                                           {Key::initWithKey(7), "3"},
                                                           {Key::initWithKeyValue(7.0), "3"},
                                                           {-1, "4"},
                                                           {-1.0, "4"},
                                                           {4294967295U, "5"},
                                                           {7.5, "6"},
                                                           {"7", "7"},
                                                           {more, "8"},
                                                           {std::uint64_t{1} << 63, "9"},
                                                           {Key::initWithKeyValue("7"), "11"},
                                                           {0, "12"},
                                                           {false, "12"},
                                                           {Key::initWithKeyValue(-1), "13"},
                                                           {Value(), ""},
                                                           {8, ""},
                                                           {Key::initWithKey(8), ""},
                                                           {"x", ""}}) {
    const Ref<Keyword> answer = manager->keywordForKeyNumber(key);
    EXPECT_EQ(answer ? answer->string().value_or("?") : "", found) << key.description();
  }
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

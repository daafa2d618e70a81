#include <MRZiPhoto/photos/ImageRec.h>
#include <MRZiPhoto/photos/Key.h>

#include "support/ArchivedAs.h"
#include "support/KeyValueAnswers.h"
#include "support/StandInDatabase.h"

namespace mrziphoto {
namespace {

TEST(Key, HoldsTheWholeUnsignedRange) {
  for (const auto& [number, text] : {std::pair{0U, "0"}, {7U, "7"}, {4294967295U, "4294967295"}}) {
    const Ref<Key> key = Key::initWithKey(number);
    EXPECT_EQ(key->stringValue(), text);
    EXPECT_EQ(key->plainNumber(), number);
    EXPECT_TRUE(key->isEqual(*Key::initWithKeyString(text)));
    EXPECT_EQ(key->hash(), Key::initWithKeyString(text)->hash());
  }
  // Texts that are no plain numbers: leading digits count.
  for (const auto& [text, number] :
       {std::pair{"12abc", 12U}, {"", 0U}, {"abc", 0U}, {"-5", 0U}, {"99999999999", 4294967295U}}) {
    EXPECT_EQ(Key::initWithKeyString(text)->plainNumber(), number) << text;
  }
}

TEST(Key, EqualsByItsWholeDictionary) {
  const Ref<Key> made = Key::initWithKey(7);
  const Value again = throughArchive(made);
  ASSERT_TRUE(again.object<Key>());
  EXPECT_TRUE(made->isEqual(*again.object<Key>()));
  EXPECT_EQ(made->hash(), again.object<Key>()->hash());
  EXPECT_TRUE(made->isEqual(*Key::initWithKeyValue(7.0)));
  EXPECT_FALSE(made->isEqual(*Key::initWithKeyValue("7")));
  EXPECT_EQ(made->description(), "Key: {\n    Key = 7;\n}");
  // What a host sets in the dictionary is what the key is.
  made->key()->set("Key", 9);
  EXPECT_EQ(made->value(), Value(9));
  EXPECT_EQ(made->plainNumber(), 9);
  EXPECT_TRUE(made->isEqual(*Key::initWithKey(9)));
  expectAnswers(*made, {{"key", dictionary({{"Key", 9}})}, {"stringValue", "9"}, {"value", 9}});
}

TEST(Key, WithoutAValueRaises) {
  const Key empty;
  EXPECT_EQ(exceptionOf([&] { static_cast<void>(empty.stringValue()); }),
            "NSInternalInconsistencyException - Key with no Key value");
}

TEST(ImageRec, PrefersItsImageSource) {
  const Ref<ImageRec> info = ImageRec::init();
  expectAnswers(*info, {{"fileName", {}},
                        {"imageHeight", 0.0F},
                        {"imageWidth", 0.0F},
                        {"rotation", 0.0F},
                        {"imageSource", {}},
                        {"directoryKey", {}}});
  EXPECT_EQ(info->imageWidth(), Value(0.0F));
  info->setFileName({});
  EXPECT_EQ(info->fileName(), std::nullopt);
  info->setFileName("a.jpg");
  info->setImageWidth(640.0F);
  info->setImageWidth({});
  EXPECT_EQ(info->fileName(), "a.jpg");
  EXPECT_EQ(info->imageWidth().intValue(), 640);
  info->setObjectForKey(make<DBSource>(), ImageRec::kImageSource);
  EXPECT_EQ(info->fileName(), std::nullopt) << "the source decides, even without a name";

  const Value source =
      throughArchive(archivedAs<ImageSource>({{"Directory", 8}, {"Filename", "s"}}));
  expectAnswers(*source.object(), {{"directoryKey", 8}, {"filename", "s"}});
  const Ref<ImageRec> full = ImageRec::initWithDictionary(dictionary({{"Key", 1}, {"Roll", 2}}));
  full->setObjectForKey(source, "ImageSource");
  full->setImageHeight(3);
  full->setImageWidth(4);
  full->setRotation(5);
  full->setDate(Date{6});
  expectAnswers(*full, {{"key", 1},
                        {"rollKey", 2},
                        {"imageHeight", 3},
                        {"imageWidth", 4},
                        {"rotation", 5},
                        {"date", Date{6}},
                        {"fileName", "s"},
                        {"imageSource", source},
                        {"directoryKey", 8}});
}

TEST(AttributeMgr, KeepsAttributesApartFromItsOwnEntries) {
  const Ref<AttributeMgr> store = AttributeMgr::init();
  EXPECT_TRUE(store->attributeForKey("Caption").isNothing());
  EXPECT_FALSE(store->attributes());
  store->setAttributeForKey({}, "Caption");
  ASSERT_TRUE(store->attributes());
  EXPECT_TRUE(store->attributes()->empty());
  store->setAttributeForKey("Köln", "Caption");
  EXPECT_EQ(store->attributeForKey("Caption").text(), "Köln");
  EXPECT_EQ(store->modificationDate(), std::nullopt);
  // The name as some libraries misspell it counts only where the right one is missing.
  store->storedDictionary()->set("Modication_Date", Date{4});
  EXPECT_EQ(store->modificationDate(), Date{4});
  store->setModificationDate(Date{5});
  store->setImageUserData(Data::copyOf("block"));
  expectAnswers(*store, {{"attributes", store->attributes()},
                         {"imageUserData", Data::copyOf("block")},
                         {"modificationDate", Date{5}}});
}

TEST(ArchivedStores, LogNewerVersionsAndReadOn) {
  const Ref<ImageRec> info = ImageRec::init();
  info->setFileName("a.jpg");
  const Ref<AttributeMgr> misspelt = AttributeMgr::init();
  misspelt->setAttributeForKey("x", "Caption");
  for (const auto& [object, versionName, version, lines] :
       Rows<Value, std::string_view, std::uint32_t, Texts>{
           {info, "ImageRec", 4, {}},
           {info, "ImageRec", 5, {"ImageRec version 5"}},
           {misspelt, "AttributeMgr", 2, {"AttributeMgr version 2"}},
           {make<ImageRefKey>(), "Key", 2, {"ImageRefKey version 2"}}}) {
    CollectedLog log;
    NSArchiver archiver;
    archiver.setVersionForClassName(version, versionName);
    archiver.encodeObject(object);
    const Value again =
        NSUnarchiver::initForReadingWithData(archiver.archivedData())->decodeObject();
    EXPECT_EQ(log.lines(), lines) << versionName;
    ASSERT_TRUE(again.object<ArchivedRecord>());
    EXPECT_EQ(again.description(), object.description());
  }
}

}  // namespace
}  // namespace mrziphoto

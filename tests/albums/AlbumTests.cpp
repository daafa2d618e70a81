#include <MRZiPhoto/albums/AlbumKinds.h>

#include "support/ArchivedAs.h"
#include "support/KeyValueAnswers.h"
#include "support/StandInDatabase.h"

namespace mrziphoto {
namespace {

template <class Kind = Album>
Ref<Kind> named(std::string_view name) {
  Ref<Kind> album = Album::init<Kind>();
  album->setAlbumName(name);
  return album;
}

/// An album of that kind with these children.
template <class Kind>
Ref<Kind> containing(std::vector<Value> children) {
  Ref<Kind> album = Album::init<Kind>();
  album->storedDictionary()->set(Album::kChildren, make<Array>(std::move(children)));
  return album;
}

/// The same, the way archives bring it.
template <class Kind>
Ref<Kind> withChildren(std::vector<Value> children) {
  return throughArchive(containing<Kind>(std::move(children))).template object<Kind>();
}

template <class Kind>
std::string names(const List<Kind>& albums) {
  std::string result;
  for (const Ref<Kind>& album : albums) {
    result += album->albumName().value_or("?");
  }
  return result;
}

TEST(Album, EveryKindComesBackFromAnArchiveAndLogsNewerVersions) {
  EXPECT_EQ(albumKinds().size(), 13U);
  for (const AlbumKind* kind : albumKinds()) {
    const auto album = Ref<Object>::adopt(kind->make()).as<Album>();
    ASSERT_TRUE(album);
    EXPECT_EQ(album->defaultAlbumName(), kind->defaultName);
    album->setAlbumName("n");
    NSArchiver archiver;
    archiver.setVersionForClassName(kind->highestVersion + 1, kind->name);
    archiver.encodeObject(album);
    CollectedLog log;
    const Ref<Album> again = NSUnarchiver::initForReadingWithData(archiver.archivedData())
                                 ->decodeObject()
                                 .object<Album>();
    ASSERT_TRUE(again) << kind->name;
    EXPECT_EQ(&again->objectClass(), kind);
    EXPECT_EQ(again->title(), "n");
    ASSERT_FALSE(log.lines().empty());
    std::string line =
        std::string(kind->name) + " version " + std::to_string(kind->highestVersion + 1);
    if (kind == &PublishedAlbum::kClass) {
      line += " isKeyed = 0";
    }
    EXPECT_EQ(log.lines()[0], line);
    EXPECT_EQ(log.lines().size(), kind == &DynamicAlbum::kClass ? 2U : 1U);
  }
}

TEST(Album, ADerivedKindLogsItsBaseClassUnderItsOwnName) {
  NSArchiver archiver;
  archiver.setVersionForClassName(10, "Album");
  archiver.encodeObject(Album::init<RollAlbum>());
  CollectedLog log;
  static_cast<void>(NSUnarchiver::initForReadingWithData(archiver.archivedData())->decodeObject());
  EXPECT_EQ(log.lines(), Texts{"RollAlbum version 10"});
}

TEST(Album, ComesFromAlbumData) {
  EXPECT_EQ(Album::init<ArchiveAlbum>()->albumName(), "Photo Library");
  EXPECT_EQ(Album::init<LastImportAlbum>()->albumName(), "Last Import");
  EXPECT_EQ(Album::init<RollAlbum>()->albumName(), "Album");

  const Ref<Album> trip =
      Album::initWithDictionary<Album>(Dictionary{{"AlbumName", "Trip"},
                                                  {"AlbumId", 7},
                                                  {"Annotation", "a"},
                                                  {"KeyList", list({"12", -1, "x"})}});
  EXPECT_EQ(trip->albumName(), "Trip");
  EXPECT_EQ(trip->key(), Value(7));
  EXPECT_EQ(trip->comments(), "a");
  EXPECT_EQ(trip->photoKeys()->keyNumbers(), (std::vector<std::uint32_t>{12, 4294967295U, 0}));
  EXPECT_TRUE(trip->photos().empty());
  const Ref<AttributeMgr> attributes = AttributeMgr::init();
  attributes->setAttributeForKey("b", AttributeMgr::kAlbumAnnotation);
  trip->setAttributes(attributes);
  EXPECT_EQ(trip->annotation(), "b");

  const Ref<Album> both =
      Album::initWithDictionary<Album>(Dictionary{{"AlbumKey", 1}, {"AlbumId", 2}});
  EXPECT_EQ(both->key(), Value(1));
  const Value key = Key::initWithKey(3);
  EXPECT_EQ(Album::initWithDictionary<Album>(Dictionary{{"AlbumKey", key}, {"AlbumId", 2}})->key(),
            key);
  EXPECT_EQ(both->albumName(), "Album");
  EXPECT_TRUE(both->photoKeys()->keyNumbers().empty());

  // What is of another kind counts as missing.
  const Value odd = make<Array>();
  const Ref<RollAlbum> roll =
      Album::initWithDictionary<RollAlbum>(Dictionary{{"AlbumName", "Alpha"},
                                                      {"RollName", 5},
                                                      {"AlbumKey", odd},
                                                      {"AlbumId", 7},
                                                      {"RollDateAsTimerInterval", "abc"},
                                                      {"KeyList", list({odd, 12})}});
  EXPECT_EQ(roll->albumName(), "Alpha");
  EXPECT_EQ(roll->key(), Value(7));
  EXPECT_EQ(roll->date(), std::nullopt);
  EXPECT_EQ(roll->photoKeys()->keyNumbers(), std::vector<std::uint32_t>{12});
}

TEST(Album, FindsItsPhotosThroughItsDatabase) {
  const Ref<Album> album =
      Album::initWithDictionary<Album>(Dictionary{{"KeyList", list({"7", "9", "8"})}});
  auto database = std::make_unique<StandInDatabase>();
  database->photos = {{7, ImageRecRef::init()}, {8, ImageRecRef::init()}};
  EXPECT_TRUE(album->photos().empty());
  album->setDatabase(database.get());
  ASSERT_EQ(album->photos().size(), 2U);
  EXPECT_EQ(album->photos()[0], database->photos[7]);
  EXPECT_EQ(album->photos()[1], database->photos[8]);
  EXPECT_EQ(album->photoKeys()->photos().size(), 2U);
  // A host may keep the album, and keys that are the album's no more.
  const Ref<KeyMgr> keys = album->photoKeys();
  album->storedDictionary()->set(Album::kKeys, {});
  database.reset();
  EXPECT_EQ(album->database(), nullptr);
  EXPECT_EQ(keys->database(), nullptr);
  EXPECT_TRUE(keys->photos().empty());
}

TEST(Album, EveryClassAnswersItsOperationsByName) {
  StandInDatabase database;
  database.itself = Key::initWithKey(1);
  const Ref<ImageRecRef> photo = ImageRecRef::init();
  database.photos[7] = photo;
  const Ref<Array> photos = list({photo});
  const Ref<AttributeMgr> attributes = AttributeMgr::init();
  attributes->setModificationDate(Date{4});
  const auto filled = [&](const Ref<Album>& album) {
    album->storedDictionary()->set(Album::kKey, 5);
    album->storedDictionary()->set(Album::kRoll, 6);
    album->storedDictionary()->set(Album::kAnnotation, "note");
    album->setAttributes(attributes);
    album->storedDictionary()->set(Album::kKeys, KeyMgr::initWithKeyNumbers({7}));
    album->setDatabase(&database);
  };
  for (const AlbumKind* kind : albumKinds()) {
    const auto album = Ref<Object>::adopt(kind->make()).as<Album>();
    album->setAlbumName("name");
    filled(album);
    const bool asksRolls = kind == &KeywordAlbum::kClass;
    expectAnswers(*album, {{"albumId", 5},
                           {"albumName", "name"},
                           {"annotation", "note"},
                           {"attributes", attributes},
                           {"children", make<Array>()},
                           {"comments", asksRolls ? Value() : Value("note")},
                           {"database", Key::initWithKey(1)},
                           {"defaultAlbumName", kind->defaultName},
                           {"key", 5},
                           {"modificationDate", Date{4}},
                           {"photoKeys", album->photoKeys()},
                           {"photos", photos},
                           {"roll", 6},
                           {"rollKey", 6},
                           {"title", "name"}});
    album->setDatabase(nullptr);
    EXPECT_TRUE(album->valueForKey("database").isNothing());
  }
  const Ref<RollAlbum> roll = Album::init<RollAlbum>();
  const Ref<ArchiveAlbum> archive = containing<ArchiveAlbum>({roll});
  const Ref<Album> plain = named("A");
  filled(roll);
  database.rolls[5] = photo;
  photo->setImageInfoForKey(dictionary({{"DateAsTimerInterval", 9}}), 5);
  expectAnswers(*roll, {{"_rollRecRef", photo}, {"archiveDate", Date{9}}, {"date", {}}});
  expectAnswers(*archive, {{"rolls", list({roll})}});
  expectAnswers(*containing<FolderAlbum>({plain, roll}), {{"albums", list({plain})}});
  const Ref<KeyMgr> keys = KeyMgr::initWithKeyNumbers({7});
  keys->setDatabase(&database);
  expectAnswers(*keys, {{"database", Key::initWithKey(1)},
                        {"imageKeys", list({Key::initWithKey(7)})},
                        {"photos", photos}});
  expectAnswers(*throughArchive(archivedAs<Filter>({{"a", 1}})).object(),
                {{"arguments", dictionary({{"a", 1}})}});
}

TEST(RollAlbum, AsksItsRollRecordBeforeItself) {
  const Ref<RollAlbum> roll =
      Album::initWithDictionary<RollAlbum>(Dictionary{{"AlbumName", "Alpha"},
                                                      {"RollName", "Beta"},
                                                      {"AlbumId", 5},
                                                      {"RollDateAsTimerInterval", 0}});
  EXPECT_EQ(roll->albumName(), "Beta");
  EXPECT_EQ(roll->modificationDate(), Date{0});
  EXPECT_EQ(roll->date(), Date{0});

  StandInDatabase database;
  const Ref<ImageRecRef> record = ImageRecRef::init();
  record->setImageInfoForKey(dictionary({{"Caption", "Gamma"}, {"DateAsTimerInterval", 9}}), 5);
  record->setDatabase(&database);
  database.rolls[5] = record;
  roll->setDatabase(&database);
  EXPECT_EQ(roll->albumName(), "Gamma");
  EXPECT_EQ(roll->title(), "Gamma");
  EXPECT_EQ(roll->comments(), std::nullopt);
  EXPECT_EQ(roll->archiveDate(), Date{9});
  EXPECT_EQ(roll->valueForKey("archiveDate").date(), Date{9});
}

TEST(FolderAlbum, ListsPlainAlbumsWithFoldersFlattened) {
  const Ref<FolderAlbum> inner = withChildren<FolderAlbum>({named("C")});
  const Ref<FolderAlbum> outer =
      withChildren<FolderAlbum>({named("A"), named<KeywordAlbum>("K"),
                                 withChildren<FolderAlbum>({named("B"), inner}), "text"});
  EXPECT_EQ(names(outer->albums()), "ABC");
  EXPECT_EQ(outer->children().size(), 3U);
  // A folder that stands there twice is listed twice; one inside itself is not.
  EXPECT_EQ(names(withChildren<FolderAlbum>({inner, named("D"), inner})->albums()), "CDC");
  const Ref<FolderAlbum> circle = named<FolderAlbum>("circle");
  const Ref<Array> inCircle = list({named("E"), circle, inner});
  circle->storedDictionary()->set(Album::kChildren, inCircle);
  EXPECT_EQ(names(circle->albums()), "EC");
  circle->storedDictionary()->set(Album::kChildren, {});

  Ref<FolderAlbum> doubled = inner;
  for (int i = 0; i < 60; ++i) {
    doubled = containing<FolderAlbum>({doubled, doubled});
  }
  Limits limits;
  limits.flattenedAlbums = 1000;
  const Limits::Scope scope(limits);
  CollectedLog log;
  EXPECT_EQ(doubled->albums().size(), 316U);
  EXPECT_EQ(log.lines(), Texts{"FolderAlbum 'Album' holds too many albums: "
                               "316 of them are listed"});
}

TEST(ArchiveAlbum, ListsItsRollsOnce) {
  const Ref<ArchiveAlbum> archive =
      withChildren<ArchiveAlbum>({named<RollAlbum>("1"), named("X"), named<RollAlbum>("2")});
  EXPECT_EQ(names(archive->rolls()), "12");
  archive->addRoll(named<RollAlbum>("3"));
  EXPECT_EQ(names(archive->rolls()), "123");
  const Ref<ArchiveAlbum> added = withChildren<ArchiveAlbum>({named<RollAlbum>("1")});
  added->addRoll(named<RollAlbum>("9"));
  EXPECT_EQ(names(added->rolls()), "9") << "added rolls stand in for the children's";
  EXPECT_TRUE(Album::init<ArchiveAlbum>()->rolls().empty());
}

TEST(ArchiveAlbum, HandsItsDatabaseToEveryAlbumInIt) {
  const Ref<ArchiveAlbum> archive = withChildren<ArchiveAlbum>(
      {named<RollAlbum>("1"), withChildren<ArchiveAlbum>({named("in another")})});
  archive->addRoll(named<RollAlbum>("added"));
  const Ref<Album> direct = archive->children()[0];
  const Ref<Album> deeper = archive->children()[1]->children()[0];
  StandInDatabase database;
  archive->setDatabase(&database);
  EXPECT_EQ(direct->database(), &database);
  EXPECT_EQ(deeper->database(), &database);
  EXPECT_EQ(archive->rolls()[0]->database(), &database);
  direct->setDatabase(nullptr);
  archive->setDatabase(&database);
  EXPECT_EQ(direct->database(), &database) << "the same database again";
  archive->setDatabase(nullptr);
  EXPECT_EQ(archive->rolls()[0]->database(), nullptr);

  Ref<ArchiveAlbum> doubled = archive;
  for (int i = 0; i < 60; ++i) {
    doubled = containing<ArchiveAlbum>({doubled, doubled});
  }
  doubled->setDatabase(&database);
  EXPECT_EQ(doubled->children()[1]->database(), &database);
}

TEST(Album, AlbumFilesThatHoldNoAlbumGiveNothing) {
  const TemporaryFolder folder;
  folder.write(".DS_Store", "x");
  folder.write("text", "x");
  folder.write("number", archiveBytes(7));
  const CollectedLog log;
  for (const std::string_view name : {"/.DS_Store", "/text", "/number"}) {
    EXPECT_FALSE(Album::albumWithContentsOfFile(folder.path() + std::string(name)));
  }
  EXPECT_EQ(log.lines(), Texts{"NSInvalidArgumentException - '" + folder.path() +
                               "/text' is no archive = (null)"});
  EXPECT_FALSE(Album::albumWithContentsOfFile(folder.path() + "/missing"));
  EXPECT_FALSE(Album::albumWithContentsOfFile(""));
  EXPECT_EQ(log.lines().size(), 2U);
}

TEST(KeyMgr, ReadsThePackedForm) {
  using namespace std::string_view_literals;
  for (const auto& [packed, numbers, lines] :
       Rows<std::string_view, std::vector<std::uint32_t>, Texts>{
           {"\0\0\0\2\0\0\0\x10\0\0\0\x20"sv, {16, 32}, {}},
           {"\0\0\0\2\0\0\0\x10\0\0\0\x20\0\0\0\x30"sv,
            {16, 32},
            {"KeyMgr count = 2, but entries = 4"}},
           {"\xFF\xFF\xFF\xFF\0\0\0\x10\0"sv, {16}, {"KeyMgr count = -1, but entries = 2"}},
           {"\0\0\0"sv, {}, {}}}) {
    const Ref<KeyMgr> keys =
        throughArchive(archivedAs<KeyMgr>({{"KeyList", Data::copyOf(packed)}})).object<KeyMgr>();
    CollectedLog log;
    EXPECT_EQ(keys->imageKeys().size(), numbers.size());
    EXPECT_EQ(log.lines(), lines);
    EXPECT_EQ(keys->keyNumbers(), numbers);
  }
}

TEST(KeyMgr, ReadsArchivedKeys) {
  const auto withoutNumber = make<ArchivedAs<Key>>(make<Dictionary>());
  const auto listed = make<Array>(
      std::vector<Value>{Key::initWithKey(5), "6", withoutNumber, Key::initWithKey(0xFFFFFFFF)});
  const Ref<KeyMgr> keys = throughArchive(archivedAs<KeyMgr>({{"Keys", listed}})).object<KeyMgr>();
  EXPECT_EQ(keys->imageKeys().size(), 3U) << "a text is no key";
  EXPECT_EQ(keys->imageKeys()[0]->stringValue(), "5");
  EXPECT_EQ(keys->keyNumbers(), (std::vector<std::uint32_t>{5, 0xFFFFFFFF}));
}

TEST(KeyMgr, KeepsItsKeysInOnePlace) {
  // What a host sets in a key or in the archived list is what the numbers tell.
  const Ref<KeyMgr> numbers = KeyMgr::initWithKeyNumbers({4, 5});
  numbers->imageKeys()[1]->key()->set("Key", 9);
  EXPECT_EQ(numbers->keyNumbers(), (std::vector<std::uint32_t>{4, 9}));
  const Ref<KeyMgr> archived = throughArchive(numbers).object<KeyMgr>();
  EXPECT_EQ(archived->keyNumbers(), (std::vector<std::uint32_t>{4, 9}));
  archived->storedDictionary()->set("Keys", list({Key::initWithKey(1)}));
  EXPECT_EQ(archived->keyNumbers(), (std::vector<std::uint32_t>{1}));
  EXPECT_EQ(archived->imageKeys().size(), 1U);
  EXPECT_EQ(KeyMgr::initWithKeys(List<Key>({make<Key>(), nullptr}))->keyNumbers().size(), 0U);
  const List<Key> list({Key::initWithKey(4), Key::initWithKey(9)});
  EXPECT_TRUE(KeyMgr::initWithKeys(list)->imageKeys().isSameList(list));
}

}  // namespace
}  // namespace mrziphoto

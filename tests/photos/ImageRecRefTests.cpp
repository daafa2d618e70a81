#include <MRZiPhoto/exif/TVQiPhotoUserData.h>
#include <MRZiPhoto/photos/ImageRecRef.h>
#include <MRZiPhoto/photos/detail/PhotoReader.h>
#include <MRZiPhoto/table/detail/PhotoFacts.h>

#include "support/ArchivedAs.h"
#include "support/KeyValueAnswers.h"
#include "support/StandInDatabase.h"

namespace mrziphoto {
namespace {

class ImageRecRefTests : public testing::Test {
 protected:
  Ref<ImageRecRef> photoOf(const Ref<Dictionary>& imageInfo, std::uint32_t key = 42) {
    Ref<ImageRecRef> photo = ImageRecRef::init();
    photo->setImageInfoForKey(imageInfo, key);
    photo->setDatabase(&database);
    return photo;
  }
  Ref<ImageRecRef> photoOf(Entries imageInfo, std::uint32_t key = 42) {
    return photoOf(dictionary(imageInfo), key);
  }
  /// A record of the archive generation.
  Ref<ImageRecRef> archivedPhoto(Entries stored) {
    Ref<ImageRecRef> photo = throughArchive(archivedAs<ImageRecRef>(stored)).object<ImageRecRef>();
    photo->setDatabase(&database);
    return photo;
  }
  StandInDatabase database;
};

/// Stores in which every entry tells the number that it is given.
Ref<ImageRec> infoStore(int number) {
  const std::string text = std::to_string(number);
  Ref<ImageRec> info = ImageRec::initWithDictionary(
      dictionary({{"Key", Key::initWithKeyValue(number)}, {"Roll", number + 10}}));
  info->setDate(Date{number + 100.0});
  info->setFileName(text + ".jpg");
  info->setRotation(number);
  info->setImageWidth(number);
  return info;
}

Ref<AttributeMgr> attributesStore(int number) {
  const std::string text = std::to_string(number);
  Ref<AttributeMgr> attributes = AttributeMgr::init();
  attributes->setAttributes(dictionary({{"ArchiveDate", Date{number + 200.0}},
                                        {"ModDate", Date{number + 300.0}},
                                        {"Annotation", "a" + text},
                                        {"Caption", "c" + text},
                                        {"Ext", "e" + text},
                                        {"OrigExt", "o" + text},
                                        {"OrigFileName", "f" + text},
                                        {"FileSize", number},
                                        {"KeyWords", "k" + text}}));
  return attributes;
}

TEST_F(ImageRecRefTests, AsksItsSourcesInOrder) {
  database.folders = {{8, "archived/Data"}, {7, "handed"}};
  // The sources: 1 the archived dictionary, 2 the image info, 3 the record's own stores, 4 those
  // that were handed in.
  const auto made = [&](std::string_view sources) {
    const auto has = [&](char source) { return sources.find(source) != std::string_view::npos; };
    Ref<ImageRecRef> photo = has('1') ? archivedPhoto({{"Key", Key::initWithKey(1)},
                                                       {"Directory", 8},
                                                       {"Roll", 11},
                                                       {"Date", Date{101}}})
                                      : ImageRecRef::init();
    photo->setDatabase(&database);
    if (has('2')) {
      photo->setImageInfoForKey(dictionary({{"ImagePath", "/old/Library/i/2.jpg"},
                                            {"OriginalPath", "/x/f2"},
                                            {"Roll", 12},
                                            {"DateAsTimerInterval", 202},
                                            {"ModDateAsTimerInterval", 302},
                                            {"Comment", "a2"},
                                            {"Caption", "c2"},
                                            {"Keywords", list({2})}}),
                                2);
    }
    if (has('3')) {
      photo->setInfo(infoStore(3));
      photo->setImageAttributes(attributesStore(3));
    }
    if (has('4')) {
      const Ref<ImageRec> info = infoStore(4);
      info->setObjectForKey(archivedAs<ImageSource>({{"Directory", 7}, {"Filename", "4.jpg"}}),
                            ImageRec::kImageSource);
      photo->setDBInfo(throughArchive(info).object<ImageRec>());
      photo->setDBImageAttributes(attributesStore(4));
    }
    return photo;
  };
  const Value none;
  const Value two = list({2});
  static constexpr std::string_view kSources[]{"1", "2", "4", "13", "23", "1234"};
  for (const auto& [operation, answers] :
       Rows<std::string_view, std::array<Value, std::size(kSources)>>{
           {"photoId", {1, 2, 4, 1, 2, 2}},
           {"keyStringValue", {"1", "2", "4", "1", "2", "2"}},
           {"directoryKey", {8, none, 7, 8, none, 8}},
           {"rollKey", {11, 12, 14, 11, 13, 11}},
           {"date", {Date{101}, none, Date{104}, Date{101}, Date{103}, Date{101}}},
           {"archiveDate", {none, Date{202}, Date{204}, Date{203}, Date{203}, Date{203}}},
           {"modificationDate", {none, Date{302}, Date{304}, Date{303}, Date{303}, Date{303}}},
           {"annotation", {none, "a2", "a4", "a3", "a3", "a3"}},
           {"comments", {none, "a2", "a4", "a3", "a3", "a3"}},
           {"caption", {none, "c2", "c4", "c3", "c3", "c3"}},
           {"title", {none, "c2", "c4", "c3", "c3", "c3"}},
           {"extension", {"?ext?", "?ext?", "e4", "e3", "e3", "e3"}},
           {"originalExtension", {"?origExt?", "?origExt?", "o4", "o3", "o3", "o3"}},
           {"originalFilename", {none, "f2", "f4", "f3", "f3", "f3"}},
           {"fileSize", {none, none, 4, 3, 3, 3}},
           {"rotation", {none, none, 4, 3, 3, 3}},
           {"imageWidth", {none, none, 4, 3, 3, 3}},
           {"imageHeight", {none, none, 0.0F, 0.0F, 0.0F, 0.0F}},
           {"keywords", {make<Array>(), two, "k4", "k3", "k3", "k3"}},
           {"_filename", {"1.?ext?", "2.jpg", "4.jpg", "3.jpg", "3.jpg", "3.jpg"}},
           {"directory",
            {"/new/Library/archived/Data", "/new/Library/i", "/new/Library/handed",
             "/new/Library/archived/Data", "/new/Library/i", "/new/Library/i"}},
           {"_imageDirectory",
            {"/new/Library/archived", "/new/Library/i", "/new/Library/handed",
             "/new/Library/archived", "/new/Library/i", "/new/Library"}},
           {"relativeDirectory",
            {"archived/Data", "i", "handed", "archived/Data", "i", "archived/Data"}},
           {"filename",
            {"archived/1.?ext?", "i/2.jpg", "handed/4.jpg", "archived/3.jpg", "i/3.jpg",
             "archived/3.jpg"}},
           // `directory` moves the archive path to the library folder; `imagePath` leaves that to
           // `updateImagePath`.
           {"imagePath",
            {"/new/Library/archived/1.?ext?", "/old/Library/i/2.jpg", "/new/Library/handed/4.jpg",
             "/new/Library/archived/3.jpg", "/old/Library/i/2.jpg", "/old/Library/i/2.jpg"}}}) {
    for (std::size_t i = 0; i < std::size(kSources); ++i) {
      const Value answer = made(kSources[i])->valueForKey(operation);
      EXPECT_EQ(answer, answers[i])
          << operation << " of " << kSources[i] << ": " << answer.description();
    }
  }
}

TEST_F(ImageRecRefTests, FindsPicturesWhereTheLibraryLiesNow) {
  database.recorded = "/was";
  for (const auto& [entry, operation, path] :
       Rows<std::string_view, std::string_view, std::string_view>{
           {"ImagePath", "imagePath", "/new/Library/p.jpg"},
           {"ImageThumbnailPath", "thumbnailPath", "/new/Library/p.jpg"},
           {"ThumbPath", "thumbnailPath", "/new/Library/p.jpg"},
           {"ImageOriginalPath", "originalImagePath", "/was/p.jpg"}}) {
    const Ref<ImageRecRef> photo = photoOf({{entry, "/was/p.jpg"}});
    EXPECT_EQ(photo->valueForKey(operation).text(), path) << entry;
  }
  const Ref<ImageRecRef> both = photoOf({{"ImageThumbnailPath", "/was/image.jpg"},
                                         {"ThumbPath", "/was/thumb.jpg"},
                                         {"ImagePath", "/was/a/p.jpg"},
                                         {"OriginalPath", "/was/o.jpg"}});
  EXPECT_EQ(both->thumbnailPath(), "/new/Library/image.jpg");
  EXPECT_EQ(both->recordedOriginalPath(), "/new/Library/o.jpg");
  EXPECT_EQ(both->originalImagePath(), "/new/Library/a/Originals/42.?origExt?");
  EXPECT_TRUE(both->hasBeenEdited());
  const Ref<ImageRecRef> unmoved = photoOf({{"ImagePath", "/was/a/p.jpg"}});
  EXPECT_EQ(unmoved->thumbnailPath(), "/new/Library/a/Thumbs/42.jpg");
}

TEST_F(ImageRecRefTests, KeepsItsEditState) {
  const Ref<Dictionary> imageInfo =
      dictionary({{"ImagePath", "/p.jpg"}, {"ImageOriginalPath", "/p.jpg"}});
  const Ref<ImageRecRef> photo = photoOf(imageInfo);
  EXPECT_FALSE(photo->hasBeenEdited());
  imageInfo->set("ImageOriginalPath", "/o.jpg");
  EXPECT_FALSE(photo->hasBeenEdited());
  EXPECT_TRUE(photoOf(imageInfo)->hasBeenEdited());
}

TEST_F(ImageRecRefTests, AnswersNothingOfOtherKindsOfValues) {
  const Ref<ImageRecRef> photo = photoOf({{"ImagePath", 7},
                                          {"Caption", make<Array>()},
                                          {"Comment", 1.5},
                                          {"DateAsTimerInterval", "soon"},
                                          {"Keywords", "none"}});
  EXPECT_EQ(photo->caption(), std::nullopt);
  EXPECT_EQ(photo->comments(), std::nullopt);
  EXPECT_EQ(photo->archiveDate(), std::nullopt);
  EXPECT_EQ(photo->imagePath(), std::nullopt);
  EXPECT_EQ(photo->directory(), std::nullopt);
  EXPECT_TRUE(photo->keywords().array()->empty());
}

TEST_F(ImageRecRefTests, AsksForARewrittenPathOnceAndSaysWhenThereIsNoFolder) {
  const Ref<ImageRecRef> photo = photoOf(dictionary({}));
  CollectedLog log;
  EXPECT_EQ(photo->directory(), std::nullopt);
  EXPECT_EQ(log.lines(),
            Texts{"ImageRecRef - directory '(null)' does not exist for Key: {\n    Key = 42;\n}"});

  database.recorded = "/was";
  const Ref<Dictionary> imageInfo = dictionary({{"ImagePath", "/was/a/p.jpg"}});
  const Ref<ImageRecRef> moved = photoOf(imageInfo);
  EXPECT_EQ(moved->directory(), "/new/Library/a");
  EXPECT_EQ(moved->directory(), "/new/Library/a");
  EXPECT_EQ(database.updates, 1);

  const Ref<ImageRecRef> alone = ImageRecRef::init();
  alone->setImageInfoForKeyString(imageInfo, "9");
  EXPECT_EQ(alone->imagePath(), std::nullopt) << "without a database nobody rewrites paths";
  EXPECT_EQ(alone->directory(), std::nullopt);
  alone->setDatabase(&database);
  EXPECT_EQ(alone->directory(), "/was/a") << "the one time was without a database";
  EXPECT_EQ(database.updates, 1);
}

TEST_F(ImageRecRefTests, ResolvesLinksInItsFolder) {
  const TemporaryFolder library;
  const std::string root = fs::canonical(library.path()).string();
  fs::create_directories(root + "/real/2004");
  fs::create_directory_symlink(root + "/real", root + "/link");
  database.archive = std::nullopt;
  database.root = root;
  database.folders[8] = "link/2004";
  EXPECT_EQ(photoOf({{"ImagePath", root + "/link/2004/p.jpg"}})->directory(), root + "/real/2004");
  EXPECT_EQ(archivedPhoto({{"Directory", 8}})->directory(), root + "/real/2004");
}

TEST_F(ImageRecRefTests, RelativeFolders) {
  database.archive = std::nullopt;
  database.root = "/Users/a/Pictures/iPhoto Library";
  for (const auto& [imagePath, relative, filename] : Rows<std::string, std::string, std::string>{
           {"/Users/a/Pictures/iPhoto Library/2004/05/06/p.jpg", "2004/05/06", "2004/05/06/p.jpg"},
           {"/Users/a/Pictures/iPhoto Library/p.jpg", "", "p.jpg"},
           {"/elsewhere/x/p.jpg", "elsewhere/x", "elsewhere/x/p.jpg"},
           {"/Users/a/Pictures/iPhoto Library/2004/Data/p.jpg", "2004/Data", "2004/p.jpg"}}) {
    const Ref<ImageRecRef> photo = photoOf({{"ImagePath", imagePath}});
    EXPECT_EQ(photo->relativeDirectory(), relative) << imagePath;
    EXPECT_EQ(photo->filename(), filename) << imagePath;
  }
}

TEST_F(ImageRecRefTests, KeywordsComeAsRecordsKeysOrAsStored) {
  const Ref<Keyword> kids = Keyword::initWithString("Kids");
  database.keywords[3] = kids;
  const auto keywords = [&](std::vector<Value> listed) {
    return photoOf({{"Keywords", make<Array>(std::move(listed))}})->keywords().array();
  };
  ASSERT_EQ(keywords({"3", "77"})->size(), 1U) << "an unknown key is left out";
  EXPECT_EQ((*keywords({"3"}))[0].object(), Ref<Object>(kids));
  EXPECT_EQ(Value(keywords({3, 4})), Value(list({3, 4})));
  EXPECT_TRUE(keywords({})->empty());
  const Ref<ImageRecRef> photo = photoOf(dictionary({}));
  const Ref<AttributeMgr> store = AttributeMgr::init();
  store->setAttributeForKey("as stored", AttributeMgr::kKeyWords);
  photo->setImageAttributes(store);
  EXPECT_EQ(photo->keywords().text(), "as stored");
}

TEST_F(ImageRecRefTests, ReadsStoresBesideThePhoto) {
  const TemporaryFolder library;
  database.root = fs::canonical(library.path()).string();
  database.archive = std::nullopt;
  database.version = 149;
  fs::create_directories(library.path() + "/2004/Data");
  const auto write = [&](const std::string& name, const Value& object) {
    library.write("2004/Data/" + name, archiveBytes(object));
  };
  const Ref<ImageRec> info = ImageRec::init();
  info->setImageWidth(640);
  const Ref<AttributeMgr> attributes = AttributeMgr::init();
  attributes->setAttributeForKey("from the file", AttributeMgr::kCaption);
  write("1", info);
  write("1.attr", attributes);
  library.write("2004/Data/2", "no archive");
  library.write("2004/Data/2.attr", "no archive");
  write("4", attributes);
  write("4.attr", info);
  const Ref<Dictionary> imageInfo =
      dictionary({{"ImagePath", database.root + "/2004/p.jpg"}, {"Caption", "from the list"}});
  // DATA stands for the folder, KEY for the description of the photo's key.
  const std::string place = " for image KEY at " + database.root + "/2004/p.jpg";
  const std::string usingInfo = "ImageRecRef using database INFO" + place;
  const std::string usingAttributes = "Using database attributes" + place;
  const std::string damaged = "NSInvalidArgumentException - 'DATA/2.attr' is no archive = (null)";
  const std::string damagedInfo = "NSInvalidArgumentException - 'DATA/2' is no archive = (null)";
  const std::string missing = "No data for image attributes at DATA/3.attr";
  const std::string otherRoot = "'DATA/4.attr' holds ImageRec in place of AttributeMgr";
  const std::string otherInfo = "'DATA/4' holds AttributeMgr in place of ImageRec";
  // What is logged when both are asked for twice.
  for (const auto& [key, handsStoresIn, caption, width, lines] :
       Rows<std::uint32_t, bool, std::string, Value, Texts>{
           {1, false, "from the file", 640, {}},
           {1, true, "from the file", 640, {}},
           {2, false, "from the list", {}, {damaged, damagedInfo, damaged}},
           {2, true, "c4", 4, {damaged, usingAttributes, damagedInfo, usingInfo}},
           {3, false, "from the list", {}, {missing}},
           {3, true, "from the list", 4, {missing, usingInfo}},
           {4, false, "from the list", {}, {otherRoot, otherInfo}},
           {4, true, "c4", 4, {otherRoot, usingAttributes, otherInfo, usingInfo}}}) {
    const Ref<ImageRecRef> photo = photoOf(imageInfo, key);
    if (handsStoresIn) {
      photo->setDBInfo(infoStore(4));
      photo->setDBImageAttributes(attributesStore(4));
    }
    const CollectedLog log;
    for (int times = 0; times < 2; ++times) {
      EXPECT_EQ(photo->caption(), caption) << key << handsStoresIn;
      EXPECT_EQ(photo->info() ? photo->imageWidth() : Value(), width) << key;
    }
    Texts logged;
    for (const std::string& line : log.lines()) {
      logged.push_back(replaced(replaced(line, database.root + "/2004/Data", "DATA"),
                                photo->key().description(), "KEY"));
    }
    EXPECT_EQ(logged, lines) << key << handsStoresIn;
    EXPECT_EQ(database.unreadable.empty(), key % 2 != 0) << "damaged, or of another kind";
    database.unreadable.clear();
  }

  {
    const CollectedLog log;
    const auto before = fs::current_path();
    fs::current_path(library.path() + "/2004/Data");
    const Ref<ImageRecRef> lost = photoOf({{"Caption", "of no folder"}}, 1);
    EXPECT_EQ(lost->caption(), "of no folder") << "no store is taken from where the process runs";
    fs::current_path(before);
    EXPECT_EQ(log.lines().back(), "No data for image attributes at (null)");
  }
  database.version = 150;
  const Ref<ImageRecRef> newer = photoOf(imageInfo, 1);
  EXPECT_FALSE(newer->imageAttributes());
  EXPECT_EQ(newer->caption(), "from the list");
}

TEST_F(ImageRecRefTests, AnswersFromItsRowUntilAStoreWasMadeOrGiven) {
  PhotoTable::Filler filler;
  filler.beginRow(7, {PhotoStore::imageInfo, PhotoStore::info, PhotoStore::attributes,
                      PhotoStore::attributesRecord});
  filler.addName(static_cast<std::uint32_t>(indexOf(PhotoField::imageWidth)));
  filler.putValue(7);
  filler.addName(static_cast<std::uint32_t>(indexOf(PhotoField::caption)));
  filler.putText("row");
  filler.endRow();
  const Ref<ImageRecRef> photo = ImageRecRef::init();
  photo->setRow(filler.finish(), 0);
  EXPECT_EQ(photo->photoId(), Value(7));
  EXPECT_EQ(photo->caption(), "row");
  EXPECT_EQ(photo->imageWidth(), Value(7));
  EXPECT_EQ(photo->rotation(), Value(0.0F));
  PhotoReader reader;
  const auto captionRead = [&reader, &photo] {
    reader.turnTo(*photo);
    return reader.caption();
  };
  EXPECT_EQ(captionRead(), "row");

  photo->imageAttributes()->setAttributeForKey("made", AttributeMgr::kCaption);
  EXPECT_EQ(captionRead(), "made");
  photo->info()->setImageWidth(8);
  EXPECT_EQ(photo->caption(), "made");
  EXPECT_EQ(photo->imageWidth(), Value(8));
  photo->unload();
  EXPECT_EQ(photo->caption(), "row");
  EXPECT_EQ(photo->imageWidth(), Value(7));

  photo->setImageAttributes(attributesStore(1));
  photo->setImageInfoForKey(dictionary({{"Comment", "given"}}), 9);
  photo->unload();
  EXPECT_EQ(photo->caption(), "c1") << "what was given is not made anew";
  EXPECT_EQ(captionRead(), "c1");
  EXPECT_EQ(photo->imageWidth(), Value(7));
  EXPECT_EQ(photo->keyStringValue(), "9");
}

TEST_F(ImageRecRefTests, AReaderFindsTheFoldersOfPhotosInARow) {
  database.archive = "/old/Lib";
  const std::vector<std::pair<std::string, std::string>> originals{
      {"/old/a.jpg", "/old/Originals/0.?origExt?"},
      // Begins as the archive's path does, and yet lies beside the one before.
      {"/old/Library.jpg", "/new/Originals/1.?origExt?"},
      {"/old/Lib/b.jpg", "/new/Library/Originals/2.?origExt?"},
      {"/old/Lib/c.jpg", "/new/Library/Originals/3.?origExt?"},
      {"/old/Lib//d.jpg", "/new/Library/Originals/4.?origExt?"},
      {"/old/Lib/e/", "/new/Library/Originals/5.?origExt?"},
      {"/old/Lib/f/g.jpg", "/new/Library/f/Originals/6.?origExt?"},
  };
  const auto field = static_cast<std::uint32_t>(indexOf(PhotoField::imagePath));
  PhotoTable::Filler filler;
  for (std::uint32_t row = 0; row < originals.size(); ++row) {
    filler.beginRow(row, {PhotoStore::imageInfo});
    filler.addName(field);
    filler.putPath(field, originals[row].first);
    filler.endRow();
  }
  const Ref<PhotoTable> table = filler.finish();
  PhotoReader reader;
  for (std::uint32_t row = 0; row < originals.size(); ++row) {
    const Ref<ImageRecRef> photo = ImageRecRef::init();
    photo->setRow(table, row);
    photo->setDatabase(&database);
    reader.turnTo(*photo);
    EXPECT_EQ(reader.originalImagePath(), originals[row].second);
    EXPECT_EQ(reader.imagePath(), originals[row].first);
    EXPECT_TRUE(reader.hasBeenEdited());
  }
}

TEST_F(ImageRecRefTests, WhatOutlivesItsDatabaseOrItsPhotoHasNone) {
  auto itsDatabase = std::make_unique<StandInDatabase>();
  Ref<ImageRecRef> photo = photoOf({{"ImagePath", "/old/Library/a/p.jpg"}});
  photo->setDatabase(itsDatabase.get());
  const Ref<TVQiPhotoUserData> camera = photo->exifData();
  EXPECT_EQ(camera->photo(), photo.get());
  EXPECT_EQ(camera->valueForKey("photo").object(), Ref<Object>(photo));
  itsDatabase.reset();
  EXPECT_EQ(photo->database(), nullptr);
  EXPECT_EQ(photo->imagePath(), std::nullopt);
  EXPECT_TRUE(photo->valueForKey("database").isNothing());
  photo->unload();
  EXPECT_EQ(camera->photo(), nullptr);
  const Ref<TVQiPhotoUserData> later = photo->exifData();
  photo = nullptr;
  EXPECT_EQ(later->photo(), nullptr);
  EXPECT_TRUE(later->valueForKey("photo").isNothing());
}

TEST_F(ImageRecRefTests, KeyValueAccessReachesItsOperationsAndThenTheCameraValues) {
  const Ref<ImageRecRef> photo = photoOf({{"ImagePath", "/new/Library/a/p.jpg"},
                                          {"ImageThumbnailPath", "/t.jpg"},
                                          {"ImageOriginalPath", "/o.jpg"}});
  const Ref<ImageRec> info = infoStore(3);
  const Ref<AttributeMgr> attributes = attributesStore(3);
  photo->setInfo(info);
  photo->setImageAttributes(attributes);
  photo->setDBInfo(info);
  expectAnswers(*photo, {{"_originalImageFilename", "42.o3"},
                         {"_thumbnailFilename", "42.jpg"},
                         {"dbInfo", info},
                         {"exifData", photo->exifData()},
                         {"filepath", "/new/Library/a/3.jpg"},
                         {"hasBeenEdited", true},
                         {"imageAttributes", attributes},
                         {"imageSize", dictionary({{"width", 3.0F}, {"height", 0.0F}})},
                         {"info", info},
                         {"key", Key::initWithKey(42)},
                         {"originalImageDirectory", "/new/Library/a/Originals"},
                         {"originalImagePath", "/o.jpg"},
                         {"thumbnailDirectory", "/new/Library/a/Thumbs"},
                         {"thumbnailPath", "/t.jpg"},
                         {"photo", photo},
                         {"maker", {}},
                         {"shutter", Decimal{}}});
  EXPECT_TRUE(photo->respondsToSelector("flashDescription"));
  EXPECT_TRUE(photo->respondsToSelector("photo"));
  EXPECT_FALSE(photo->respondsToSelector("_imageInfo"));
  EXPECT_THROW(static_cast<void>(photo->valueForKey("_imageInfo")), NSException);
  const Ref<ImageRecRef> bare = photoOf({{"ImagePath", "/x/a.jpg"}});
  EXPECT_EQ(bare->description(),
            "ImageRecRef: <no dictionary>, directory = /x, attributes = (null), info = (null)");
}

TEST_F(ImageRecRefTests, DumpsBytes) {
  const std::string bytes = "0123456789abcdef\x7F~ \nXYZ";
  CollectedLog log;
  ImageRecRef::_dumpDataLocationCount(Data::copyOf(bytes), 1, 0);
  EXPECT_TRUE(log.lines().empty());
  ImageRecRef::_dumpDataLocationCount(Data::copyOf("?" + bytes), 1, 21);
  ImageRecRef::_dumpDataLocationCount(Data::copyOf(bytes), 21, 0xFFFFFFFF);
  const std::string blanks(32, ' ');
  EXPECT_EQ(
      log.lines(),
      (Texts{"     1:   0:  3130 3332 3534 3736 3938 6261 6463 6665  0123456789abcdef",
             "    11:  10:  7e7f  a20" + blanks + ".~ .", "    15:  14:    58     " + blanks + "X",
             "    15:   0:    59     " + blanks + "Y", "    16:   1:    5a     " + blanks + "Z"}));
}

TEST_F(ImageRecRefTests, KnowsTheOldNameForUndefinedKeys) {
  const auto photo = ImageRecRef::init();
  photo->setImageAttributes(AttributeMgr::init());
  CollectedLog log;
  EXPECT_TRUE(photo->handleQueryWithUnboundKey("maker").isNothing());
  EXPECT_THROW((void)photo->tvq_handleQueryWithUnboundKey("nobody"), NSException);
  EXPECT_EQ(
      log.lines(),
      (Texts{"handleQueryWithUnboundKey: is deprecated: Use valueForUndefinedKey: in 10.3 and "
             "later - current Foundation is vn. 500.000000",
             "tvq_handleQueryWithUnboundKey: is deprecated: Use valueForUndefinedKey: in 10.3 "
             "and later - current Foundation is vn. 500.000000"}));
}

}  // namespace
}  // namespace mrziphoto

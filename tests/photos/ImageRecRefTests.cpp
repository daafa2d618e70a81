#include <filesystem>

#include <gtest/gtest.h>

#include <MRZiPhoto/photos/ImageRecRef.h>
#include <MRZiPhoto/platform/Array.h>
#include <MRZiPhoto/platform/NSArchiver.h>
#include <MRZiPhoto/platform/NSException.h>
#include <MRZiPhoto/platform/NSUnarchiver.h>

#include "support/CollectedLog.h"
#include "support/StandInDatabase.h"
#include "support/TemporaryFolder.h"

namespace mrziphoto {
namespace {

Ref<ImageRecRef> photoOf(const Ref<Dictionary>& imageInfo, RecordDatabase& database,
                         std::uint32_t key = 42) {
  Ref<ImageRecRef> photo = ImageRecRef::init();
  photo->setImageInfoForKey(imageInfo, key);
  photo->setDatabase(&database);
  return photo;
}

/// A record of the archive generation.
Ref<ImageRecRef> archivedPhoto(const Ref<Dictionary>& stored, RecordDatabase& database) {
  // What an archive holds of a record is its dictionary.
  class Holder final : public ArchivedRecord {
   public:
    explicit Holder(Ref<Dictionary> entries) : ArchivedRecord(std::move(entries)) {}
    const Class& objectClass() const override { return ImageRecRef::kClass; }
  };
  NSArchiver records;
  records.encodeObject(make<Holder>(stored));
  Ref<ImageRecRef> photo = NSUnarchiver::initForReadingWithData(records.archivedData())
                               ->decodeObject()
                               .object<ImageRecRef>();
  photo->setDatabase(&database);
  return photo;
}

TEST(ImageRecRef, AnswersFromItsImageInfo) {
  StandInDatabase database;
  const Ref<ImageRecRef> photo =
      photoOf(dictionary({{"ImagePath", "/old/Library/2004/05/06/a.jpg"},
                          {"OriginalPath", "/old/Library/2004/05/06/Originals/b.jpg"},
                          {"Caption", "Köln"},
                          {"Comment", "c"},
                          {"Roll", 5},
                          {"DateAsTimerInterval", 12.5}}),
              database);
  EXPECT_EQ(photo->keyStringValue(), "42");
  EXPECT_EQ(photo->photoId(), Value(42));
  EXPECT_EQ(photo->rollKey(), Value(5));
  EXPECT_EQ(photo->caption(), "Köln");
  EXPECT_EQ(photo->title(), photo->caption());
  EXPECT_EQ(photo->comments(), "c");
  EXPECT_EQ(photo->archiveDate(), Date{12.5});
  EXPECT_EQ(photo->date(), std::nullopt);
  EXPECT_EQ(photo->originalFilename(), "b.jpg");
  EXPECT_EQ(photo->extension(), "?ext?");
  EXPECT_EQ(photo->originalExtension(), "?origExt?");
  EXPECT_EQ(photo->_filename(), "a.jpg");
  // `directory` moves the archive path to the library folder; `imagePath` leaves that to
  // `updateImagePath`.
  EXPECT_EQ(photo->directory(), "/new/Library/2004/05/06");
  EXPECT_EQ(photo->imagePath(), "/old/Library/2004/05/06/a.jpg");
  EXPECT_EQ(photo->relativeDirectory(), "2004/05/06");
  EXPECT_EQ(photo->filename(), "2004/05/06/a.jpg");
  EXPECT_EQ(photo->thumbnailPath(), "/new/Library/2004/05/06/Thumbs/42.jpg");
  EXPECT_EQ(photo->originalImagePath(), "/new/Library/2004/05/06/Originals/42.?origExt?");
  EXPECT_EQ(photo->recordedOriginalPath(), "/old/Library/2004/05/06/Originals/b.jpg");
  EXPECT_TRUE(photo->hasBeenEdited());
}

TEST(ImageRecRef, AnswersNothingOfOtherKindsOfValues) {
  StandInDatabase database;
  const Ref<ImageRecRef> photo = photoOf(dictionary({{"ImagePath", 7},
                                                     {"Caption", make<Array>()},
                                                     {"Comment", 1.5},
                                                     {"DateAsTimerInterval", "soon"},
                                                     {"Keywords", "none"}}),
                                         database);
  CollectedLog log;
  EXPECT_EQ(photo->caption(), std::nullopt);
  EXPECT_EQ(photo->comments(), std::nullopt);
  EXPECT_EQ(photo->archiveDate(), std::nullopt);
  EXPECT_EQ(photo->imagePath(), std::nullopt);
  EXPECT_EQ(photo->directory(), std::nullopt);
  EXPECT_TRUE(photo->keywords().array()->empty());
}

TEST(ImageRecRef, AsksForARewrittenPathOnceAndSaysWhenThereIsNoFolder) {
  StandInDatabase database;
  const Ref<ImageRecRef> photo = photoOf(dictionary({}), database);
  CollectedLog log;
  EXPECT_EQ(photo->directory(), std::nullopt);
  // Looking for the info store asks for the folder as well.
  ASSERT_FALSE(log.lines().empty());
  EXPECT_EQ(log.lines().front(),
            "ImageRecRef - directory '(null)' does not exist for Key: {\n    Key = 42;\n}");

  const Ref<ImageRecRef> alone = ImageRecRef::init();
  alone->setImageInfoForKeyString(dictionary({{"ImagePath", "/a/b.jpg"}}), "9");
  EXPECT_EQ(alone->imagePath(), std::nullopt) << "without a database nobody rewrites paths";
}

TEST(ImageRecRef, RelativeFolders) {
  struct Case {
    std::string imagePath, relative, filename;
  };
  StandInDatabase database;
  database.archive = std::nullopt;
  database.root = "/Users/a/Pictures/iPhoto Library";
  for (const Case& each :
       {Case{"/Users/a/Pictures/iPhoto Library/2004/05/06/p.jpg", "2004/05/06", "2004/05/06/p.jpg"},
        {"/Users/a/Pictures/iPhoto Library/p.jpg", "", "p.jpg"},
        {"/elsewhere/x/p.jpg", "elsewhere/x", "elsewhere/x/p.jpg"},
        {"/Users/a/Pictures/iPhoto Library/2004/Data/p.jpg", "2004/Data", "2004/p.jpg"}}) {
    const Ref<ImageRecRef> photo = photoOf(dictionary({{"ImagePath", each.imagePath}}), database);
    EXPECT_EQ(photo->relativeDirectory(), each.relative) << each.imagePath;
    EXPECT_EQ(photo->filename(), each.filename) << each.imagePath;
  }
}

TEST(ImageRecRef, KeywordsComeAsRecordsKeysOrAsStored) {
  StandInDatabase database;
  const Ref<Keyword> kids = Keyword::initWithString("Kids");
  database.keywords[3] = kids;
  const auto keywords = [&](std::vector<Value> listed) {
    return photoOf(dictionary({{"Keywords", make<Array>(std::move(listed))}}), database)
        ->keywords()
        .array();
  };
  ASSERT_EQ(keywords({"3", "77"})->size(), 1U) << "an unknown key is left out";
  EXPECT_EQ((*keywords({"3"}))[0].object(), Ref<Object>(kids));
  EXPECT_EQ(Value(keywords({3, 4})), Value(make<Array>(std::vector<Value>{3, 4})));
  EXPECT_TRUE(keywords({})->empty());
  const Ref<ImageRecRef> photo = photoOf(dictionary({}), database);
  const Ref<AttributeMgr> store = AttributeMgr::init();
  store->setAttributeForKey("as stored", AttributeMgr::kKeyWords);
  photo->setImageAttributes(store);
  EXPECT_EQ(photo->keywords().text(), "as stored");
}

TEST(ImageRecRef, ArchivedRecordsAskTheDirectoryTable) {
  StandInDatabase database;
  database.version = 20;
  database.generation = "20";
  database.folders[8] = "2004/05/06/Data";
  const Ref<ImageRecRef> photo = archivedPhoto(
      dictionary({{"Directory", 8}, {"Key", Key::initWithKey(11)}, {"Roll", 2}}), database);
  CollectedLog log;
  EXPECT_EQ(photo->keyStringValue(), "11");
  EXPECT_EQ(photo->rollKey(), Value(2));
  EXPECT_EQ(photo->directory(), "/new/Library/2004/05/06/Data");
  EXPECT_EQ(photo->relativeDirectory(), "2004/05/06/Data");
  EXPECT_EQ(photo->imagePath(), "/new/Library/2004/05/06/11.?ext?");
  EXPECT_EQ(photo->filename(), "2004/05/06/11.?ext?");
  EXPECT_EQ(photo->originalImagePath(), "/new/Library/2004/05/06/Originals/11.?ext?");
  photo->setInfo(ImageRec::init());
  EXPECT_EQ(photo->date(), std::nullopt) << "the archived dictionary decides";
  EXPECT_EQ(log.lines(), std::vector<std::string>{"No data for image attributes at "
                                                  "/new/Library/2004/05/06/Data/11.attr"});
}

TEST(ImageRecRef, ReadsStoresBesideThePhoto) {
  const TemporaryFolder library;
  StandInDatabase database;
  database.root = std::filesystem::canonical(library.path()).string();
  database.archive = std::nullopt;
  database.version = 149;
  std::filesystem::create_directories(library.path() + "/2004/Data");
  const auto write = [&](const std::string& name, const Value& object) {
    NSArchiver archiver;
    archiver.encodeObject(object);
    library.write("2004/Data/" + name, archiver.archivedData().bytes());
  };
  const Ref<ImageRec> info = ImageRec::init();
  info->setImageWidth(640);
  const Ref<AttributeMgr> attributes = AttributeMgr::init();
  attributes->setAttributeForKey("from the file", AttributeMgr::kCaption);
  write("1", info);
  write("1.attr", attributes);
  library.write("2004/Data/2", "no archive");
  library.write("2004/Data/2.attr", "no archive");
  const Ref<Dictionary> imageInfo =
      dictionary({{"ImagePath", database.root + "/2004/p.jpg"}, {"Caption", "from the list"}});

  CollectedLog log;
  const Ref<ImageRecRef> whole = photoOf(imageInfo, database, 1);
  EXPECT_EQ(whole->caption(), "from the file");
  EXPECT_EQ(whole->imageWidth(), Value(640));
  EXPECT_EQ(whole->imageHeight(), Value(0.0F));
  EXPECT_TRUE(log.lines().empty());

  {
    const CollectedLog ofLost;
    const auto place = std::filesystem::current_path();
    std::filesystem::current_path(library.path() + "/2004/Data");
    const Ref<ImageRecRef> lost = photoOf(dictionary({{"Caption", "of no folder"}}), database, 1);
    EXPECT_EQ(lost->caption(), "of no folder") << "no store is taken from where the process runs";
    std::filesystem::current_path(place);
    EXPECT_EQ(ofLost.lines().back(), "No data for image attributes at (null)");
  }

  const Ref<ImageRecRef> damaged = photoOf(imageInfo, database, 2);
  EXPECT_EQ(damaged->caption(), "from the list");
  EXPECT_FALSE(damaged->info());
  EXPECT_FALSE(damaged->info()) << "the info file is looked for once";
  EXPECT_EQ(log.lines().size(), 2U);

  const Ref<ImageRecRef> missing = photoOf(imageInfo, database, 3);
  missing->setDBInfo(info);
  static_cast<void>(missing->caption());
  static_cast<void>(missing->caption());
  EXPECT_EQ(missing->info(), info);
  EXPECT_EQ(log.lines().size(), 4U) << "one line for the attributes, one for the handed-in store";

  database.version = 150;
  const Ref<ImageRecRef> newer = photoOf(imageInfo, database, 1);
  EXPECT_FALSE(newer->imageAttributes());
  EXPECT_EQ(newer->caption(), "from the list");
}

TEST(ImageRecRef, KeyValueAccessReachesItsOperationsAndThenTheCameraValues) {
  StandInDatabase database;
  const Ref<ImageRecRef> photo =
      photoOf(dictionary({{"ImagePath", "/x/a.jpg"}, {"Caption", "c"}}), database);
  EXPECT_EQ(photo->valueForKey("caption").text(), "c");
  EXPECT_EQ(photo->valueForKey("photoId"), Value(42));
  EXPECT_EQ(photo->valueForKey("hasBeenEdited"), Value(true));
  EXPECT_TRUE(photo->valueForKey("maker").isNothing());
  EXPECT_TRUE(photo->respondsToSelector("flashDescription"));
  EXPECT_FALSE(photo->respondsToSelector("_imageInfo"));
  EXPECT_THROW(static_cast<void>(photo->valueForKey("_imageInfo")), NSException);
  EXPECT_TRUE(photo->description().starts_with("ImageRecRef: <no dictionary>, directory = /x, "));
}

TEST(ImageRecRef, DumpsBytes) {
  const std::string bytes = "0123456789abcdef\x7F~ \nXYZ";
  CollectedLog log;
  ImageRecRef::_dumpDataLocationCount(Data::copyOf(bytes), 1, 0);
  EXPECT_TRUE(log.lines().empty());
  ImageRecRef::_dumpDataLocationCount(Data::copyOf("?" + bytes), 1, 21);
  ImageRecRef::_dumpDataLocationCount(Data::copyOf(bytes), 21, 0xFFFFFFFF);
  const std::string blanks(32, ' ');
  EXPECT_EQ(
      log.lines(),
      (std::vector<std::string>{
          "     1:   0:  3130 3332 3534 3736 3938 6261 6463 6665  0123456789abcdef",
          "    11:  10:  7e7f  a20" + blanks + ".~ .", "    15:  14:    58     " + blanks + "X",
          "    15:   0:    59     " + blanks + "Y", "    16:   1:    5a     " + blanks + "Z"}));
}

TEST(ImageRecRef, KnowsTheOldNameForUndefinedKeys) {
  const auto photo = ImageRecRef::init();
  photo->setImageAttributes(AttributeMgr::init());
  CollectedLog log;
  EXPECT_TRUE(photo->handleQueryWithUnboundKey("maker").isNothing());
  EXPECT_THROW((void)photo->tvq_handleQueryWithUnboundKey("nobody"), NSException);
  EXPECT_EQ(log.lines(),
            (std::vector<std::string>{
                "handleQueryWithUnboundKey: is deprecated: Use valueForUndefinedKey: in 10.3 and "
                "later - current Foundation is vn. 500.000000",
                "tvq_handleQueryWithUnboundKey: is deprecated: Use valueForUndefinedKey: in 10.3 "
                "and later - current Foundation is vn. 500.000000"}));
}

}  // namespace
}  // namespace mrziphoto

#include <MRZiPhoto/catalogue/TVQiPhotoLibrary.h>
#include <MRZiPhoto/photos/RecordDatabase.h>

#include "support/CodedBuilder.h"
#include "support/CodedLibrary.h"
#include "support/LibraryFolder.h"
#include "support/StandInDatabase.h"

namespace mrziphoto {
namespace {

using namespace std::string_view_literals;

std::string captions(const List<ImageRecRef>& photos) {
  std::string result;
  for (const Ref<ImageRecRef>& photo : photos) {
    result += photo->caption().value_or("?") + " ";
  }
  return result;
}

/// One image of the album data; without a roll it stands for a roll.
std::string image(int key, const std::string& caption, std::optional<int> roll = std::nullopt) {
  return xml::entry(std::to_string(key),
                    xml::dict(xml::entry("Caption", xml::text(caption)) +
                              xml::entry("ImagePath", xml::text("/old/p.jpg")) +
                              (roll ? xml::entry("Roll", xml::number(*roll)) : "")));
}

Ref<TVQiPhotoLibrary> load(const LibraryFolder& library) {
  return TVQiPhotoLibrary::initWithContentsOfFile(library.root + "/Library.iPhoto");
}

TEST(TVQiPhotoLibrary, TellsTheVersionOfACatalogueFile) {
  const LibraryFolder library;
  const std::string before = library.root + "/coded";
  // The end of the one log line.
  for (const auto& [contents, version, logged] : Rows<std::string_view, std::int32_t, std::string>{
           {"dbVS\0\0\0\4\0\0\0\x33"sv, 51, ""},
           {"XYZW\0\0\0\4\0\0\0\x33"sv, 0, " - wrong header code 'XYZW'"},
           {"dbVS\0\0\0\2\0\x33"sv, 0,
            " - NSInternalInconsistencyException Unexpected datasize 2 during readCodedInt"},
           {"dbVS"sv, 0, "at offset 4 of 4"}}) {
    library.write("coded", contents);
    CollectedLog log;
    EXPECT_EQ(TVQiPhotoLibrary::iPhotoVersionForFilename(before), version);
    ASSERT_EQ(log.lines().size(), logged.empty() ? 0U : 1U);
    if (!logged.empty()) {
      EXPECT_TRUE(log.lines()[0].starts_with(
          "Can't determine stream version of iPhotoVersionForFilename: " + before + " - "));
      EXPECT_TRUE(log.lines()[0].ends_with(logged)) << log.lines()[0];
    }
  }
  library.writeArchivedVersion("archive", 42);
  EXPECT_EQ(TVQiPhotoLibrary::iPhotoVersionForFilename(library.root + "/archive"), 42);
  // Only its beginning is read: a file that is too large to be read whole tells its version, too.
  fs::resize_file(library.root + "/archive", Limits().fileSize + 1);
  EXPECT_EQ(TVQiPhotoLibrary::iPhotoVersionForFilename(library.root + "/archive"), 42);
  library.writeArchive("objects", {"text"});
  CollectedLog log;
  EXPECT_EQ(TVQiPhotoLibrary::iPhotoVersionForFilename(library.root + "/objects"), 0);
  EXPECT_TRUE(log.lines()[0].starts_with("Can't determine archive version of "));
  library.write("short", "db");
  EXPECT_THROW(TVQiPhotoLibrary::iPhotoVersionForFilename(library.root + "/short"), NSException);
}

TEST(TVQiPhotoLibrary, LoadsAlbumDataAboveVersion15) {
  const LibraryFolder library;
  library.writeCodedVersion("Library.iPhoto", 151);
  library.writeAlbumData(
      xml::entry("Archive Path", xml::text("/old")) +
      xml::entry("Master Image List",
                 xml::dict(image(1, "P1", 5) + image(5, "R1") + image(2, "P2", 5))) +
      xml::entry("List of Albums",
                 xml::array(xml::dict(xml::entry("AlbumName", xml::text("A"))) + xml::number(3))) +
      xml::entry("List of Rolls", xml::array(xml::dict(xml::entry("AlbumId", xml::number(5))))) +
      xml::entry("List of Keywords", xml::dict(xml::entry("3", xml::text("Kids")))));
  CollectedLog log;
  // A missing catalogue file falls back to "Library.iPhoto".
  const Ref<TVQiPhotoLibrary> loaded =
      TVQiPhotoLibrary::initWithContentsOfFile(library.root + "/Library6.iPhoto");
  ASSERT_TRUE(loaded);
  EXPECT_EQ(log.lines(), (Texts{"New iPhoto library version 151",
                                "Using " + library.root + " instead of /old as the archive path"}));
  EXPECT_EQ(loaded->libraryVersion(), 151);
  EXPECT_EQ(captions(loaded->photos()), "P1 P2 ");
  EXPECT_EQ(captions(loaded->rollRecRefs()), "R1 ");
  EXPECT_EQ(loaded->albums()[0]->albumName(), "A");
  EXPECT_EQ(loaded->numberOfAlbums(), 1U);
  EXPECT_EQ(loaded->numberOfRolls(), 1U);
  EXPECT_TRUE(loaded->keywordsForKeys(*list({3})).empty());

  // The recorded folder is a plain prefix of the text, wherever in a component it ends.
  for (const auto& [path, updated] : std::initializer_list<std::pair<std::string, std::string>>{
           {"/old/2004/a.jpg", library.root + "/2004/a.jpg"},
           {"/older/a.jpg", library.root + "er/a.jpg"},
           {"/old", library.root},
           {"/ol", "/ol"},
           {"/disk/old/a.jpg", "/disk/old/a.jpg"},
           {"", ""}}) {
    EXPECT_EQ(loaded->updateImagePath(path), updated) << path;
  }
  EXPECT_EQ(loaded->archivePath(), library.root);
  EXPECT_TRUE(loaded->description().starts_with(
      "version = 151, nextImageKey = (null), nextRollKey = (null), flag1 = 0, flag2 = 0, "
      "imagesDate1 = (null), imageRecRefs = (\n"));
}

TEST(TVQiPhotoLibrary, AMissingOrDamagedAlbumDataFile) {
  const LibraryFolder library;
  library.writeCodedVersion("Library.iPhoto", 200);
  {
    CollectedLog log;
    const Ref<TVQiPhotoLibrary> catalogue = load(library);
    ASSERT_TRUE(catalogue);
    EXPECT_EQ(log.lines().back(),
              "Using " + library.root + " instead of (null) as the archive path");
    EXPECT_TRUE(catalogue->photos().empty());
    EXPECT_FALSE(catalogue->keywords().isNothing());
    EXPECT_FALSE(catalogue->rolls().isNothing());
  }
  library.write("AlbumData.xml", "<plist><dict>");
  CollectedLog log;
  EXPECT_FALSE(load(library));
  EXPECT_TRUE(log.lines().back().starts_with("NSParseErrorException - ")) << log.lines().back();
  // Values of other kinds than the entries speak of count as missing.
  library.writeAlbumData(xml::entry("Archive Path", xml::number(1)) +
                         xml::entry("Master Image List", xml::dict(xml::entry("7", "<true/>"))) +
                         xml::entry("List of Albums", xml::text("x")) +
                         xml::entry("List of Keywords", xml::array("")));
  const Ref<TVQiPhotoLibrary> odd = load(library);
  ASSERT_TRUE(odd);
  EXPECT_EQ(odd->numberOfAlbums(), 0U);
  EXPECT_EQ(odd->rollRecRefs().size(), 1U);
}

TEST(TVQiPhotoLibrary, LooksUpPhotosAsAWalkOverTheListWould) {
  const LibraryFolder library;
  library.writeCodedVersion("Library.iPhoto", 200);
  std::mt19937 random(3);
  std::string images;
  for (int i = 0; i < 400; ++i) {
    // Texts that differ may give one key: "7" and "07" are both photo 7.
    const int key = static_cast<int>(random() % 500);
    const std::string text = std::string(random() % 3, '0') + std::to_string(key);
    images += xml::entry(text, xml::dict(xml::entry("Roll", xml::number(1)) +
                                         xml::entry("Caption", xml::text(std::to_string(i)))));
  }
  library.writeAlbumData(xml::entry("Master Image List", xml::dict(images)));
  CollectedLog log;
  const Ref<TVQiPhotoLibrary> catalogue = load(library);
  ASSERT_TRUE(catalogue);
  for (std::uint32_t number = 0; number < 501; ++number) {
    const Ref<Key> key = Key::initWithKey(number);
    Ref<ImageRecRef> walked;
    for (const Ref<ImageRecRef>& photo : catalogue->photos()) {
      if (!walked && photo->key().object<Key>()->isEqual(*key)) {
        walked = photo;
      }
    }
    EXPECT_EQ(catalogue->photoForKey(key), walked) << number;
  }
  // Many keys at once are answered as one by one, in their order, repeats and all.
  List<Key>::Items keys;
  std::vector<Ref<ImageRecRef>> expected;
  for (int i = 0; i < 200; ++i) {
    const Ref<Key> key =
        Key::initWithKey(i % 70 == 69 ? 9999U : static_cast<std::uint32_t>(random() % 500));
    keys.push_back(key);
    if (const Ref<ImageRecRef> photo = catalogue->photoForKey(key)) {
      expected.push_back(photo);
    }
  }
  const List<ImageRecRef> found = catalogue->photosForKeys(List<Key>(keys));
  EXPECT_EQ(*found.items(), expected);
  EXPECT_EQ(std::ranges::count(log.lines(), "No photo for key: Key: {\n    Key = 9999;\n}"), 2);
}

TEST(TVQiPhotoLibrary, FindsRecordsByTheKeysThatTheyHaveNow) {
  const LibraryFolder library;
  library.writeCodedVersion("Library.iPhoto", 200);
  library.writeAlbumData(
      xml::entry("Master Image List", xml::dict(image(1, "a", 5) + image(2, "b", 5) +
                                                image(3, "c", 5) + image(4, "r") + image(5, "s"))));
  const Ref<TVQiPhotoLibrary> catalogue = load(library);
  ASSERT_TRUE(catalogue);
  const auto photos = [&] {
    std::string captions;
    for (std::uint32_t key = 1; key <= 4; ++key) {
      const Ref<ImageRecRef> photo = catalogue->photoForKey(Key::initWithKey(key));
      captions += photo ? photo->caption().value_or("?") : "-";
    }
    return captions;
  };
  const auto give = [](const Ref<ImageRecRef>& record, std::uint32_t key) {
    record->setImageInfoForKey(dictionary({{"Caption", record->caption().value_or("?")}}), key);
  };
  EXPECT_EQ(photos(), "abc-");
  give(catalogue->photos()[2], 4);
  EXPECT_EQ(photos(), "ab-c");
  give(catalogue->photos()[0], 2);
  EXPECT_EQ(photos(), "-a-c") << "the first of two with one key";
  EXPECT_EQ(catalogue->rollRecRefForKey(5)->caption(), "s");
  give(catalogue->rollRecRefs()[0], 5);
  EXPECT_EQ(catalogue->rollRecRefForKey(5)->caption(), "r");
  EXPECT_FALSE(catalogue->rollRecRefForKey(4));
}

TEST(TVQiPhotoLibrary, FindsKeywordsAndRollsByKeysOfEveryKind) {
  const Ref<TVQiPhotoLibrary> keywords = TVQiPhotoLibrary::init();
  keywords->addKeyword(Keyword::initWithString("keyless"));
  for (const auto& [text, key] : Entries{{"zero", Value(0)},
                                         {"seven", Value(Key::initWithKey(7))},
                                         {"later", Value(7)},
                                         {"eight", Value(8)}}) {
    keywords->addKeyword(Keyword::initWithDictionary(Dictionary{{"String", text}, {"Key", key}}));
  }
  const CodedLibrary library(
      60, CodedBuilder().images({CodedBuilder().item("idKY", -1), CodedBuilder().item("idKY", 7)}));
  for (const auto& [key, expectedKeyword, expectedRoll] :
       Rows<Value, std::string_view, std::string_view>{
           {7, "seven", "7"},
           {"7 days", "seven", ""},
           {7.0, "seven", "7"},
           {Key::initWithKey(7), "seven", "7"},
           {8, "eight", ""},
           {"x", "zero", ""},
           {Key::initWithKey(9), "", ""},
           {make<Key>(), "", ""},
           {Value(), "", ""},
           {make<Array>(), "", ""},
           // Image keys are unsigned, whatever is asked.
           {-1, "", ""},
           {4294967295U, "", "4294967295"}}) {
    SCOPED_TRACE(key.description());
    const Ref<Keyword> keyword = keywords->keywordForKey(key);
    EXPECT_EQ(keyword ? keyword->string().value_or("?") : "", expectedKeyword);
    const Ref<ImageRecRef> roll = library->rollRecRefForKey(key);
    EXPECT_EQ(roll ? roll->keyStringValue() : "", expectedRoll);
  }
}

TEST(TVQiPhotoLibrary, IsMadeFromBytesOfAVersion) {
  const Data bytes = Data::copyOf(CodedBuilder().item("dbVS", 60).bytes());
  const CollectedLog log;
  ASSERT_TRUE(TVQiPhotoLibrary::initWithData(bytes, 60));
  EXPECT_EQ(TVQiPhotoLibrary::initWithData(bytes, 60)->libraryVersion(), 60);
  EXPECT_EQ(TVQiPhotoLibrary::initWithData(bytes)->libraryVersion(), 0);
  EXPECT_TRUE(log.lines().empty());
  EXPECT_FALSE(TVQiPhotoLibrary::initWithData(bytes, 61));
  EXPECT_EQ(log.lines().size(), 1U);
  // Too short for a version.
  const TemporaryFolder folder;
  folder.write("Library6.iPhoto", "db");
  EXPECT_FALSE(TVQiPhotoLibrary::initWithContentsOfFile(folder.path() + "/Library6.iPhoto"));
}

TEST(TVQiPhotoLibrary, KeepsItsAlbumList) {
  const Ref<TVQiPhotoLibrary> library = TVQiPhotoLibrary::init();
  StandInDatabase database;
  library->setDatabase(&database);
  const List<Album> albums = library->albums();
  const Ref<Album> first = Album::init<Album>();
  const Ref<Album> last = Album::init<Album>();
  library->addAlbum(last);
  EXPECT_EQ(last->database(), &database);
  library->insertAlbumAtIndex(first, 0);
  EXPECT_EQ(albums.size(), 2U) << "the list itself was answered";
  EXPECT_EQ(albums[0], first);
  EXPECT_EQ(first->database(), &database);
  EXPECT_EQ(library->numberOfRolls(), 0U);
  library->addRoll(Album::init<RollAlbum>());
  EXPECT_TRUE(library->rolls().isNothing()) << "a roll without an archive album is dropped";
  library->removeAllAlbums();
  EXPECT_TRUE(albums.empty());
  EXPECT_EQ(first->database(), nullptr);
}

}  // namespace
}  // namespace mrziphoto

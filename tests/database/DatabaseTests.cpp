#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include <MRZiPhoto/albums/ArchiveAlbum.h>
#include <MRZiPhoto/albums/LastImportAlbum.h>
#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/platform/Array.h>
#include <MRZiPhoto/platform/FileManager.h>
#include <MRZiPhoto/platform/UserDefaults.h>
#include <MRZiPhoto/platform/Workspace.h>

#include "support/CodedLibrary.h"
#include "support/CollectedLog.h"
#include "support/EnvironmentVariable.h"
#include "support/LibraryFolder.h"
#include "support/TemporaryFolder.h"

namespace mrziphoto {
namespace {

namespace fs = std::filesystem;

/// The catalogue file of a version, and what lies beside it in a library of any generation.
void writeLibrary(const LibraryFolder& library, std::int32_t version,
                  const CodedBuilder& sections = {}) {
  if (version > 50) {
    library.writeCodedVersion("Library.iPhoto", version);
  }
  library.write(version > 50 ? "Library6.iPhoto" : "Library.iPhoto",
                catalogueBytes(version, sections));
  library.writeArchive("Dir.data", {1, make<Array>()});
  library.writeAlbumData("");
  fs::create_directory(library.root + "/Albums");
}

/// A directory table in which the folder has the key 1.
void writeDirectory(const LibraryFolder& library, std::string_view folder) {
  const Value entry = make<ArchivedAs<DirectoryRec>>(
      std::initializer_list<std::pair<std::string_view, Value>>{{"Key", 1}, {"Path", folder}});
  library.writeArchive("Dir.data", {1, make<Array>(std::vector<Value>{entry})});
}

TEST(TVQiPhotoDatabase, SaysWhyALibraryCannotBeOpened) {
  struct Case {
    std::string_view what;
    void (*fill)(const LibraryFolder&);
    std::string reason;  // "ROOT" stands for the folder
  };
  const std::string tooOld =
      "NSInvalidArgumentException - iPhoto Library not supported before iPhoto 4 for 'ROOT/";
  for (const Case& each :
       {Case{"nothing", [](const LibraryFolder&) {}, tooOld + "Library.data' = (null)"},
        {"a folder",
         [](const LibraryFolder& l) { fs::create_directory(l.root + "/Library.iPhoto"); },
         tooOld + "Library.iPhoto' = (null)"},
        {"version 14", [](const LibraryFolder& l) { l.writeArchivedVersion("Library.data", 14); },
         tooOld + "Library.data' = (null)"},
        {"no newer catalogue",
         [](const LibraryFolder& l) { l.writeCodedVersion("Library.iPhoto", 51); },
         "NSInvalidArgumentException - iPhoto Library does not exist at 'ROOT/Library6.iPhoto' = "
         "(null)"},
        {"no directory table",
         [](const LibraryFolder& l) {
           l.writeCodedVersion("Library.iPhoto", 100);
           l.writeCodedVersion("Library6.iPhoto", 100);
         },
         "NSInternalInconsistencyException - iPhoto Library component does not exist at "
         "'ROOT/Dir.data' = (null)"},
        {"no album folder",
         [](const LibraryFolder& l) {
           l.writeCodedVersion("Library.iPhoto", 101);
           l.writeCodedVersion("Library6.iPhoto", 102);
           l.write("AlbumData.xml", "no list");
         },
         "NSInternalInconsistencyException - Missing directory ROOT/Albums = (null)"}}) {
    const LibraryFolder library;
    each.fill(library);
    CollectedLog log;
    EXPECT_FALSE(library.open()) << each.what;
    std::string expected = each.reason;
    expected.replace(expected.find("ROOT"), 4, library.root);
    ASSERT_FALSE(log.lines().empty()) << each.what;
    EXPECT_EQ(log.lines().back(), expected) << each.what;
  }
}

TEST(TVQiPhotoDatabase, TellsTheDataVersion) {
  struct Case {
    std::int32_t version;  // of the catalogue that is loaded
    std::string_view generation;
    std::string beside;  // a folder in the library
  };
  for (const Case& each : {Case{300, "80", ""},
                           {150, "80", ""},
                           {149, "70", ""},
                           {101, "70", ""},
                           {100, "60", ""},
                           {51, "60", ""},
                           {50, "50", "Thumb32.data"},
                           {25, "50", ""},
                           {24, "20", "Albums/Pending Rotation"},
                           {24, "40", "Thumb32.data"},
                           {15, "20", ""},
                           {13, "20", "Albums/Pending Rotation"},
                           {13, "40", "Thumb32.data"},
                           {12, "10", "Thumb32.data"},
                           {12, "11", "Albums/Pending Rotation"}}) {
    const LibraryFolder library;
    writeLibrary(library, each.version);
    if (each.version < 15) {  // only behind a newer one is a catalogue of these versions loaded
      writeLibrary(library, 60);
      library.writeCodedVersion("Library6.iPhoto", each.version);
    }
    fs::create_directory(library.root + "/" + each.beside);
    const CollectedLog log;
    const Ref<TVQiPhotoDatabase> database = library.open();
    ASSERT_TRUE(database) << each.version;
    EXPECT_EQ(database->iPhotoLibraryVersion(), each.version);
    EXPECT_EQ(database->iPhotoDataVersion(), each.generation) << each.version << each.beside;
    EXPECT_EQ(database->currentLibraryDataFilename(),
              library.root + (each.version > 50 ? "/Library6.iPhoto" : "/Library.iPhoto"));
  }
}

TEST(TVQiPhotoDatabase, TellsTheVersionOfTheApplicationOnce) {
  const LibraryFolder library;
  writeLibrary(library, 120);
  const std::string list = "<plist><dict><key>KEY</key><string>9.4.3</string></dict></plist>";
  const auto withKey = [&list](const std::string& key) {
    return std::string(list).replace(list.find("KEY"), 3, key);
  };
  const std::string application = library.root + "/iPhoto.app";
  struct Case {
    std::optional<std::string> found;
    std::string info;
    std::string_view version;
  };
  for (const Case& each :
       {Case{std::nullopt, withKey("CFBundleShortVersionString"), "iPhoto Not Present"},
        {application + "/nowhere", withKey("CFBundleShortVersionString"), "iPhoto Not Present"},
        {application, withKey("CFBundleVersion"), "Unknown"},
        {application, withKey("CFBundleShortVersionString"), "9.4.3"}}) {
    library.write("iPhoto.app/Contents/Info.plist", each.info);
    std::vector<std::string> asked;
    Workspace::setApplicationLookup([&](std::string_view name) {
      asked.emplace_back(name);
      return each.found;
    });
    const CollectedLog log;
    const Ref<TVQiPhotoDatabase> database = library.open();
    ASSERT_TRUE(database);
    EXPECT_EQ(database->iPhotoVersion(), each.version);
    EXPECT_EQ(database->iPhotoVersion(), each.version);
    EXPECT_EQ(asked, std::vector<std::string>{"iPhoto"});
  }
  Workspace::setApplicationLookup({});
}

TEST(TVQiPhotoDatabase, RefusesACatalogueOfTwoVersions) {
  struct Case {
    std::int32_t first;
    std::int32_t second;
  };
  for (const Case& each : {Case{40, 39}, {40, 41}, {60, 59}, {60, 61}}) {
    const LibraryFolder library;
    writeLibrary(library, each.first, CodedBuilder().item("dbVS", each.second));
    const CollectedLog log;
    const Ref<TVQiPhotoDatabase> database = library.open();
    ASSERT_TRUE(database);
    EXPECT_EQ(
        log.lines(),
        (std::vector<std::string>{
            "NSInternalInconsistencyException - iPhoto library version mismatch " +
            std::to_string(each.first) + " vs. " + std::to_string(each.second) + " = (null)"}));
    EXPECT_EQ(database->iPhotoLibraryVersion(), 0);
  }
}

TEST(TVQiPhotoDatabase, GoesOnWithoutACatalogueThatCannotBeRead) {
  const LibraryFolder library;
  library.writeCodedVersion("Library.iPhoto", 120);
  library.writeCodedVersion("Library6.iPhoto", 120);
  library.write("AlbumData.xml", "<plist><dict></plist>");
  fs::create_directory(library.root + "/Albums");
  CollectedLog log;
  const Ref<TVQiPhotoDatabase> database = library.open();
  ASSERT_TRUE(database);
  EXPECT_EQ(database->iPhotoLibraryVersion(), 0);
  EXPECT_EQ(database->iPhotoDataVersion(), "10");
  EXPECT_TRUE(database->photos().isNothing());
  EXPECT_TRUE(database->albums().isNothing());
  EXPECT_TRUE(database->rolls().isNothing());
  EXPECT_EQ(database->updateImagePath("/x"), std::nullopt);
}

TEST(TVQiPhotoDatabase, ReadsTheAlbumsFolderOfTheOldestLibraries) {
  const LibraryFolder library;
  library.writeArchivedVersion("Library.iPhoto", 200);
  library.write("Library6.iPhoto", "dbVS");  // leaves the library without a version
  const auto writeAlbum = [&library]<class Kind>(const std::string& file, const Ref<Kind>& album) {
    album->setAlbumName(file);
    library.writeArchive("Albums/" + file, {album});
  };
  writeAlbum("B", Album::init<Album>());
  writeAlbum("Last Import", Album::init<LastImportAlbum>());
  writeAlbum("Pending Rotation", Album::init<Album>());
  library.write("Albums/not an album", "x");
  library.writeArchive("Albums/folder/C", {Album::init<Album>()});
  fs::create_symlink(library.root + "/Albums/B", library.root + "/Albums/link");
  CollectedLog log;
  const Ref<TVQiPhotoDatabase> database = library.open();
  ASSERT_TRUE(database);
  EXPECT_EQ(database->iPhotoDataVersion(), "11");
  std::string names;
  for (const Ref<Album>& album : database->albums()) {
    names += album->albumName().value_or("?") + ", ";
  }
  EXPECT_EQ(names, "Photo Library, Last Import, B, ");
  EXPECT_EQ(&database->albums()[0]->objectClass(), &ArchiveAlbum::kClass);
  EXPECT_FALSE(database->rolls().isNothing());
}

TEST(TVQiPhotoDatabase, HandsFoldersAndPathsOut) {
  const LibraryFolder library;
  library.writeCodedVersion("Library.iPhoto", 160);
  library.writeCodedVersion("Library6.iPhoto", 160);
  library.writeAlbumData(
      xml::entry("Archive Path", xml::text("/old/Library")) +
      xml::entry(
          "Master Image List",
          xml::dict(xml::entry(
              "7", xml::dict(xml::entry("Roll", xml::number(1)) +
                             xml::entry("ImagePath", xml::text("/old/Library/2004/a.jpg")))))));
  CollectedLog log;
  Ref<ImageRecRef> photo;
  {
    const Ref<TVQiPhotoDatabase> database =
        TVQiPhotoDatabase::initWithContentsOfDirectory(library.root + "/x/.././");
    ASSERT_TRUE(database);
    EXPECT_EQ(database->directory(), library.root);
    photo = database->photos()[0];
    EXPECT_EQ(photo->imagePath(), library.root + "/2004/a.jpg");
    EXPECT_EQ(photo->relativeDirectory(), "2004");
    EXPECT_EQ(database->directoryForKey(1), std::nullopt);
  }
  EXPECT_EQ(photo->database(), nullptr) << "a photo that outlives its database has none";
  EXPECT_EQ(photo->imagePath(), std::nullopt);
}

TEST(TVQiPhotoDatabase, WritesADumpWhenToldTo) {
  const LibraryFolder library;
  library.writeCodedVersion("Library.iPhoto", 160);
  library.writeCodedVersion("Library6.iPhoto", 160);
  library.writeAlbumData("");
  const TemporaryFolder scratch;
  const EnvironmentVariable temporaryFolder("TMPDIR", scratch.path());
  UserDefaults::setBoolForKey(true, "DumpiPhotoDatabase");
  CollectedLog log;
  EXPECT_TRUE(library.open());
  UserDefaults::setBoolForKey(false, "DumpiPhotoDatabase");
  const std::string file = scratch / "iPhoto-v160";
  EXPECT_EQ(log.lines().back(), "Wrote iPhoto database dump to " + file);
  EXPECT_TRUE(FileManager::contents(file)->bytes().starts_with("version = 160, "));
}

TEST(TVQiPhotoDatabase, SeesEveryOtherModificationDate) {
  struct Case {
    std::int32_t version;
    std::string file;
    int seconds;
    bool isSeen;
  };
  for (const Case& each : {Case{60, "Library6.iPhoto", 2, true},
                           {60, "Library6.iPhoto", -2, true},
                           {60, "Dir.data", 2, true},
                           {60, "Dir.data", -2, true},
                           {60, "Library.iPhoto", 2, false},
                           {60, "AlbumData.xml", 2, false},
                           {40, "Library.iPhoto", -2, true}}) {
    const LibraryFolder library;
    writeLibrary(library, each.version);
    const CollectedLog log;
    const Ref<TVQiPhotoDatabase> database = library.open();
    ASSERT_TRUE(database);
    EXPECT_FALSE(database->reloadIfChanged());
    const fs::path file = library.root + "/" + each.file;
    fs::last_write_time(file, fs::last_write_time(file) + std::chrono::seconds(each.seconds));
    EXPECT_EQ(database->reloadIfChanged(), each.isSeen) << each.file << each.seconds;
    EXPECT_FALSE(database->reloadIfChanged()) << each.file;
    fs::remove(file);
    EXPECT_FALSE(database->reloadIfChanged()) << "a file that has gone counts as unchanged";
  }
}

void makeLater(const fs::path& file) {
  fs::last_write_time(file, fs::last_write_time(file) + std::chrono::seconds(2));
}

TEST(TVQiPhotoDatabase, ReloadsAllButVersionTexts) {
  const LibraryFolder library;
  NSArchiver albums;
  albums.encodeInt(0);
  albums.encodeObject(Album::init<Album>());
  writeLibrary(library, 60,
               CodedBuilder()
                   .images({CodedBuilder().item("idKY", 7).item("idRL", 1)})
                   .item("dbAL", std::string(albums.archivedData().bytes())));
  writeDirectory(library, "old");
  const CollectedLog log;
  const Ref<TVQiPhotoDatabase> database = library.open();
  ASSERT_TRUE(database);
  const Ref<ImageRecRef> photo = database->photos()[0];
  const Ref<Album> album = database->albums()[0];
  EXPECT_EQ(database->directoryForKey(1), library.root + "/old");
  EXPECT_EQ(photo->database(), database.get());
  EXPECT_EQ(album->database(), database.get());

  writeLibrary(library, 70,
               CodedBuilder().images({CodedBuilder().item("idKY", 8).item("idRL", 1)}));
  writeDirectory(library, "new");
  makeLater(library.root + "/Library6.iPhoto");
  ASSERT_TRUE(database->reloadIfChanged());

  EXPECT_EQ(photo->database(), nullptr);
  EXPECT_EQ(album->database(), nullptr);
  ASSERT_EQ(database->photos().size(), 1U);
  EXPECT_EQ(database->photos()[0]->keyStringValue(), "8");
  EXPECT_TRUE(database->albums().empty());
  EXPECT_EQ(database->iPhotoLibraryVersion(), 70);
  EXPECT_EQ(database->directoryForKey(1), library.root + "/new");

  // The data version stays, though a catalogue of that version has another one.
  library.writeCodedVersion("Library6.iPhoto", 120);
  makeLater(library.root + "/Library6.iPhoto");
  ASSERT_TRUE(database->reloadIfChanged());
  EXPECT_EQ(database->iPhotoLibraryVersion(), 120);
  EXPECT_EQ(database->iPhotoDataVersion(), "60");

  fs::remove(library.root + "/Dir.data");
  makeLater(library.root + "/Library6.iPhoto");
  EXPECT_TRUE(database->reloadIfChanged());
  EXPECT_EQ(log.lines().back(),
            "NSInternalInconsistencyException - iPhoto Library component does not exist at '" +
                library.root + "/Dir.data' = (null)");
  EXPECT_EQ(database->iPhotoLibraryVersion(), 120);
  EXPECT_EQ(database->directoryForKey(1), std::nullopt);
}

TEST(TVQiPhotoDatabase, LetsGoOfTheAlbumsOfTheAlbumsFolder) {
  const LibraryFolder library;
  writeLibrary(library, 15);
  library.writeArchive(
      "Albums/Photo Library",
      {make<ArchivedAs<ArchiveAlbum>>(std::initializer_list<std::pair<std::string_view, Value>>{
          {"Children", make<Array>(std::vector<Value>{Album::init<RollAlbum>()})}})});
  const CollectedLog log;
  const Ref<TVQiPhotoDatabase> database = library.open();
  ASSERT_TRUE(database);
  ASSERT_EQ(database->albums().size(), 2U);
  EXPECT_EQ(database->albums()[0]->database(), database.get());
  EXPECT_EQ(database->rolls().size(), 1U);
  database->removeAllAlbums();
  EXPECT_TRUE(database->albums().empty());
  EXPECT_EQ(database->rolls().size(), 0U) << "the catalogue's";

  makeLater(library.root + "/Library.iPhoto");
  EXPECT_TRUE(database->reloadIfChanged());
  EXPECT_EQ(database->rolls().size(), 1U);
  library.write("Library.iPhoto", catalogueBytes(60, CodedBuilder()));
  fs::remove(library.root + "/Library6.iPhoto");
  makeLater(library.root + "/Library.iPhoto");
  EXPECT_TRUE(database->reloadIfChanged()) << "which fails";
  EXPECT_EQ(database->rolls().size(), 0U);
}

TEST(TVQiPhotoDatabase, ALaterGenerationWithADirectoryTableReloadsEveryTime) {
  const LibraryFolder library;
  library.writeCodedVersion("Library.iPhoto", 101);
  library.writeCodedVersion("Library6.iPhoto", 101);
  library.write("Dir.data", "not looked at");
  CollectedLog log;
  const Ref<TVQiPhotoDatabase> database = library.open();
  ASSERT_TRUE(database);
  EXPECT_TRUE(database->reloadIfChanged());
  EXPECT_TRUE(database->reloadIfChanged());
}

}  // namespace
}  // namespace mrziphoto

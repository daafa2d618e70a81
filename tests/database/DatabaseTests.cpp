#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include <MRZiPhoto/albums/ArchiveAlbum.h>
#include <MRZiPhoto/albums/LastImportAlbum.h>
#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/platform/Array.h>
#include <MRZiPhoto/platform/FileManager.h>
#include <MRZiPhoto/platform/UserDefaults.h>

#include "support/CollectedLog.h"
#include "support/LibraryFolder.h"

namespace mrziphoto {
namespace {

namespace fs = std::filesystem;

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
    std::int32_t version;
    std::string_view generation;
  };
  for (const Case& each :
       {Case{300, "80"}, {150, "80"}, {149, "70"}, {101, "70"}, {100, "60"}, {51, "60"}}) {
    const LibraryFolder library;
    library.writeCodedVersion("Library.iPhoto", each.version);
    library.writeCodedVersion("Library6.iPhoto", each.version);
    library.writeArchive("Dir.data", {1, make<Array>()});
    library.writeAlbumData("");
    CollectedLog log;
    const Ref<TVQiPhotoDatabase> database = library.open();
    ASSERT_TRUE(database) << each.version;
    EXPECT_EQ(database->iPhotoLibraryVersion(), each.version);
    EXPECT_EQ(database->iPhotoDataVersion(), each.generation);
    EXPECT_EQ(database->currentLibraryDataFilename(), library.root + "/Library6.iPhoto");
    EXPECT_EQ(database->iPhotoVersion(), "iPhoto Not Present");
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
  UserDefaults::setBoolForKey(true, "DumpiPhotoDatabase");
  CollectedLog log;
  EXPECT_TRUE(library.open());
  UserDefaults::setBoolForKey(false, "DumpiPhotoDatabase");
  const std::string file = FileManager::temporaryFolder() + "/iPhoto-v160";
  EXPECT_EQ(log.lines().back(), "Wrote iPhoto database dump to " + file);
  EXPECT_TRUE(FileManager::contents(file)->bytes().starts_with("version = 160, "));
  fs::remove(file);
}

TEST(TVQiPhotoDatabase, ReloadsWhatHasChanged) {
  const LibraryFolder library;
  library.writeCodedVersion("Library.iPhoto", 100);
  library.writeCodedVersion("Library6.iPhoto", 100);
  library.writeArchive("Dir.data", {1, make<Array>()});
  library.writeAlbumData("");
  CollectedLog log;
  const Ref<TVQiPhotoDatabase> database = library.open();
  ASSERT_TRUE(database);
  EXPECT_FALSE(database->reloadIfChanged());
  const auto touch = [&library](const std::string& name) {
    const fs::path file = library.root + "/" + name;
    fs::last_write_time(file, fs::last_write_time(file) + std::chrono::seconds(2));
  };
  touch("Library6.iPhoto");
  EXPECT_TRUE(database->reloadIfChanged());
  EXPECT_FALSE(database->reloadIfChanged());
  touch("Dir.data");
  EXPECT_TRUE(database->reloadIfChanged());

  fs::remove(library.root + "/Library6.iPhoto");
  EXPECT_FALSE(database->reloadIfChanged()) << "a file that has gone counts as unchanged";

  library.writeCodedVersion("Library6.iPhoto", 100);
  touch("Library6.iPhoto");
  fs::remove(library.root + "/Dir.data");
  EXPECT_TRUE(database->reloadIfChanged());
  EXPECT_EQ(log.lines().back(),
            "NSInternalInconsistencyException - iPhoto Library component does not exist at '" +
                library.root + "/Dir.data' = (null)");
  EXPECT_EQ(database->iPhotoLibraryVersion(), 100);
  EXPECT_EQ(database->directoryForKey(1), std::nullopt);
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

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <MRZiPhoto/albums/ArchiveAlbum.h>
#include <MRZiPhoto/albums/FolderAlbum.h>
#include <MRZiPhoto/albums/LastImportAlbum.h>
#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/files/FileManager.h>
#include <MRZiPhoto/files/Path.h>
#include <MRZiPhoto/resources/UserDefaults.h>
#include <MRZiPhoto/resources/Workspace.h>
#include <MRZiPhoto/values/Array.h>
#include <MRZiPhoto/values/Limits.h>

#include "support/CodedLibrary.h"
#include "support/CollectedLog.h"
#include "support/EnvironmentVariable.h"
#include "support/KeyValueAnswers.h"
#include "support/LibraryFolder.h"
#include "support/TemporaryFolder.h"

namespace mrziphoto {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

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
  using Cause = OpeningFailure::Cause;
  struct Case {
    void (*fill)(const LibraryFolder&);
    std::string logged;  // "ROOT" stands for the folder, here and below
    Cause cause;
    std::string told;
  };
  const std::string tooOld =
      "NSInvalidArgumentException - iPhoto Library not supported before iPhoto 4 for 'ROOT/";
  const std::string again = "; copy the whole library folder again, or from a backup";
  for (const Case& each :
       {Case{[](const LibraryFolder&) {}, tooOld + "Library.data' = (null)", Cause::empty,
             "the folder is empty; check the path, and that the disk is connected"},
        {[](const LibraryFolder& l) { l.write("inside/Library.data", ""); },
         tooOld + "Library.data' = (null)", Cause::noLibrary,
         "no iPhoto library lies in this folder, which has no 'Library.iPhoto'; a library lies in "
         "'ROOT/inside'"},
        {[](const LibraryFolder& l) { l.write("letter.txt", ""); },
         tooOld + "Library.data' = (null)", Cause::noLibrary,
         "no iPhoto library lies in this folder, which has no 'Library.iPhoto'; name the folder in "
         "which that file lies"},
        {[](const LibraryFolder& l) { l.writeAlbumData(""); }, tooOld + "Library.data' = (null)",
         Cause::incomplete, "it lacks the file 'Library.iPhoto'" + again},
        {[](const LibraryFolder& l) { l.write("database/Photos.sqlite", ""); },
         tooOld + "Library.data' = (null)", Cause::laterApplication,
         "it is a library of Photos, the application that came after iPhoto; name the iPhoto "
         "library that it was made from, if there still is one"},
        {[](const LibraryFolder& l) { fs::create_directory(l.root + "/Library.iPhoto"); },
         tooOld + "Library.iPhoto' = (null)", Cause::unreadable,
         "'ROOT/Library.iPhoto' is a folder" + again},
        {[](const LibraryFolder& l) { mkfifo((l.root + "/Library.iPhoto").c_str(), 0644); },
         "NSFileReadException - 'ROOT/Library.iPhoto' cannot be read: it is no regular file = "
         "(null)",
         Cause::unreadable, "'ROOT/Library.iPhoto' cannot be read: it is no regular file" + again},
        {[](const LibraryFolder& l) { l.writeArchivedVersion("Library.data", 14); },
         tooOld + "Library.data' = (null)", Cause::tooOld,
         "it is a library of iPhoto 1 to 3 (catalogue version 14); let iPhoto 4 or a later one "
         "convert a copy of it"},
        {[](const LibraryFolder& l) { l.write("Library.iPhoto", "XYZW"); },
         tooOld + "Library.iPhoto' = (null)", Cause::damaged,
         "the catalogue 'ROOT/Library.iPhoto' does not tell its version" + again},
        {[](const LibraryFolder& l) { l.writeCodedVersion("Library.iPhoto", 51); },
         "NSInvalidArgumentException - iPhoto Library does not exist at 'ROOT/Library6.iPhoto' = "
         "(null)",
         Cause::incomplete, "it lacks the file 'Library6.iPhoto'" + again},
        {[](const LibraryFolder& l) {
           l.writeCodedVersion("Library.iPhoto", 51);
           l.write("Library6.iPhoto", "");
           fs::resize_file(l.root + "/Library6.iPhoto", std::uintmax_t{5} << 30);
         },
         "NSFileReadException - 'ROOT/Library6.iPhoto' cannot be read: its 5368709120 bytes are "
         "more than the 2147483648 that are allowed = (null)",
         Cause::unreadable,
         "'ROOT/Library6.iPhoto' cannot be read: its 5368709120 bytes are more than the 2147483648 "
         "that are allowed"},
        {[](const LibraryFolder& l) {
           l.writeCodedVersion("Library.iPhoto", 100);
           l.writeCodedVersion("Library6.iPhoto", 100);
         },
         "NSInternalInconsistencyException - iPhoto Library component does not exist at "
         "'ROOT/Dir.data' = (null)",
         Cause::incomplete, "it lacks the file 'Dir.data'" + again},
        {[](const LibraryFolder& l) {
           l.writeArchivedVersion("Library.iPhoto", 15);
           l.writeArchive("Dir.data", {1, make<Array>()});
         },
         "NSInternalInconsistencyException - Missing directory ROOT/Albums = (null)",
         Cause::damaged, ""},
        {[](const LibraryFolder& l) {
           l.writeCodedVersion("Library.iPhoto", 101);
           l.writeCodedVersion("Library6.iPhoto", 102);
           l.write("AlbumData.xml", "no list");
         },
         "NSInternalInconsistencyException - Missing directory ROOT/Albums = (null)",
         Cause::damaged, ""}}) {
    const LibraryFolder library;
    each.fill(library);
    const auto named = [&library](std::string text) {
      for (std::size_t at = 0; (at = text.find("ROOT")) != std::string::npos;) {
        text.replace(at, 4, library.root);
      }
      return text;
    };
    CollectedLog log;
    OpeningFailure failure;
    EXPECT_FALSE(TVQiPhotoDatabase::initWithContentsOfDirectory(library.root, {}, &failure))
        << each.logged;
    ASSERT_FALSE(log.lines().empty()) << each.logged;
    EXPECT_EQ(log.lines().back(), named(each.logged));
    EXPECT_EQ(failure.cause, each.cause) << each.logged << failure.sentence();
    if (!each.told.empty()) {
      EXPECT_EQ(failure.sentence(), named(each.told));
    }
  }
}

TEST(TVQiPhotoDatabase, TakesNoCatalogueThatHoldsNothingForAnEmptyLibrary) {
  struct Case {
    std::string content;
    std::string failure;  // "ROOT" stands for the folder
  };
  const std::string again = "; copy the file again, or from a backup";
  const std::string untold =
      "the catalogue 'ROOT/Library6.iPhoto' does not tell its version" + again;
  // The folder "Albums" lets a library without a catalogue open.
  for (const bool hasAlbums : {true, false}) {
    for (const Case& each :
         {Case{"",
               "'ROOT/Library6.iPhoto' is damaged: the data ends inside a value: 4 bytes wanted "
               "at offset 0 of 0" +
                   again},
          Case{"no catalogue", untold}, Case{{"dbVS\xFF\xFF\xFF\xFB\0\0\0\x3C", 12}, untold},
          Case{{"dbVS\0\0\0\x04\0\0\0\x0A", 12}, untold}}) {
      const LibraryFolder library;
      writeLibrary(library, 60);
      library.write("Library6.iPhoto", each.content);
      if (!hasAlbums) {
        fs::remove_all(library.root + "/Albums");
      }
      const CollectedLog log;
      std::optional<OpeningFailure> failure(std::in_place);
      const auto database =
          TVQiPhotoDatabase::initWithContentsOfDirectory(library.root, {}, &*failure);
      ASSERT_EQ(static_cast<bool>(database), hasAlbums) << each.content;
      if (database) {
        failure = database->photosFailure();
      }
      ASSERT_TRUE(failure) << each.content;
      EXPECT_EQ(failure->cause, OpeningFailure::Cause::damaged);
      EXPECT_EQ(failure->file, library.root + "/Library6.iPhoto");
      std::string told = failure->sentence();
      told.replace(told.find(library.root), library.root.size(), "ROOT");
      EXPECT_EQ(told, each.failure);
    }
  }
}

TEST(TVQiPhotoDatabase, NoticesFilesThatCannotBeRead) {
  struct Case {
    std::int32_t version;
    std::string file;  // in whose place a pipe lies, or a file, or nothing
    std::optional<std::string_view> content;
    std::vector<std::string> notices;  // "ROOT" stands for the folder
    bool hasPhotos;
  };
  constexpr std::string_view kPipe = "pipe";
  const std::string noFile = " cannot be read: it is no regular file";
  for (const Case& each : {
           Case{60, "AlbumData.xml", kPipe, {"'ROOT/AlbumData.xml'" + noFile}, true},
           {60, "AlbumData.xml", std::nullopt, {}, true},
           {200, "AlbumData.xml", kPipe, {"'ROOT/AlbumData.xml'" + noFile}, false},
           {200,
            "AlbumData.xml",
            std::nullopt,
            {"'ROOT/AlbumData.xml' cannot be read: No such file or directory"},
            false},
           {60,
            "Dir.data",
            kPipe,
            {"the folders of the photos are not known: 'ROOT/Dir.data'" + noFile},
            true},
           {60,
            "Dir.data",
            "no table",
            {"the folders of the photos are not known: 'ROOT/Dir.data' is damaged: it is no "
             "archive"},
            true},
           {60,
            "Thumb64Segment.data",
            kPipe,
            {"the small thumbnails are not to be had: 'ROOT/Thumb64Segment.data'" + noFile},
            true},
           {60, "Thumb64Segment.data", std::nullopt, {}, true},
       }) {
    const LibraryFolder library;
    writeLibrary(library, each.version);
    const std::string file = library.root + "/" + each.file;
    fs::remove(file);
    if (each.content == kPipe) {
      ASSERT_EQ(mkfifo(file.c_str(), 0644), 0);
    } else if (each.content) {
      library.write(each.file, std::string(*each.content));
    }
    const CollectedLog log;
    const Ref<TVQiPhotoDatabase> database = library.open();
    ASSERT_TRUE(database) << file;
    EXPECT_FALSE(database->thumbnailSegmentCache());
    EXPECT_EQ(!database->photosFailure(), each.hasPhotos) << file;
    std::vector<std::string> found;
    for (const Notice& notice : database->notices()) {
      found.push_back(notice.sentence);
      const std::size_t root = found.back().find(library.root);
      ASSERT_NE(root, std::string::npos);
      found.back().replace(root, library.root.size(), "ROOT");
      EXPECT_EQ(notice.file, file);
    }
    EXPECT_EQ(found, each.notices) << file;
  }
}

TEST(TVQiPhotoDatabase, GoesByTheOptionsOfItsOpening) {
  const LibraryFolder library;
  const LibraryFolder other;
  writeLibrary(library, 200);
  other.writeAlbumData("");
  fs::remove(library.root + "/AlbumData.xml");
  fs::create_symlink(other.root + "/AlbumData.xml", library.root + "/AlbumData.xml");
  const CollectedLog log;
  EXPECT_FALSE(library.open()->photosFailure());
  const auto inside =
      TVQiPhotoDatabase::initWithContentsOfDirectory(library.root, {.stayInside = true});
  ASSERT_TRUE(inside && inside->photosFailure());
  EXPECT_EQ(inside->photosFailure()->what,
            "'" + library.root + "/AlbumData.xml' cannot be read: it lies outside of '" +
                library.root + "', the only folder that may be read");
  Limits limits;
  limits.fileSize = 10;
  OpeningFailure failure;
  EXPECT_FALSE(
      TVQiPhotoDatabase::initWithContentsOfDirectory(library.root, {.limits = limits}, &failure));
  EXPECT_EQ(failure.what, "'" + library.root +
                              "/Library6.iPhoto' cannot be read: its 12 bytes are more than the 10 "
                              "that are allowed");
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

TEST(TVQiPhotoDatabase, AnswersItsOperationsByName) {
  const LibraryFolder library;
  writeLibrary(library, 120);
  const std::string& root = library.root;
  fs::remove(root + "/Dir.data");
  const CollectedLog log;
  const Ref<TVQiPhotoDatabase> database = library.open();
  ASSERT_TRUE(database);
  expectAnswers(*database, {{"albumDataDirectory", root + "/Albums"},
                            {"albumDataFile", root + "/AlbumData.xml"},
                            {"albums", make<Array>()},
                            {"archivePath", root},
                            {"currentLibraryDataFilename", root + "/Library6.iPhoto"},
                            {"directoriesDataFilename", root + "/Dir.data"},
                            {"directory", root},
                            {"iPhotoDataVersion", "70"},
                            {"iPhotoLibraryVersion", 120},
                            {"iPhotoVersion", database->iPhotoVersion()},
                            {"keywords", make<Array>()},
                            {"library6DataFilename", root + "/Library6.iPhoto"},
                            {"libraryDataFilename", root + "/Library.iPhoto"},
                            {"photos", make<Array>()},
                            {"reloadIfChanged", false},
                            {"rolls", make<Array>()},
                            {"thumbnailSegmentCache", {}}});
  fs::last_write_time(root + "/Library6.iPhoto", fs::file_time_type::clock::now() + 1h);
  EXPECT_EQ(database->valueForKey("reloadIfChanged"), Value(true));
}

TEST(TVQiPhotoDatabase, WhatAHostKeepsOutlivesIt) {
  const LibraryFolder library;
  writeLibrary(library, 120);
  const CollectedLog log;
  Ref<TVQiPhotoDatabase> database = library.open();
  const Ref<Album> album = Album::initWithDictionary<Album>(
      Dictionary{{"KeyList", make<Array>(std::vector<Value>{"7"})}});
  database->addAlbum(album);
  const Ref<KeyMgr> keys = album->photoKeys();
  album->storedDictionary()->set(Album::kKeys, {});
  const List<Album> albums = database->albums();
  fs::last_write_time(library.root + "/Library6.iPhoto", fs::file_time_type::clock::now() + 1h);
  EXPECT_TRUE(database->reloadIfChanged());
  EXPECT_EQ(keys->database(), nullptr);
  EXPECT_TRUE(albums.empty());
  database->addAlbum(album);
  keys->setDatabase(database.get());
  database = nullptr;
  EXPECT_EQ(album->database(), nullptr);
  EXPECT_TRUE(album->photos().empty());
  EXPECT_TRUE(keys->photos().isNothing());
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
  ASSERT_EQ(mkfifo((library.root + "/Albums/.pipe").c_str(), 0644), 0);
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
  const auto unread = [](const Ref<TVQiPhotoDatabase>& opened) {
    const std::vector<Notice> notices = opened->notices();
    return notices.empty() ? "" : notices.back().sentence.substr(0, 50);
  };
  EXPECT_EQ(unread(database), "2 album files could not be read, the first because");
  fs::remove(library.root + "/Albums/link");
  fs::remove(library.root + "/Albums/not an album");
  EXPECT_EQ(unread(library.open()), "");
  ASSERT_EQ(mkfifo((library.root + "/Albums/pipe").c_str(), 0644), 0);
  EXPECT_EQ(library.open()->notices().back().sentence,
            "1 album files could not be read, the first because '" + library.root +
                "/Albums/pipe' cannot be read: it is no regular file");
  // A damaged store of a photo is tried anew with every question.
  for (const char* reason : {"'a' is damaged", "'b' is damaged", "'a' is damaged"}) {
    database->noteUnreadable("stores of photos", reason);
  }
  EXPECT_EQ(database->notices().back().sentence,
            "2 stores of photos could not be read, the first because 'a' is damaged");
}

TEST(TVQiPhotoDatabase, LeavesOutAlbumsAndRollsBeyondTheLimit) {
  const Value album = Album::init<Album>();
  const Value folder =
      make<ArchivedAs<FolderAlbum>>(std::initializer_list<std::pair<std::string_view, Value>>{
          {"Children", make<Array>(std::vector<Value>{album, album})}});
  NSArchiver coded;
  coded.encodeInt(0);
  for (const Value& each : {Value(Album::init<ArchiveAlbum>()), album, folder, album}) {
    coded.encodeObject(each);
  }
  const CodedBuilder roll = CodedBuilder().item("stKY", 1);
  const CodedBuilder sections = CodedBuilder()
                                    .item("dbAL", std::string(coded.archivedData().bytes()))
                                    .rolls({roll, roll, roll, roll, roll});
  const std::string inAlbums = "'ROOT/Albums' has more than 3 albums, and 2 of them were left out";
  const std::string inData = "'ROOT/AlbumData.xml' has more than 3 ";
  const std::string inCatalogue = "'ROOT/Library6.iPhoto' has more than 3 ";
  struct Case {
    std::int32_t version;
    std::vector<std::string> notices;  // "ROOT" stands for the folder
  };
  for (const Case& each : {Case{15, {inAlbums}},
                           Case{60,
                                {inCatalogue + "albums, and 1 of them were left out",
                                 inCatalogue + "rolls, and 2 of them were left out"}},
                           Case{200,
                                {inData + "albums, and 2 of them were left out",
                                 inData + "rolls, and 1 of them were left out"}}}) {
    const LibraryFolder library;
    writeLibrary(library, each.version, each.version == 60 ? sections : CodedBuilder());
    library.writeAlbumData(
        xml::entry("List of Albums", xml::array("<dict/><dict/><dict/><dict/><dict/>")) +
        xml::entry("List of Rolls", xml::array("<dict/><dict/><dict/><dict/>")));
    for (const char* name : {"a", "b", "c", "d", "e", "Photo Library", "Last Import"}) {
      library.writeArchive("Albums/" + std::string(name), {album});
    }
    Limits limits;
    limits.albums = 3;
    const CollectedLog log;
    const Ref<TVQiPhotoDatabase> database =
        TVQiPhotoDatabase::initWithContentsOfDirectory(library.root, {.limits = limits});
    ASSERT_TRUE(database) << each.version;
    EXPECT_EQ(database->albums().size(), each.version == 15 ? 5U : 3U);
    std::vector<std::string> found;
    for (const Notice& notice : database->notices()) {
      EXPECT_EQ(std::ranges::count(log.lines(), notice.sentence), 1);
      found.push_back(notice.sentence);
      found.back().replace(found.back().find(library.root), library.root.size(), "ROOT");
    }
    EXPECT_EQ(found, each.notices);
  }
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

TEST(TVQiPhotoDatabase, WritesNoDumpIntoTheLibrary) {
  const LibraryFolder library;
  const TemporaryFolder other;
  library.writeCodedVersion("Library.iPhoto", 160);
  library.writeCodedVersion("Library6.iPhoto", 160);
  library.writeAlbumData("");
  library.write("tmp/file", "");
  fs::create_directory_symlink(library.root + "/tmp", other / "link");
  fs::create_directories(library.root + "-beside");
  UserDefaults::setBoolForKey(true, "DumpiPhotoDatabase");
  const struct {
    std::string folder;
    bool isWritten;
  } kCases[] = {{library.root, false},
                {library.root + "/tmp", false},
                {library.root + "/tmp/", false},
                {other / "link", false},
                {library.root + "-beside", true}};
  for (const auto& each : kCases) {
    const EnvironmentVariable folder("TMPDIR", each.folder);
    const std::string file = path::join(each.folder, "iPhoto-v160");
    CollectedLog log;
    EXPECT_TRUE(library.open());
    EXPECT_EQ(log.lines().back(), each.isWritten ? "Wrote iPhoto database dump to " + file
                                                 : "No iPhoto database dump was written to " +
                                                       file + ", which lies in the library");
    EXPECT_EQ(fs::exists(file), each.isWritten) << file;
  }
  UserDefaults::setBoolForKey(false, "DumpiPhotoDatabase");
  fs::remove_all(library.root + "-beside");
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

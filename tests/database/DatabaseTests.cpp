#include <sys/resource.h>

#include <MRZiPhoto/albums/AlbumKinds.h>
#include <MRZiPhoto/files/Path.h>
#include <MRZiPhoto/resources/detail/UserDefaults.h>
#include <MRZiPhoto/resources/detail/Workspace.h>

#include "support/CodedLibrary.h"
#include "support/EnvironmentVariable.h"
#include "support/KeyValueAnswers.h"
#include "support/LibraryFolder.h"

namespace mrziphoto {
namespace {

using Cause = OpeningFailure::Cause;

/// Puts a file there: "coded 51" and "archive 14" stand for catalogues of these versions, "pipe"
/// and "folder" for what they name, "large" for 5 GB, "table" for an empty directory table and
/// "list" for album data; anything else is what the file contains.
void put(const LibraryFolder& library, const std::string& name, const std::string& content) {
  if (content == "pipe") {
    library.makePipe(name);
  } else if (content == "folder") {
    fs::create_directory(library / name);
  } else if (content == "large") {
    library.write(name, "");
    fs::resize_file(library / name, std::uintmax_t{5} << 30);
  } else if (content == "table") {
    library.writeArchive(name, {1, make<Array>()});
  } else if (content == "list") {
    library.writeAlbumData("");
  } else if (content.starts_with("coded ")) {
    library.writeCodedVersion(name, std::stoi(content.substr(6)));
  } else if (content.starts_with("archive ")) {
    library.writeArchivedVersion(name, std::stoi(content.substr(8)));
  } else {
    library.write(name, content);
  }
}

/// The catalogue file of a version, and what lies beside it in a library of any generation.
void writeLibrary(const LibraryFolder& library, std::int32_t version,
                  const CodedBuilder& sections = {}) {
  if (version > 50) {
    library.writeCodedVersion("Library.iPhoto", version);
  }
  library.write(version > 50 ? "Library6.iPhoto" : "Library.iPhoto",
                catalogueBytes(version, sections));
  put(library, "Dir.data", "table");
  put(library, "AlbumData.xml", "list");
  fs::create_directory(library / "Albums");
}

/// A directory table in which the folder has the key 1.
void writeDirectory(const LibraryFolder& library, std::string_view folder) {
  library.writeArchive("Dir.data",
                       {1, list({archivedAs<DirectoryRec>({{"Key", 1}, {"Path", folder}})})});
}

TEST(TVQiPhotoDatabase, SaysWhyALibraryCannotBeOpened) {
  const std::string old =
      "NSInvalidArgumentException - iPhoto Library not supported before iPhoto 4 for 'ROOT/";
  const std::string noData = old + "Library.data' = (null)";
  const std::string tooOld = old + "Library.iPhoto' = (null)";
  const std::string none = "no iPhoto library lies in this folder, which has no 'Library.iPhoto'; ";
  const std::string noAlbums =
      "NSInternalInconsistencyException - Missing directory ROOT/Albums = (null)";
  const std::string again = "; copy the whole library folder again, or from a backup";
  const std::string convert = "); let iPhoto 4 or a later one convert a copy of it";
  for (const auto& [files, logged, cause, told] :
       Rows<std::string, std::string, Cause, std::string>{
           {"", noData, Cause::empty,
            "the folder is empty; check the path, and that the disk is connected"},
           {"inside/Library.data=x", noData, Cause::noLibrary,
            none + "a library lies in 'ROOT/inside'"},
           {"letter.txt=x", noData, Cause::noLibrary,
            none + "name the folder in which that file lies"},
           {"AlbumData.xml=list", noData, Cause::incomplete,
            "it lacks the file 'Library.iPhoto'" + again},
           {"database/Photos.sqlite=x", noData, Cause::laterApplication,
            "it is a library of Photos, the application that came after iPhoto; name the iPhoto "
            "library that it was made from, if there still is one"},
           {"Library.iPhoto=folder", tooOld, Cause::unreadable,
            "'ROOT/Library.iPhoto' is a folder" + again},
           {"Library.iPhoto=pipe",
            "NSFileReadException - 'ROOT/Library.iPhoto' cannot be read: it is no regular file = "
            "(null)",
            Cause::unreadable,
            "'ROOT/Library.iPhoto' cannot be read: it is no regular file" + again},
           {"Library.data=archive 13", noData, Cause::tooOld,
            "it is a library of iPhoto 1 to 3 (catalogue version 13" + convert},
           {"Library.data=archive 14", noData, Cause::tooOld,
            "it is a library of iPhoto 1 to 3 (catalogue version 14" + convert},
           {"Library.iPhoto=XYZW", tooOld, Cause::damaged,
            "the catalogue 'ROOT/Library.iPhoto' does not tell its version" + again},
           {"Library.iPhoto=coded 51",
            "NSInvalidArgumentException - iPhoto Library does not exist at 'ROOT/Library6.iPhoto' "
            "= (null)",
            Cause::incomplete, "it lacks the file 'Library6.iPhoto'" + again},
           {"Library.iPhoto=coded 51,Library6.iPhoto=large",
            "NSFileReadException - 'ROOT/Library6.iPhoto' cannot be read: its 5368709120 bytes are "
            "more than the 2147483648 that are allowed = (null)",
            Cause::unreadable,
            "'ROOT/Library6.iPhoto' cannot be read: its 5368709120 bytes are more than the "
            "2147483648 that are allowed"},
           {"Library.iPhoto=coded 100,Library6.iPhoto=coded 100",
            "NSInternalInconsistencyException - iPhoto Library component does not exist at "
            "'ROOT/Dir.data' = (null)",
            Cause::incomplete, "it lacks the file 'Dir.data'" + again},
           {"Library.iPhoto=archive 15,Dir.data=table", noAlbums, Cause::damaged,
            "'ROOT/Library.iPhoto' is damaged: *** End of archive encountered prematurely at 20; "
            "copy the file again, or from a backup"},
           {"Library.iPhoto=coded 101,Library6.iPhoto=coded 102,AlbumData.xml=no list", noAlbums,
            Cause::damaged,
            "'ROOT/AlbumData.xml' is damaged: the property list has text before its root element "
            "at line 1, byte 0; copy the file again, or from a backup"}}) {
    const LibraryFolder library;
    std::istringstream rest(files);
    for (std::string file; std::getline(rest, file, ',');) {
      put(library, file.substr(0, file.find('=')), file.substr(file.find('=') + 1));
    }
    const CollectedLog log;
    OpeningFailure failure;
    EXPECT_FALSE(library.tryToOpen({}, failure)) << files;
    ASSERT_FALSE(log.lines().empty()) << files;
    EXPECT_EQ(library.rooted(log.lines().back()), logged);
    EXPECT_EQ(failure.cause, cause) << files;
    EXPECT_EQ(library.rooted(failure.sentence()), told) << files;
  }
}

TEST(TVQiPhotoDatabase, TakesNoCatalogueThatHoldsNothingForAnEmptyLibrary) {
  const std::string again = "; copy the file again, or from a backup";
  const std::string untold =
      "the catalogue 'ROOT/Library6.iPhoto' does not tell its version" + again;
  // The folder "Albums" lets a library without a catalogue open.
  for (const bool hasAlbums : {true, false}) {
    for (const auto& [content, told] : Rows<std::string, std::string>{
             {"",
              "'ROOT/Library6.iPhoto' is damaged: the data ends inside a value: 4 bytes wanted at "
              "offset 0 of 0" +
                  again},
             {"no catalogue", untold},
             {"coded -5", untold},
             {"coded 10", untold},
             {"coded 14", untold}}) {
      const LibraryFolder library;
      writeLibrary(library, 60);
      put(library, "Library6.iPhoto", content);
      if (!hasAlbums) {
        fs::remove_all(library / "Albums");
      }
      std::optional<OpeningFailure> failure(std::in_place);
      const auto database = library.tryToOpen({}, *failure);
      ASSERT_EQ(static_cast<bool>(database), hasAlbums) << content;
      if (database) {
        failure = database->photosFailure();
      }
      ASSERT_TRUE(failure) << content;
      EXPECT_EQ(failure->cause, Cause::damaged);
      EXPECT_EQ(failure->file, library / "Library6.iPhoto");
      EXPECT_EQ(library.rooted(failure->sentence()), told);
    }
  }
}

TEST(TVQiPhotoDatabase, NoticesFilesThatCannotBeRead) {
  const std::string unknown = "the folders of the photos are not known: 'ROOT/Dir.data'";
  const std::string noFile = " cannot be read: it is no regular file";
  for (const auto& [version, name, content, notice, hasPhotos] :
       Rows<std::int32_t, std::string, std::string, std::string, bool>{
           {60, "AlbumData.xml", "pipe", "'ROOT/AlbumData.xml'" + noFile, true},
           {60, "AlbumData.xml", "", "", true},
           {200, "AlbumData.xml", "pipe", "'ROOT/AlbumData.xml'" + noFile, false},
           {200, "AlbumData.xml", "",
            "'ROOT/AlbumData.xml' cannot be read: No such file or directory", false},
           {60, "Dir.data", "pipe", unknown + noFile, true},
           {60, "Dir.data", "no table", unknown + " is damaged: it is no archive", true},
           {60, "Thumb64Segment.data", "pipe",
            "the small thumbnails are not to be had: 'ROOT/Thumb64Segment.data'" + noFile, true},
           {60, "Thumb64Segment.data", "", "", true}}) {
    const LibraryFolder library;
    writeLibrary(library, version);
    fs::remove(library / name);
    if (!content.empty()) {
      put(library, name, content);
    }
    const Ref<TVQiPhotoDatabase> database = library.open();
    EXPECT_FALSE(database->thumbnailSegmentCache());
    EXPECT_EQ(!database->photosFailure(), hasPhotos) << name;
    EXPECT_EQ(library.noticesOf(*database), notice.empty() ? Texts() : Texts{notice}) << name;
    for (const Notice& each : database->notices()) {
      EXPECT_EQ(each.file, library / name);
    }
  }
}

TEST(TVQiPhotoDatabase, GoesByTheOptionsOfItsOpening) {
  const LibraryFolder library;
  const LibraryFolder other;
  writeLibrary(library, 200);
  other.writeAlbumData("");
  fs::remove(library / "AlbumData.xml");
  fs::create_symlink(other / "AlbumData.xml", library / "AlbumData.xml");
  EXPECT_FALSE(library.open()->photosFailure());
  const auto inside = library.open({.stayInside = true});
  ASSERT_TRUE(inside && inside->photosFailure());
  EXPECT_EQ(library.rooted(inside->photosFailure()->what),
            "'ROOT/AlbumData.xml' cannot be read: it lies outside of 'ROOT', the only folder that "
            "may be read");
  Limits limits;
  limits.fileSize = 10;
  OpeningFailure failure;
  EXPECT_FALSE(library.tryToOpen({.limits = limits}, failure));
  EXPECT_EQ(library.rooted(failure.what),
            "'ROOT/Library6.iPhoto' cannot be read: its 12 bytes are more than the 10 that are "
            "allowed");
}

/// A catalogue whose file is that much larger than others.
void writeLargeLibrary(const LibraryFolder& library, std::int32_t version, std::size_t size) {
  writeLibrary(library, version, CodedBuilder().item("dbXX", std::string(size, 'x')));
}

/// How often threads other than this one have touched memory for the first time, ended ones
/// included.
long pagesOfOtherThreads() {
  rusage all{};
  rusage own{};
  getrusage(RUSAGE_SELF, &all);
  getrusage(RUSAGE_THREAD, &own);
  return all.ru_minflt - own.ru_minflt;
}

TEST(TVQiPhotoDatabase, StartsNoThreadUnlessItMay) {
  const LibraryFolder library;
  // Coded catalogues are read through a window; those behind an archive lie in memory.
  writeLargeLibrary(library, 50, std::size_t{17} << 20);
  for (const bool mayStart : {false, true}) {
    OpeningOptions options;
    if (mayStart) {
      options.mayStartThreads = true;
    }
    const long before = pagesOfOtherThreads();
    EXPECT_TRUE(library.open(options));
    EXPECT_EQ(pagesOfOtherThreads() > before, mayStart);
  }
}

std::size_t bytesReadSoFar() {
  const std::string counters = fileBytes("/proc/self/io");
  return counters.empty() ? 0 : std::stoul(counters.substr(counters.find("rchar: ") + 7));
}

TEST(TVQiPhotoDatabase, ReadsItsCatalogueOnce) {
  constexpr std::size_t kSize = 1'000'000;
  for (const std::int32_t version : {15, 50, 60}) {
    const LibraryFolder library;
    writeLargeLibrary(library, version, kSize);
    const std::size_t before = bytesReadSoFar();
    EXPECT_TRUE(library.open());
    EXPECT_LT(bytesReadSoFar() - before, kSize * 3 / 2) << version;
  }
}

TEST(TVQiPhotoDatabase, TellsTheDataVersion) {
  for (const auto& [version, generation, beside] :
       Rows<std::int32_t, std::string, std::string>{{300, "80", ""},
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
                                                    {14, "40", "Thumb32.data"},
                                                    {13, "20", "Albums/Pending Rotation"},
                                                    {13, "40", "Thumb32.data"},
                                                    {12, "10", "Thumb32.data"},
                                                    {12, "11", "Albums/Pending Rotation"}}) {
    const LibraryFolder library;
    writeLibrary(library, version);
    if (version < 15) {  // only behind a newer one is a catalogue of these versions loaded
      writeLibrary(library, 60);
      library.writeCodedVersion("Library6.iPhoto", version);
    }
    fs::create_directory(library / beside);
    const Ref<TVQiPhotoDatabase> database = library.open();
    EXPECT_EQ(database->iPhotoLibraryVersion(), version);
    EXPECT_EQ(database->photosFailure().has_value(), version < 15) << version;
    EXPECT_EQ(database->iPhotoDataVersion(), generation) << version << beside;
    EXPECT_EQ(database->currentLibraryDataFilename(),
              library / (version > 50 ? "Library6.iPhoto" : "Library.iPhoto"));
  }
}

TEST(TVQiPhotoDatabase, TellsTheVersionOfTheApplicationOnce) {
  const LibraryFolder library;
  writeLibrary(library, 120);
  const std::string application = library / "iPhoto.app";
  const std::string version = "CFBundleShortVersionString";
  for (const auto& [found, key, told] : Rows<std::optional<std::string>, std::string, std::string>{
           {std::nullopt, version, "iPhoto Not Present"},
           {application + "/nowhere", version, "iPhoto Not Present"},
           {application, "CFBundleVersion", "Unknown"},
           {application, version, "9.4.3"}}) {
    library.write("iPhoto.app/Contents/Info.plist",
                  "<plist><dict><key>" + key + "</key><string>9.4.3</string></dict></plist>");
    Texts asked;
    Workspace::setApplicationLookup([&asked, answer = found](std::string_view name) {
      asked.emplace_back(name);
      return answer;
    });
    const Ref<TVQiPhotoDatabase> database = library.open();
    EXPECT_EQ(database->iPhotoVersion(), told);
    EXPECT_EQ(database->iPhotoVersion(), told);
    EXPECT_EQ(asked, Texts{"iPhoto"});
  }
  Workspace::setApplicationLookup({});
}

TEST(TVQiPhotoDatabase, RefusesACatalogueOfTwoVersions) {
  for (const auto& [first, second] : {std::pair{40, 39}, {40, 41}, {60, 59}, {60, 61}}) {
    const LibraryFolder library;
    writeLibrary(library, first, CodedBuilder().item("dbVS", second));
    const CollectedLog log;
    const Ref<TVQiPhotoDatabase> database = library.open();
    EXPECT_EQ(log.lines(),
              Texts{"NSInternalInconsistencyException - iPhoto library version "
                    "mismatch " +
                    std::to_string(first) + " vs. " + std::to_string(second) + " = (null)"});
    EXPECT_EQ(database->iPhotoLibraryVersion(), 0);
  }
}

TEST(TVQiPhotoDatabase, AnswersItsOperationsByName) {
  const LibraryFolder library;
  writeLibrary(library, 120);
  fs::remove(library / "Dir.data");
  const Ref<TVQiPhotoDatabase> database = library.open();
  expectAnswers(*database, {{"albumDataDirectory", library / "Albums"},
                            {"albumDataFile", library / "AlbumData.xml"},
                            {"albums", make<Array>()},
                            {"archivePath", library.root},
                            {"currentLibraryDataFilename", library / "Library6.iPhoto"},
                            {"directoriesDataFilename", library / "Dir.data"},
                            {"directory", library.root},
                            {"iPhotoDataVersion", "70"},
                            {"iPhotoLibraryVersion", 120},
                            {"iPhotoVersion", database->iPhotoVersion()},
                            {"keywords", make<Array>()},
                            {"library6DataFilename", library / "Library6.iPhoto"},
                            {"libraryDataFilename", library / "Library.iPhoto"},
                            {"photos", make<Array>()},
                            {"reloadIfChanged", false},
                            {"rolls", make<Array>()},
                            {"thumbnailSegmentCache", {}}});
  library.makeLater("Library6.iPhoto");
  EXPECT_EQ(database->valueForKey("reloadIfChanged"), Value(true));
}

TEST(TVQiPhotoDatabase, WhatAHostKeepsOutlivesIt) {
  const LibraryFolder library;
  writeLibrary(library, 120);
  Ref<TVQiPhotoDatabase> database = library.open();
  const Ref<Album> album = Album::initWithDictionary<Album>(Dictionary{{"KeyList", list({"7"})}});
  database->addAlbum(album);
  const Ref<KeyMgr> keys = album->photoKeys();
  album->storedDictionary()->set(Album::kKeys, {});
  const List<Album> albums = database->albums();
  library.makeLater("Library6.iPhoto");
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
  writeLibrary(library, 120);
  library.write("AlbumData.xml", "<plist><dict></plist>");
  const Ref<TVQiPhotoDatabase> database = library.open();
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
  fs::create_symlink(library / "Albums/B", library / "Albums/link");
  library.makePipe("Albums/.pipe");
  const Ref<TVQiPhotoDatabase> database = library.open();
  EXPECT_EQ(database->iPhotoDataVersion(), "11");
  std::string names;
  for (const Ref<Album>& album : database->albums()) {
    names += album->albumName().value_or("?") + ", ";
  }
  EXPECT_EQ(names, "Photo Library, Last Import, B, ");
  EXPECT_EQ(&database->albums()[0]->objectClass(), &ArchiveAlbum::kClass);
  EXPECT_FALSE(database->rolls().isNothing());
  EXPECT_TRUE(library.noticesOf(*database).back().starts_with(
      "2 album files could not be read, the first because"));
  fs::remove(library / "Albums/link");
  fs::remove(library / "Albums/not an album");
  EXPECT_EQ(library.open()->notices().size(), database->notices().size() - 1);
  library.makePipe("Albums/pipe");
  EXPECT_EQ(library.noticesOf(*library.open()).back(),
            "1 album files could not be read, the first because 'ROOT/Albums/pipe' cannot be read: "
            "it is no regular file");
  // A damaged store of a photo is tried anew with every question.
  for (const char* reason : {"'a' is damaged", "'b' is damaged", "'a' is damaged"}) {
    database->noteUnreadable("stores of photos", reason);
  }
  EXPECT_EQ(database->notices().back().sentence,
            "2 stores of photos could not be read, the first because 'a' is damaged");
}

TEST(TVQiPhotoDatabase, LeavesOutAlbumsAndRollsBeyondTheLimit) {
  const Value album = Album::init<Album>();
  const Value folder = archivedAs<FolderAlbum>({{"Children", list({album, album})}});
  const CodedBuilder roll = CodedBuilder().item("stKY", 1);
  const CodedBuilder sections =
      CodedBuilder()
          .item("dbAL", albumArchive({Album::init<ArchiveAlbum>(), album, folder, album}))
          .rolls({roll, roll, roll, roll, roll});
  const std::string inData = "'ROOT/AlbumData.xml' has more than 3 ";
  const std::string inCatalogue = "'ROOT/Library6.iPhoto' has more than 3 ";
  for (const auto& [version, notices] : Rows<std::int32_t, Texts>{
           {15, {"'ROOT/Albums' has more than 3 albums, and 2 of them were left out"}},
           {60,
            {inCatalogue + "albums, and 1 of them were left out",
             inCatalogue + "rolls, and 2 of them were left out"}},
           {200,
            {inData + "albums, and 2 of them were left out",
             inData + "rolls, and 1 of them were left out"}}}) {
    const LibraryFolder library;
    writeLibrary(library, version, version == 60 ? sections : CodedBuilder());
    library.writeAlbumData(xml::entry("List of Albums", xml::array(repeated("<dict/>", 5))) +
                           xml::entry("List of Rolls", xml::array(repeated("<dict/>", 4))));
    for (const char* name : {"a", "b", "c", "d", "e", "Photo Library", "Last Import"}) {
      library.writeArchive("Albums/" + std::string(name), {album});
    }
    Limits limits;
    limits.albums = 3;
    const CollectedLog log;
    const Ref<TVQiPhotoDatabase> database = library.open({.limits = limits});
    EXPECT_EQ(database->albums().size(), version == 15 ? 5U : 3U);
    EXPECT_EQ(library.noticesOf(*database), notices);
    for (const Notice& notice : database->notices()) {
      EXPECT_EQ(std::ranges::count(log.lines(), notice.sentence), 1);
    }
  }
}

TEST(TVQiPhotoDatabase, HandsFoldersAndPathsOut) {
  using namespace xml;
  const LibraryFolder library;
  library.writeCodedVersions(160);
  library.writeAlbumData(
      entry("Archive Path", text("/old/Library")) +
      entry("Master Image List",
            dict(entry("7", dict(entry("Roll", number(1)) +
                                 entry("ImagePath", text("/old/Library/2004/a.jpg")))))));
  Ref<ImageRecRef> photo;
  {
    const Ref<TVQiPhotoDatabase> database =
        TVQiPhotoDatabase::initWithContentsOfDirectory(library / "x/.././");
    ASSERT_TRUE(database);
    EXPECT_EQ(database->directory(), library.root);
    photo = database->photos()[0];
    EXPECT_EQ(photo->imagePath(), library / "2004/a.jpg");
    EXPECT_EQ(photo->relativeDirectory(), "2004");
    EXPECT_EQ(database->directoryForKey(1), std::nullopt);
  }
  EXPECT_EQ(photo->database(), nullptr) << "a photo that outlives its database has none";
  EXPECT_EQ(photo->imagePath(), std::nullopt);
}

TEST(TVQiPhotoDatabase, WritesADumpWhenToldToButNotIntoTheLibrary) {
  const LibraryFolder library;
  const TemporaryFolder other;
  library.writeCodedVersions(160);
  library.writeAlbumData("");
  library.write("tmp/file", "");
  fs::create_directory_symlink(library / "tmp", other / "link");
  fs::create_directories(library.root + "-beside");
  UserDefaults::setBoolForKey(true, "DumpiPhotoDatabase");
  for (const auto& [folder, isWritten] :
       Rows<std::string, bool>{{library.root, false},
                               {library / "tmp", false},
                               {library / "tmp/", false},
                               {other / "link", false},
                               {other.path(), true},
                               {library.root + "-beside", true}}) {
    const EnvironmentVariable temporary("TMPDIR", folder);
    const std::string file = path::join(folder, "iPhoto-v160");
    const CollectedLog log;
    EXPECT_TRUE(library.open());
    EXPECT_EQ(log.lines().back(), isWritten ? "Wrote iPhoto database dump to " + file
                                            : "No iPhoto database dump was written to " + file +
                                                  ", which lies in the library");
    EXPECT_EQ(fileBytes(file).starts_with("version = 160, "), isWritten) << file;
    EXPECT_EQ(fs::exists(file), isWritten) << file;
  }
  UserDefaults::setBoolForKey(false, "DumpiPhotoDatabase");
  fs::remove_all(library.root + "-beside");
}

TEST(TVQiPhotoDatabase, SeesEveryOtherModificationDate) {
  for (const auto& [version, file, seconds, isSeen] :
       Rows<std::int32_t, std::string, int, bool>{{60, "Library6.iPhoto", 2, true},
                                                  {60, "Library6.iPhoto", -2, true},
                                                  {60, "Dir.data", 2, true},
                                                  {60, "Dir.data", -2, true},
                                                  {60, "Library.iPhoto", 2, false},
                                                  {60, "AlbumData.xml", 2, false},
                                                  {40, "Library.iPhoto", -2, true}}) {
    const LibraryFolder library;
    writeLibrary(library, version);
    const Ref<TVQiPhotoDatabase> database = library.open();
    EXPECT_FALSE(database->reloadIfChanged());
    library.makeLater(file, std::chrono::seconds(seconds));
    EXPECT_EQ(database->reloadIfChanged(), isSeen) << file << seconds;
    EXPECT_FALSE(database->reloadIfChanged()) << file;
    fs::remove(library / file);
    EXPECT_FALSE(database->reloadIfChanged()) << "a file that has gone counts as unchanged";
  }
  // The date of a table that was not loaded, in a generation without one, always differs.
  const LibraryFolder later;
  later.writeCodedVersions(101);
  later.write("Dir.data", "not looked at");
  const Ref<TVQiPhotoDatabase> database = later.open();
  EXPECT_TRUE(database->reloadIfChanged() && database->reloadIfChanged());
}

TEST(TVQiPhotoDatabase, ReloadsAllButVersionTexts) {
  const auto photoOfKey = [](std::int32_t key) {
    return CodedBuilder().images({CodedBuilder().item("idKY", key).item("idRL", 1)});
  };
  const LibraryFolder library;
  writeLibrary(library, 60, photoOfKey(7).item("dbAL", albumArchive({Album::init<Album>()})));
  writeDirectory(library, "old");
  const CollectedLog log;
  const Ref<TVQiPhotoDatabase> database = library.open();
  const Ref<ImageRecRef> photo = database->photos()[0];
  const Ref<Album> album = database->albums()[0];
  EXPECT_EQ(database->directoryForKey(1), library / "old");
  EXPECT_EQ(photo->database(), database.get());
  EXPECT_EQ(album->database(), database.get());

  writeLibrary(library, 70, photoOfKey(8));
  writeDirectory(library, "new");
  library.makeLater("Library6.iPhoto");
  ASSERT_TRUE(database->reloadIfChanged());
  EXPECT_EQ(photo->database(), nullptr);
  EXPECT_EQ(album->database(), nullptr);
  ASSERT_EQ(database->photos().size(), 1U);
  EXPECT_EQ(database->photos()[0]->keyStringValue(), "8");
  EXPECT_TRUE(database->albums().empty());
  EXPECT_EQ(database->iPhotoLibraryVersion(), 70);
  EXPECT_EQ(database->directoryForKey(1), library / "new");

  // The data version stays, though a catalogue of that version has another one.
  library.writeCodedVersion("Library6.iPhoto", 120);
  library.makeLater("Library6.iPhoto");
  ASSERT_TRUE(database->reloadIfChanged());
  EXPECT_EQ(database->iPhotoLibraryVersion(), 120);
  EXPECT_EQ(database->iPhotoDataVersion(), "60");

  fs::remove(library / "Dir.data");
  library.makeLater("Library6.iPhoto");
  EXPECT_TRUE(database->reloadIfChanged());
  EXPECT_EQ(library.rooted(log.lines().back()),
            "NSInternalInconsistencyException - iPhoto Library component does not exist at "
            "'ROOT/Dir.data' = (null)");
  EXPECT_EQ(database->iPhotoLibraryVersion(), 120);
  EXPECT_EQ(database->directoryForKey(1), std::nullopt);
}

TEST(TVQiPhotoDatabase, LetsGoOfTheAlbumsOfTheAlbumsFolder) {
  const LibraryFolder library;
  writeLibrary(library, 15);
  library.writeArchive(
      "Albums/Photo Library",
      {archivedAs<ArchiveAlbum>({{"Children", list({Album::init<RollAlbum>()})}})});
  const Ref<TVQiPhotoDatabase> database = library.open();
  ASSERT_EQ(database->albums().size(), 2U);
  EXPECT_EQ(database->albums()[0]->database(), database.get());
  EXPECT_EQ(database->rolls().size(), 1U);
  database->removeAllAlbums();
  EXPECT_TRUE(database->albums().empty());
  EXPECT_EQ(database->rolls().size(), 0U) << "the catalogue's";

  library.makeLater("Library.iPhoto");
  EXPECT_TRUE(database->reloadIfChanged());
  EXPECT_EQ(database->rolls().size(), 1U);
  library.write("Library.iPhoto", catalogueBytes(60, CodedBuilder()));
  fs::remove(library / "Library6.iPhoto");
  library.makeLater("Library.iPhoto");
  EXPECT_TRUE(database->reloadIfChanged()) << "which fails";
  EXPECT_EQ(database->rolls().size(), 0U);
}

}  // namespace
}  // namespace mrziphoto

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>

#include "sample/SampleLibrary.h"
#include "support/Testing.h"

namespace mrziphoto {
namespace {

constexpr std::size_t kPhotos = 24;
constexpr std::size_t kRolls = 4;

SampleOptions optionsFor(const std::string& folder, std::int32_t version) {
  SampleOptions options;
  options.folder = folder;
  options.libraryVersion = version;
  options.photos = kPhotos;
  return options;
}

Ref<TVQiPhotoDatabase> opened(const std::string& folder) {
  return TVQiPhotoDatabase::initWithContentsOfDirectory(folder);
}

/// The contents of all files in a folder, by path.
std::map<std::string, std::string> filesIn(const std::string& folder) {
  std::map<std::string, std::string> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) {
      files.emplace(entry.path().lexically_relative(folder).string(), fileBytes(entry.path()));
    }
  }
  return files;
}

/// What libraries of all versions say of their photos, rolls and keywords; paths begin behind the
/// library folder.
std::string story(const TVQiPhotoDatabase& database) {
  std::string told;
  const auto tell = [&told](const Object& object, std::initializer_list<const char*> names) {
    for (const char* name : names) {
      told += object.valueForKey(name).description() + "\n";
    }
  };
  for (const Ref<ImageRecRef>& photo : database.photos()) {
    tell(*photo, {"keyStringValue", "caption", "comments", "archiveDate", "originalFilename",
                  "fileSize", "imagePath", "thumbnailPath"});
    const Ref<Array> keywords = photo->keywords().array();
    for (const Value& keyword : *keywords) {
      tell(*keyword.object(), {"string"});
    }
  }
  for (const Ref<RollAlbum>& roll : database.rolls()) {
    told += keyNumber(roll->key()).description() + "\n";
    tell(*roll, {"albumName", "comments", "date", "archiveDate"});
    for (const Ref<ImageRecRef>& photo : roll->photos()) {
      tell(*photo, {"keyStringValue"});
    }
  }
  for (const Ref<Keyword>& keyword : database.keywords()) {
    tell(*keyword, {"keyValue", "string"});
  }
  return replaced(told, database.directory(), "");
}

struct Generation {
  std::int32_t version;
  std::string dataVersion;
  std::size_t photos;
  std::size_t rollRecords;
  std::string albumKinds;
  std::string entries;
};

std::vector<Generation> generations() {
  const std::string all =
      "Album ArchiveAlbum BookAlbum DynamicAlbum FilterAlbum FolderAlbum LastImportAlbum "
      "PublishedAlbum SlideshowAlbum TrashAlbum ";
  const std::string coded = "Album FilterAlbum ";
  const std::string oldest =
      "2003 AlbumData.xml Albums Dir.data Library.data Thumb32.data Thumb64.data ";
  const std::string archiveHeaded = "2003 AlbumData.xml Dir.data Library.iPhoto Thumb64.data ";
  const std::string tree = "Library.iPhoto Library6.iPhoto Modified Originals Thumb64Segment.data ";
  const std::string withTable = "AlbumData.xml Data Dir.data " + tree;
  const std::string without = "AlbumData.xml Data " + tree;
  return {{15, "40", 0, kRolls, all, oldest},
          {16, "40", kPhotos, kRolls, all, oldest},
          {24, "40", kPhotos, kRolls, all, oldest},
          {25, "50", kPhotos, kRolls, coded, archiveHeaded},
          {50, "50", kPhotos, kRolls, coded, archiveHeaded},
          {51, "60", kPhotos, kRolls, coded, withTable},
          {100, "60", kPhotos, kRolls, coded, withTable},
          {101, "70", kPhotos, kRolls, coded, without},
          {150, "80", kPhotos, kRolls, coded, without},
          {151, "80", kPhotos, 0, "Album ", without},
          {300, "80", kPhotos, 0, "Album ", without}};
}

/// The words in their order, each once, with a blank behind each.
std::string joined(const std::set<std::string>& words) {
  std::string text;
  for (const std::string& word : words) {
    text += word + " ";
  }
  return text;
}

void expectThatFilesAreThere(const ImageRecRef& photo) {
  const std::string image = photo.imagePath().value_or("");
  ASSERT_TRUE(fs::is_regular_file(image)) << image;
  EXPECT_EQ(photo.fileSize().integer(), static_cast<std::int64_t>(fs::file_size(image))) << image;
  EXPECT_TRUE(fileBytes(image).starts_with("\xFF\xD8\xFF")) << image;
  EXPECT_TRUE(fs::is_regular_file(photo.thumbnailPath().value_or(""))) << image;
}

TEST(SampleLibraryTest, OpensInEveryGenerationAndByteOrder) {
  for (const Generation& expected : generations()) {
    for (const bool isBigEndian : {false, true}) {
      SCOPED_TRACE(expected.version);
      const TemporaryFolder folder;
      SampleOptions options = optionsFor(folder.path(), expected.version);
      options.bigEndianArchives = isBigEndian;
      writeSampleLibrary(options);
      std::set<std::string> marks;
      std::set<std::string> entries;
      for (const auto& [name, bytes] : filesIn(folder.path())) {
        entries.insert(name.substr(0, name.find('/')));
        for (const char* mark : {"streamtyped", "typedstream"}) {
          if (bytes.find(mark) != std::string::npos) {
            marks.insert(mark);
          }
        }
      }
      EXPECT_EQ(joined(entries), expected.entries);
      EXPECT_EQ(joined(marks), isBigEndian ? "typedstream " : "streamtyped ");

      const CollectedLog log;
      const Ref<TVQiPhotoDatabase> database = opened(folder.path());
      ASSERT_TRUE(database);
      EXPECT_EQ(database->iPhotoLibraryVersion(), expected.version);
      EXPECT_EQ(database->iPhotoDataVersion(), expected.dataVersion);
      EXPECT_EQ(database->photos().size(), expected.photos);
      EXPECT_EQ(database->rolls().size(), kRolls);
      EXPECT_EQ(database->rollRecRefs().size(), expected.rollRecords);
      EXPECT_EQ(database->keywords().size(), 8U);
      std::set<std::string> kinds;
      for (const Ref<Album>& album : database->albums()) {
        kinds.emplace(album->className());
      }
      EXPECT_EQ(joined(kinds), expected.albumKinds);
      for (const Ref<RollAlbum>& roll : database->rolls()) {
        EXPECT_NE(roll->albumName().value_or(""), "");
        EXPECT_TRUE(roll->date());
      }
      for (const Ref<ImageRecRef>& photo : database->photos()) {
        expectThatFilesAreThere(*photo);
      }
      // An album of a kind that logs itself, or the word that a version is new.
      EXPECT_EQ(log.lines().size(), 1U) << ::testing::PrintToString(log.lines());
    }
  }
}

TEST(SampleLibraryTest, IsLoadedAnewWhenItWasRewrittenInEveryGeneration) {
  for (const Generation& generation : generations()) {
    SCOPED_TRACE(generation.version);
    const TemporaryFolder folder;
    SampleOptions options = optionsFor(folder.path(), generation.version);
    options.images = false;
    writeSampleLibrary(options);
    const auto database = opened(folder.path());
    EXPECT_FALSE(database->reloadIfChanged());

    const TemporaryFolder other;
    options.folder = other.path();
    options.photos = 2 * kPhotos;
    options.seed = 7;
    options.bigEndianArchives = true;
    writeSampleLibrary(options);
    const std::string rewritten = story(*opened(other.path()));
    fs::copy(other.path(), folder.path(),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    const fs::path file = database->currentLibraryDataFilename();
    fs::last_write_time(file, fs::last_write_time(file) + std::chrono::seconds(2));
    EXPECT_TRUE(database->reloadIfChanged());
    EXPECT_EQ(story(*database), rewritten);
  }
}

TEST(SampleLibraryTest, TellsTheSameStoryInAllGenerations) {
  const auto storyOfVersion = [](std::int32_t version) {
    const TemporaryFolder folder;
    writeSampleLibrary(optionsFor(folder.path(), version));
    return story(*opened(folder.path()));
  };
  EXPECT_EQ(storyOfVersion(60), storyOfVersion(200));
  // These keep their pictures in other places than those above.
  EXPECT_EQ(storyOfVersion(20), storyOfVersion(50));
}

TEST(SampleLibraryTest, TellsTheStoredSizeOfAFileThatHasAnother) {
  for (const bool isStored : {true, false}) {
    const TemporaryFolder folder;
    writeSampleLibrary(optionsFor(folder.path(), isStored ? 60 : 200));
    const auto database = opened(folder.path());
    const Ref<ImageRecRef> photo = database->photos()[0];
    const std::string image = photo->imagePath().value_or("");
    const auto before = static_cast<std::int64_t>(fs::file_size(image));
    fs::resize_file(image, 5);
    EXPECT_EQ(photo->fileSize().integer(), isStored ? before : 5);
  }
}

TEST(SampleLibraryTest, WritesTheSameBytesForTheSameSeed) {
  const TemporaryFolder parent;
  const auto filesOf = [&parent](std::int32_t version, std::uint64_t seed) {
    SampleOptions options = optionsFor(parent / "library", version);
    fs::remove_all(options.folder);
    options.seed = seed;
    writeSampleLibrary(options);
    return filesIn(options.folder);
  };
  for (const std::int32_t version : {20, 60}) {
    EXPECT_TRUE(filesOf(version, 1) == filesOf(version, 1)) << version;
    EXPECT_FALSE(filesOf(version, 1) == filesOf(version, 2)) << version;
  }
}

TEST(SampleLibraryTest, LeavesOutPicturesAndPhotos) {
  for (const std::int32_t version : {20, 60, 200}) {
    const TemporaryFolder folder;
    SampleOptions options = optionsFor(folder / "without pictures", version);
    options.images = false;
    std::pair<std::uint32_t, std::uint32_t> reported;
    options.progress = [&](std::uint32_t done, std::uint32_t total) { reported = {done, total}; };
    writeSampleLibrary(options);
    EXPECT_GT(reported.first, 0U);
    EXPECT_EQ(reported.first, reported.second);
    for (const auto& [name, bytes] : filesIn(options.folder)) {
      EXPECT_FALSE(bytes.starts_with("\xFF\xD8\xFF")) << name;
    }
    EXPECT_EQ(opened(options.folder)->photos().size(), kPhotos) << version;
    options.folder = folder / "empty";
    options.photos = 0;
    writeSampleLibrary(options);
    const Ref<TVQiPhotoDatabase> empty = opened(options.folder);
    ASSERT_TRUE(empty) << version;
    EXPECT_TRUE(empty->photos().empty() && empty->rolls().empty()) << version;
  }
}

TEST(SampleLibraryTest, RefusesWithOneSentence) {
  const TemporaryFolder folder;
  folder.write("full/notes.txt", "mine");
  for (const auto& [name, version, photos, message] :
       Rows<std::string, std::int32_t, std::uint32_t, std::string>{
           {"F/a", 14, 1, "a library of version 14 cannot be written: versions go from 15 to 300"},
           {"F/a", 301, 1,
            "a library of version 301 cannot be written: versions go from 15 to 300"},
           {"F/a", 60, 2'000'001,
            "a library of 2000001 photos cannot be written: 2000000 are the most"},
           {"F/full", 60, 1, "no library can be written to F/full: the folder is not empty"},
           {"F/full/notes.txt", 60, 1,
            "no library can be written to F/full/notes.txt: it is not a folder"},
           {"F/full/notes.txt/b", 60, 1,
            "cannot make the folder F/full/notes.txt/b: Not a directory"},
           {"", 60, 1, "no library can be written to the folder ''"}}) {
    SampleOptions options = optionsFor(replaced(name, "F/", folder / ""), version);
    options.photos = photos;
    try {
      writeSampleLibrary(options);
      ADD_FAILURE() << message;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(replaced(error.what(), folder / "", "F/"), message);
    }
  }
  EXPECT_EQ(filesIn(folder.path()).size(), 1U);
}

}  // namespace
}  // namespace mrziphoto

#include <stdexcept>
#include <system_error>

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/exif/TVQiPhotoUserData.h>
#include <MRZiPhoto/thumbcache/iPhotoSegmentCache.h>

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

std::string contents(const fs::path& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return bytes.str();
}

/// The contents of all files in a folder, by path.
std::map<std::string, std::string> filesIn(const std::string& folder) {
  std::map<std::string, std::string> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) {
      files.emplace(entry.path().lexically_relative(folder).string(), contents(entry.path()));
    }
  }
  return files;
}

/// The words with which archives of either byte order begin, as far as files have them.
std::set<std::string> archiveMarks(const std::string& folder) {
  std::set<std::string> marks;
  for (const auto& [name, bytes] : filesIn(folder)) {
    for (const char* mark : {"streamtyped", "typedstream"}) {
      if (bytes.find(mark) != std::string::npos) {
        marks.insert(mark);
      }
    }
  }
  return marks;
}

std::string textOf(const std::optional<std::string>& text) { return text.value_or("(nothing)"); }

Texts keywordTexts(const Value& keywords) {
  Texts texts;
  for (const Value& each : *keywords.array()) {
    const Ref<Keyword> keyword = each.object<Keyword>();
    texts.push_back(keyword ? textOf(keyword->string()) : "no keyword");
  }
  return texts;
}

/// What libraries of all versions say of a photo; paths begin behind the library folder.
Texts story(const ImageRecRef& photo, const std::string& root) {
  Texts lines{photo.keyStringValue(),
              textOf(photo.caption()),
              textOf(photo.comments()),
              Value(photo.archiveDate()).description(),
              textOf(photo.originalFilename()),
              photo.fileSize().description(),
              textOf(photo.imagePath()).substr(root.size()),
              textOf(photo.thumbnailPath()).substr(root.size())};
  std::ranges::copy(keywordTexts(photo.keywords()), std::back_inserter(lines));
  return lines;
}

Texts story(const RollAlbum& roll) {
  Texts lines{keyNumber(roll.key()).description(), textOf(roll.albumName()),
              textOf(roll.comments()), Value(roll.date()).description(),
              Value(roll.archiveDate()).description()};
  for (const Ref<ImageRecRef>& photo : roll.photos()) {
    lines.push_back(photo->keyStringValue());
  }
  return lines;
}

std::vector<Texts> story(const TVQiPhotoDatabase& database) {
  std::vector<Texts> lines;
  for (const Ref<ImageRecRef>& photo : database.photos()) {
    lines.push_back(story(*photo, database.directory()));
  }
  for (const Ref<RollAlbum>& roll : database.rolls()) {
    lines.push_back(story(*roll));
  }
  for (const Ref<Keyword>& keyword : database.keywords()) {
    lines.push_back({keyword->keyValue().description(), textOf(keyword->string())});
  }
  return lines;
}

struct Generation {
  std::int32_t version;
  std::string dataVersion;
  std::size_t photos;
  std::size_t rollRecords;
  std::set<std::string> albumKinds;
  std::set<std::string> entries;
};

const std::set<std::string> kCodedKinds{"Album", "FilterAlbum"};
const std::set<std::string> kFileKinds{
    "Album",       "ArchiveAlbum",    "BookAlbum",      "DynamicAlbum",   "FilterAlbum",
    "FolderAlbum", "LastImportAlbum", "PublishedAlbum", "SlideshowAlbum", "TrashAlbum"};
const std::set<std::string> kDayFolderEntries{"2003", "AlbumData.xml", "Dir.data", "Thumb64.data"};
const std::set<std::string> kTreeEntries{"AlbumData.xml",      "Data",     "Library.iPhoto",
                                         "Library6.iPhoto",    "Modified", "Originals",
                                         "Thumb64Segment.data"};

std::set<std::string> with(std::set<std::string> entries, std::initializer_list<std::string> more) {
  entries.insert(more);
  return entries;
}

std::vector<Generation> generations() {
  const auto oldest = with(kDayFolderEntries, {"Albums", "Library.data", "Thumb32.data"});
  const auto archiveHeaded = with(kDayFolderEntries, {"Library.iPhoto"});
  const auto withDirectories = with(kTreeEntries, {"Dir.data"});
  return {
      {15, "40", 0, kRolls, kFileKinds, oldest},
      {16, "40", kPhotos, kRolls, kFileKinds, oldest},
      {24, "40", kPhotos, kRolls, kFileKinds, oldest},
      {25, "50", kPhotos, kRolls, kCodedKinds, archiveHeaded},
      {50, "50", kPhotos, kRolls, kCodedKinds, archiveHeaded},
      {51, "60", kPhotos, kRolls, kCodedKinds, withDirectories},
      {100, "60", kPhotos, kRolls, kCodedKinds, withDirectories},
      {101, "70", kPhotos, kRolls, kCodedKinds, kTreeEntries},
      {150, "80", kPhotos, kRolls, kCodedKinds, kTreeEntries},
      {151, "80", kPhotos, 0, {"Album"}, kTreeEntries},
      {300, "80", kPhotos, 0, {"Album"}, kTreeEntries},
  };
}

void expectThatFilesAreThere(const ImageRecRef& photo) {
  const std::string image = textOf(photo.imagePath());
  ASSERT_TRUE(fs::is_regular_file(image)) << image;
  EXPECT_EQ(photo.fileSize().integer(), static_cast<std::int64_t>(fs::file_size(image))) << image;
  EXPECT_TRUE(contents(image).starts_with("\xFF\xD8\xFF")) << image;
  EXPECT_TRUE(fs::is_regular_file(textOf(photo.thumbnailPath()))) << image;
}

std::set<std::string> entriesOf(const std::string& folder) {
  std::set<std::string> entries;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    entries.insert(entry.path().filename().string());
  }
  return entries;
}

/// Answers the open library.
Ref<TVQiPhotoDatabase> expectGeneration(const Generation& expected, const TemporaryFolder& folder) {
  Ref<TVQiPhotoDatabase> database = TVQiPhotoDatabase::initWithContentsOfDirectory(folder.path());
  if (!database) {
    throw std::runtime_error("no database");
  }
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
  EXPECT_EQ(kinds, expected.albumKinds);
  for (const Ref<RollAlbum>& roll : database->rolls()) {
    EXPECT_FALSE(textOf(roll->albumName()).empty());
    EXPECT_TRUE(roll->date());
  }
  return database;
}

TEST(SampleLibraryTest, OpensInEveryGeneration) {
  for (const Generation& generation : generations()) {
    SCOPED_TRACE(generation.version);
    const CollectedLog log;
    const TemporaryFolder folder;
    writeSampleLibrary(optionsFor(folder.path(), generation.version));
    EXPECT_EQ(entriesOf(folder.path()), generation.entries);
    EXPECT_EQ(archiveMarks(folder.path()), std::set<std::string>{"streamtyped"});
    const Ref<TVQiPhotoDatabase> database = expectGeneration(generation, folder);
    for (const Ref<ImageRecRef>& photo : database->photos()) {
      expectThatFilesAreThere(*photo);
    }
    // An album of a kind that logs itself, or the word that a version is new.
    EXPECT_EQ(log.lines().size(), 1U) << ::testing::PrintToString(log.lines());
  }
}

TEST(SampleLibraryTest, OpensInTheOtherByteOrder) {
  for (const Generation& generation : generations()) {
    SCOPED_TRACE(generation.version);
    const TemporaryFolder folder;
    SampleOptions options = optionsFor(folder.path(), generation.version);
    options.bigEndianArchives = true;
    options.images = false;
    writeSampleLibrary(options);
    expectGeneration(generation, folder);
    EXPECT_EQ(archiveMarks(folder.path()), std::set<std::string>{"typedstream"});
  }
}

TEST(SampleLibraryTest, IsLoadedAnewWhenItWasRewrittenInEveryGeneration) {
  for (const Generation& generation : generations()) {
    SCOPED_TRACE(generation.version);
    const TemporaryFolder folder;
    SampleOptions options = optionsFor(folder.path(), generation.version);
    options.images = false;
    writeSampleLibrary(options);
    const auto database = TVQiPhotoDatabase::initWithContentsOfDirectory(folder.path());
    EXPECT_FALSE(database->reloadIfChanged());

    const TemporaryFolder other;
    options.folder = other.path();
    options.photos = 2 * kPhotos;
    options.seed = 7;
    options.bigEndianArchives = true;
    writeSampleLibrary(options);
    const auto rewritten = story(*TVQiPhotoDatabase::initWithContentsOfDirectory(other.path()));
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
    return story(*TVQiPhotoDatabase::initWithContentsOfDirectory(folder.path()));
  };
  const auto coded = storyOfVersion(60);
  EXPECT_EQ(coded.size(), kPhotos + kRolls + 8);
  EXPECT_EQ(coded, storyOfVersion(200));
  // These keep their pictures in other places than those above.
  EXPECT_EQ(storyOfVersion(20), storyOfVersion(50));
}

TEST(SampleLibraryTest, KeepsWhatTheCameraNoted) {
  for (const std::int32_t version : {20, 50, 60}) {
    const TemporaryFolder folder;
    writeSampleLibrary(optionsFor(folder.path(), version));
    const Ref<TVQiPhotoDatabase> database =
        TVQiPhotoDatabase::initWithContentsOfDirectory(folder.path());
    for (const Ref<ImageRecRef>& photo : database->photos()) {
      const Ref<TVQiPhotoUserData> camera = photo->exifData();
      const std::string model = textOf(camera->model());
      EXPECT_NE(contents(textOf(photo->imagePath())).find(model), std::string::npos) << model;
      EXPECT_TRUE(camera->aperture() && camera->exposure() && camera->focalLength() &&
                  camera->isoSpeed() && camera->flash());
    }
  }
}

TEST(SampleLibraryTest, TellsTheStoredSizeOfAFileThatHasAnother) {
  for (const bool isStored : {true, false}) {
    const TemporaryFolder folder;
    writeSampleLibrary(optionsFor(folder.path(), isStored ? 60 : 200));
    const auto database = TVQiPhotoDatabase::initWithContentsOfDirectory(folder.path());
    const Ref<ImageRecRef> photo = *database->photos().begin();
    const std::string image = textOf(photo->imagePath());
    const auto before = static_cast<std::int64_t>(fs::file_size(image));
    fs::resize_file(image, 5);
    EXPECT_EQ(photo->fileSize().integer(), isStored ? before : 5);
  }
}

TEST(SampleLibraryTest, CachesAThumbnailOfEveryPhoto) {
  const TemporaryFolder folder;
  writeSampleLibrary(optionsFor(folder.path(), 60));
  const Ref<TVQiPhotoDatabase> database =
      TVQiPhotoDatabase::initWithContentsOfDirectory(folder.path());
  const Ref<iPhotoSegmentCache> cache =
      iPhotoSegmentCache::initWithContentsOfFile(folder / "Thumb64Segment.data");
  ASSERT_TRUE(cache);
  EXPECT_EQ(cache->numberOfItems(), kPhotos);
  std::set<std::string> slots;
  for (const Ref<ImageRecRef>& photo : database->photos()) {
    slots.emplace(cache->itemBytesForKey(photo->photoId().unsignedIntValue()).value().bytes());
  }
  EXPECT_EQ(slots.size(), kPhotos) << "every photo has a slot, and no two look alike";
}

TEST(SampleLibraryTest, WritesTheSameBytesForTheSameSeed) {
  const TemporaryFolder parent;
  const std::string folder = parent / "library";
  const auto filesOf = [&folder](std::int32_t version, std::uint64_t seed) {
    fs::remove_all(folder);
    SampleOptions options = optionsFor(folder, version);
    options.seed = seed;
    writeSampleLibrary(options);
    return filesIn(folder);
  };
  for (const std::int32_t version : {20, 60}) {
    EXPECT_TRUE(filesOf(version, 1) == filesOf(version, 1)) << version;
    EXPECT_FALSE(filesOf(version, 1) == filesOf(version, 2)) << version;
  }
}

TEST(SampleLibraryTest, LeavesPicturesOut) {
  for (const std::int32_t version : {20, 60, 200}) {
    const TemporaryFolder folder;
    SampleOptions options = optionsFor(folder.path(), version);
    options.images = false;
    std::uint32_t reported = 0;
    std::uint32_t total = 0;
    options.progress = [&](std::uint32_t done, std::uint32_t ofThat) {
      reported = done;
      total = ofThat;
    };
    writeSampleLibrary(options);
    EXPECT_GT(reported, 0U);
    EXPECT_EQ(reported, total);
    for (const auto& [name, bytes] : filesIn(folder.path())) {
      EXPECT_FALSE(bytes.starts_with("\xFF\xD8\xFF")) << name;
    }
    const Ref<TVQiPhotoDatabase> database =
        TVQiPhotoDatabase::initWithContentsOfDirectory(folder.path());
    EXPECT_EQ(database->photos().size(), kPhotos) << version;
  }
}

TEST(SampleLibraryTest, CanBeEmpty) {
  for (const std::int32_t version : {20, 60, 200}) {
    const TemporaryFolder folder;
    SampleOptions options = optionsFor(folder.path(), version);
    options.photos = 0;
    writeSampleLibrary(options);
    const Ref<TVQiPhotoDatabase> database =
        TVQiPhotoDatabase::initWithContentsOfDirectory(folder.path());
    ASSERT_TRUE(database) << version;
    EXPECT_TRUE(database->photos().empty() && database->rolls().empty()) << version;
  }
}

TEST(SampleLibraryTest, RefusesWithOneSentence) {
  const TemporaryFolder folder;
  folder.write("full/notes.txt", "mine");
  const struct {
    std::string folder;
    std::int32_t version;
    std::uint32_t photos;
    std::string message;
  } kCases[] = {
      {folder / "a", 14, 1,
       "a library of version 14 cannot be written: versions go from 15 to 300"},
      {folder / "a", 301, 1,
       "a library of version 301 cannot be written: versions go from 15 to 300"},
      {folder / "a", 60, 2'000'001,
       "a library of 2000001 photos cannot be written: 2000000 are the most"},
      {folder / "full", 60, 1,
       "no library can be written to " + folder / "full" + ": the folder is not empty"},
      {folder / "full/notes.txt", 60, 1,
       "no library can be written to " + folder / "full/notes.txt" + ": it is not a folder"},
      {folder / "full/notes.txt/b", 60, 1,
       "cannot make the folder " + folder / "full/notes.txt/b" + ": " +
           std::make_error_code(std::errc::not_a_directory).message()},
      {"", 60, 1, "no library can be written to the folder ''"},
  };
  for (const auto& each : kCases) {
    SampleOptions options = optionsFor(each.folder, each.version);
    options.photos = each.photos;
    try {
      writeSampleLibrary(options);
      ADD_FAILURE() << each.message;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), each.message);
    }
  }
  EXPECT_EQ(filesIn(folder.path()).size(), 1U);
}

}  // namespace
}  // namespace mrziphoto

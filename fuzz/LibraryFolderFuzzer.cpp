#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/images/NSSize.h>
#include <MRZiPhoto/values/Log.h>

#include "InputFiles.h"
#include "Questions.h"

namespace {

using namespace mrziphoto;

constexpr auto kFilesOf20 = std::to_array<std::string_view>(
    {"Library.data", "Dir.data", "AlbumData.xml", "Albums/Photo Library", "Albums/Last Import",
     "Albums/Family", "2003/03/01/Data/102", "2003/03/01/Data/102.attr", "Thumb64.data"});
constexpr auto kFilesOf40 = std::to_array<std::string_view>(
    {"Library.iPhoto", "Dir.data", "AlbumData.xml", "Thumb64.data"});
constexpr auto kFilesOf60 = std::to_array<std::string_view>(
    {"Library6.iPhoto", "Dir.data", "AlbumData.xml", "Thumb64Segment.data"});
// A directory table beside these is not read, and makes every look for changes see one.
constexpr auto kFilesOf120 = std::to_array<std::string_view>(
    {"Library6.iPhoto", "AlbumData.xml", "Thumb64Segment.data", "Dir.data"});
constexpr auto kFilesOf200 =
    std::to_array<std::string_view>({"AlbumData.xml", "Thumb64Segment.data", "Dir.data"});

/// A catalogue version, and the files to which the parts of an input go.
struct Generation {
  std::uint8_t version;
  std::span<const std::string_view> files;
};

constexpr std::array kGenerations{
    Generation{20, kFilesOf20},   Generation{40, kFilesOf40},   Generation{60, kFilesOf60},
    Generation{120, kFilesOf120}, Generation{200, kFilesOf200},
};
constexpr std::uint8_t kFirstWithTwoCatalogues = 51;

constexpr auto kLibraryQuestions = std::to_array<std::string_view>({
    "albumDataFile",
    "albums",
    "archivePath",
    "currentLibraryDataFilename",
    "iPhotoDataVersion",
    "iPhotoVersion",
    "iPhotoLibraryVersion",
    "keywords",
    "libraryDataFilename",
    "photos",
    "rolls",
});

void askLibrary(const TVQiPhotoDatabase& database) {
  ask(database, kLibraryQuestions);
  askEach(database.photos(), kPhotoQuestions);
  askEach(database.rollRecRefs(), kPhotoQuestions);
  askEach(database.albums(), kAlbumQuestions);
  askEach(database.rolls(), kAlbumQuestions);
  for (const std::uint32_t key : {1U, 102U}) {
    (void)database.photoForKey(Key::initWithKey(key));
    (void)database.rollRecRefForKey(key);
    (void)database.keywordForKey(key);
    (void)database.directoryForKey(key);
    (void)database.thumbnailForKeyImageSize(key, {4, 3});
  }
  (void)database.catalogueDescription();
}

}  // namespace

// A whole library folder. The first byte chooses its generation; the rest are the files.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  setLogSink({});
  if (size == 0) {
    return -1;
  }
  const Generation& generation = kGenerations[data[0] % kGenerations.size()];
  const TemporaryFolder folder;
  if (generation.version >= kFirstWithTwoCatalogues) {
    std::string catalogue("dbVS\0\0\0\4\0\0\0", 11);
    catalogue += static_cast<char>(generation.version);
    folder.write("Library.iPhoto", catalogue);
    folder.write("Library6.iPhoto", catalogue);
  }
  writeInputFiles(folder, {reinterpret_cast<const char*>(data) + 1, size - 1}, generation.files);

  const auto database = TVQiPhotoDatabase::initWithContentsOfDirectory(folder.path());
  if (database) {
    askLibrary(*database);
    const auto photos = database->photos();
    if (database->reloadIfChanged()) {
      askEach(photos, kPhotoQuestions);
      askLibrary(*database);
    }
  }
  return 0;
}

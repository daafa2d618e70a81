#include <csignal>
#include <cstdio>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/images/NSImage.h>

#include "support/RunTool.h"
#include "support/SampleFolder.h"
#include "tool/output/Failure.h"
#include "tool/output/LibraryPlaces.h"
#include "tool/output/NewFile.h"
#include "tool/pictures/ContactSheet.h"

namespace mrziphoto {
namespace {

const std::string kFirstRoll = "2003/Roll 1/";

/// A made-up library of 24 photos, 5 of them edited, that a test may damage.
class Sample {
  TemporaryFolder _folder;

 public:
  explicit Sample(std::int32_t version) { writeSample(root, version, 24, true); }

  const std::string root = _folder / "library";
  [[nodiscard]] std::string operator/(const std::string& name) const { return root + "/" + name; }
  [[nodiscard]] std::string outside(const std::string& name) const { return _folder / name; }
  void write(const std::string& name, const std::string& bytes) const {
    _folder.write("library/" + name, bytes);
  }
  void remove(const Texts& names) const {
    for (const std::string& name : names) {
      EXPECT_GT(fs::remove_all(*this / name), 0U) << name;
    }
  }
};

std::string lastLineOf(const std::string& text) {
  const std::size_t end = text.empty() ? 0 : text.size() - 1;
  const std::size_t before = text.rfind('\n', end == 0 ? 0 : end - 1);
  return text.substr(before == std::string::npos ? 0 : before + 1);
}

/// What a build that reads no pictures cannot do.
class PictureCommands : public testing::Test {
 protected:
  void SetUp() override {
    if (!NSImage::isSupported()) {
      GTEST_SKIP() << "This build reads no pictures.";
    }
  }
};
using Check = PictureCommands;
using Thumbnail = PictureCommands;
using ContactSheet = PictureCommands;

TEST_F(Check, FindsNothingWrongWithAWholeLibrary) {
  for (const std::int32_t version : {20, 40, 60, 150, 200}) {
    const Sample library(version);
    // Generations spell the paths of a library that was reached by a link in different ways.
    fs::create_directory_symlink(library.root, library.outside("link"));
    for (const std::string& folder : {library.root, library.outside("link")}) {
      const ToolResult result = runTool({"check", folder, "--quiet"});
      EXPECT_EQ(result.out,
                "24 photos: 24 images = 24 there + 0 missing + 0 unreadable; "
                "5 originals = 5 there + 0 missing + 0 unreadable; "
                "24 thumbnails = 24 there + 0 missing + 0 unreadable "
                "(0 of these in the thumbnail cache); 0 files that no photo names\n")
          << version;
      EXPECT_EQ(result.err, "");
      EXPECT_EQ(result.status, 0);
    }
  }
}

TEST_F(Check, CallsNothingMissingOrUnnamedThatItCannotTell) {
  const Sample whole(200);
  const std::string albumData = whole / "AlbumData.xml";
  fs::rename(albumData, whole.outside("AlbumData.xml"));
  const ToolResult unknown = runTool({"check", whole.root, "-q"});
  EXPECT_EQ(unknown.status, 1);
  EXPECT_EQ(unknown.out, "");
  EXPECT_PRED2(contains, unknown.err, albumData);

  // Without the directory table no photo has a place.
  const Sample lost(60);
  lost.write("Dir.data", "no archive");
  const ToolResult partial = runTool({"check", lost.root});
  EXPECT_PRED2(contains, partial.out, "; 0 files that no photo names\n");
  EXPECT_PRED2(contains, partial.err,
               "mrziphoto: files that no photo of the library '" + lost.root +
                   "' names were not looked for, since not all photos are known\n");

  // Who may read all must be told otherwise that a way is barred: by links in a circle.
  const Sample barred(60);
  const std::string folder = barred / ("Data/" + kFirstRoll);
  fs::remove_all(folder.substr(0, folder.size() - 1));
  fs::create_directory_symlink(fs::path(folder).parent_path().filename(),
                               folder.substr(0, folder.size() - 1));
  const ToolResult unreachable = runTool({"check", barred.root});
  EXPECT_EQ(unreachable.status, 3) << unreachable.out << unreachable.err;
  EXPECT_EQ(unreachable.out.find("missing  "), std::string::npos) << unreachable.out;
  EXPECT_PRED2(contains, unreachable.err, "files of photos that cannot be read");
}

TEST_F(Check, TellsWhatIsWrong) {
  const Sample library(60);
  // Macs find this one under its name, too; others are files that no person put there.
  fs::rename(library / ("Originals/" + kFirstRoll + "IMG_0001.JPG"),
             library / ("Originals/" + kFirstRoll + "img_0001.jpg"));
  library.write("Originals/.DS_Store", "x");
  library.write("Data/" + kFirstRoll + "102.ATTR", "x");

  library.remove({"Originals/" + kFirstRoll + "IMG_0002.JPG",          // the image of photo 103
                  "Originals/" + kFirstRoll + "At the lake 0004.jpg",  // the original of photo 105
                  "Data/" + kFirstRoll + "DSC00003.jpg"});             // the thumbnail of photo 104
  fs::resize_file(library / ("Data/" + kFirstRoll + "IMG_0005.jpg"), 100);  // that of photo 106
  library.write("previews/2003/stray.jpg", "x");
  library.write("stray.jpg", "beside the catalogue nothing is looked for");
  const std::string counts =
      "24 photos: 24 images = 23 there + 1 missing + 0 unreadable; "
      "5 originals = 4 there + 1 missing + 0 unreadable; "
      "24 thumbnails = 22 there + 1 missing + 1 unreadable "
      "(2 of these in the thumbnail cache); 1 file that no photo names\n";

  const ToolResult table = runTool({"check", library.root, "--quiet"});
  EXPECT_EQ(table.status, 1);
  EXPECT_EQ(table.err,
            "mrziphoto: the library '" + library.root + "' lacks, or cannot read, 4 files\n");
  EXPECT_EQ(table.out,
            "key  file       state                 path\n"
            "103  image      missing               " +
                library.root + "/Originals/2003/Roll 1/IMG_0002.JPG\n" +
                "104  thumbnail  missing, in cache     " + library.root +
                "/Data/2003/Roll 1/DSC00003.jpg\n" + "105  original   missing               " +
                library.root + "/Originals/2003/Roll 1/At the lake 0004.jpg\n" +
                "106  thumbnail  unreadable, in cache  " + library.root +
                "/Data/2003/Roll 1/IMG_0005.jpg\n" + "                unnamed               " +
                library.root + "/previews/2003/stray.jpg\n" + counts);
  const ToolResult all = runTool({"check", library.root, "--quiet", "--all"});
  EXPECT_EQ(std::ranges::count(all.out, '\n'), 1 + 24 + 5 + 24 + 1 + 1);
  EXPECT_EQ(lastLineOf(all.out), counts);

  const ToolResult records = runTool({"check", library.root, "--quiet", "--format", "jsonl"});
  EXPECT_EQ(records.status, 1);
  EXPECT_EQ(std::ranges::count(records.out, '\n'), 24 + 1 + 1);
  EXPECT_PRED2(contains, records.out,
               R"({"record":"photo","key":104,"image":"there","original":null,)"
               R"("thumbnail":"missing","thumbnailInCache":true,"imagePath":")");
  EXPECT_PRED2(contains, lastLineOf(records.out),
               R"("counts":{"photos":24,"images":{"checked":24,"there":23,"missing":1,)"
               R"("unreadable":0},"originals":{"checked":5,"there":4,"missing":1,)"
               R"("unreadable":0},"thumbnails":{"checked":24,"there":22,"missing":1,)"
               R"("unreadable":1},"thumbnailsInCache":2,"unnamedFiles":1})");
}

TEST_F(Thumbnail, WritesWhatTheCacheHolds) {
  const Sample library(60);
  const std::string png = library.outside("thumbnail.png");
  EXPECT_EQ(runTool({"thumbnail", library.root, "102", "-o", png, "--quiet"}).status, 0);
  const NSSize size = NSImage::initByReferencingFile(png)->size();
  EXPECT_EQ(size.width, 240);
  EXPECT_EQ(size.height, 180);

  library.remove({"Data"});
  // Half transparent, which a picture with multiplied colours would show darker.
  std::string cache = fileBytes(library / "Thumb64Segment.data");
  cache.replace(4096, 4, "\x10\x20\x80\x40");
  library.write("Thumb64Segment.data", cache);
  const std::string slot = cache.substr(4096, std::size_t{64} * 64 * 4);  // that of photo 102
  EXPECT_EQ(runTool({"thumbnail", library.root, "102", "-o", png, "--quiet"}).status, 0);
  const Ref<NSBitmapImageRep> bitmap = NSImage::initByReferencingFile(png)->bitmap();
  ASSERT_TRUE(bitmap);
  ASSERT_EQ(bitmap->bitmapData().size(), slot.size());
  for (std::size_t i = 0; i < slot.size(); ++i) {
    // A slot's pixel has its last byte in front: green, blue, alpha, red become red, green, blue.
    const std::size_t from = i % 4 == 0 ? i + 3 : i - 1;
    ASSERT_EQ(bitmap->bitmapData()[i], static_cast<std::uint8_t>(slot[from])) << i;
  }
}

TEST(WithoutImages, PictureCommandsSaySo) {
  if (NSImage::isSupported()) {
    GTEST_SKIP() << "This build reads pictures.";
  }
  const Sample library(200);
  for (const char* line : {"check $L", "contact-sheet $L -o $L/x", "thumbnail $L 102 -o $L/x"}) {
    const ToolResult result = runLine(line, library.root);
    EXPECT_EQ(result.status, 1);
    EXPECT_PRED2(contains, result.err, "built without images");
  }
}

TEST_F(PictureCommands, WriteNothingWhereTheyFail) {
  const Sample library(200);
  writeSample(library.outside("empty"), 15);
  library.remove({"Data", "Thumb64Segment.data"});
  library.write("Data/" + kFirstRoll + "IMG_0002.jpg", "no image");
  const std::string existing = library.outside("existing");
  std::ofstream(existing) << "stays";
  for (const auto& [line, named] : Rows<std::string, std::string>{
           {"thumbnail $L 102 -o $L/../existing", "photo 102"},
           {"thumbnail $L 103 -o $L/../existing", "IMG_0002.jpg' is no image"},
           {"thumbnail $L 99 -o $L/../existing", "key 99"},
           {"contact-sheet $L/../empty -o $L/../existing", library.outside("empty")},
           {"contact-sheet $L --album Nobody -o $L/../existing", "'Nobody'"},
           {"contact-sheet $L -o $L/../none/x.jpg", "none/x.jpg"},
           {"contact-sheet $L -o $L/..", "directory"},
           {"contact-sheet $L -o /dev/full", "/dev/full"}}) {
    const ToolResult result = runLine(line, library.root);
    EXPECT_EQ(result.status, 1) << named;
    EXPECT_PRED2(contains, lastLineOf(result.err), named);
    EXPECT_TRUE(lastLineOf(result.err).starts_with("mrziphoto: ")) << result.err;
  }
  EXPECT_EQ(fileBytes(existing), "stays");
  // Nor is anything left over beside it.
  EXPECT_EQ(std::distance(fs::directory_iterator(library.outside("")), {}), 3);
}

TEST_F(PictureCommands, LeaveTheLibraryAsItIs) {
  const Sample library(200);
  const std::string catalogue = fileBytes(library / "Library6.iPhoto");
  fs::create_directory_symlink(library.root, library.outside("folder"));
  fs::create_symlink("folder/Library6.iPhoto", library.outside("file"));
  fs::create_symlink(library / "new", library.outside("dangling"));
  // The originals lie on another disk, and an edited photo lies where it always was.
  fs::rename(library / "Originals", library.outside("disk"));
  fs::create_directory_symlink(library.outside("disk"), library / "Originals");
  const std::string original = library.outside("disk/" + kFirstRoll + "IMG_0001.JPG");
  const std::string picture = fileBytes(original);
  for (const std::string& place :
       {library / "Library6.iPhoto", library / "new", library.outside("folder/new"),
        library.outside("file"), library.outside("dangling"), library / "Originals/new",
        library / ("Originals/" + kFirstRoll + "new"),
        library.outside("folder/Originals/" + kFirstRoll + "../new"),
        library.outside("disk/" + kFirstRoll + "new")}) {
    for (const std::string command :
         {"thumbnail $L 102 -q -o ", "contact-sheet $L/../folder -q -o "}) {
      const ToolResult result = runLine(command + quoted(place), library.root);
      EXPECT_TRUE(result.err.starts_with("mrziphoto: '" + place + "' lies in the library"))
          << result.err;
      EXPECT_EQ(result.status, 1);
    }
  }
  EXPECT_EQ(fileBytes(library / "Library6.iPhoto"), catalogue);
  EXPECT_FALSE(fs::exists(library / "new"));
  fs::rename(original, library.outside("disk/" + kFirstRoll + "IMG_0001.jpg"));
  fs::create_symlink("disk/" + kFirstRoll + "IMG_0001.jpg", library.outside("sheet.jpg"));
  EXPECT_EQ(runLine("contact-sheet $L -q -o $L/../sheet.jpg", library.root).status, 1);
  EXPECT_EQ(fileBytes(library.outside("sheet.jpg")), picture);
  // Beside the folders that pictures lie in is somebody else's.
  EXPECT_EQ(runLine("thumbnail $L 102 -q -o $L/../disk/x", library.root).status, 0);
}

// Where libvips would keep its code, and its pictures: a folder's time tells of files that are
// gone.
TEST_F(PictureCommands, MakeNoFilesForTheirOwnUse) {
  const Sample library(60);
  const TemporaryFolder folder;
  const fs::file_time_type before = fs::last_write_time(library.root);
  std::string command;
  for (const char* variable : {"HOME", "TMPDIR", "XDG_RUNTIME_DIR"}) {
    command += std::string(variable) + "='" + library.root + "' ";
  }
  command += MRZIPHOTO_TOOL " contact-sheet '" + library.root + "' -q -o '" + folder / "x.jpg'";
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(fs::last_write_time(library.root), before);
}

TEST(OutputFile, HasNoNameOfAnotherFormat) {
  // Empty when the path is.
  for (const auto& [path, format, right] :
       Rows<std::string, std::string, std::string>{{"a/x.jpg", "png", "a/x.png"},
                                                   {"x.JPEG", "png", "x.png"},
                                                   {"x.tif", "jpg", "x.jpg"},
                                                   {"x.png", "jpg", "x.jpg"},
                                                   {"x.PNG", "png", ""},
                                                   {"x.jpe", "jpg", ""},
                                                   {"x.jpg.new", "png", ""},
                                                   {"png.jpg/x", "png", ""},
                                                   {"x.", "png", ""},
                                                   {"x", "jpg", ""}}) {
    std::string failure;
    try {
      tool::expectEnding(path, format);
    } catch (const tool::Failure& error) {
      failure = error.what();
      EXPECT_EQ(error.status(), tool::ExitStatus::wrongUse);
    }
    EXPECT_EQ(failure, right.empty()
                           ? std::string()
                           : replaced("'" + path + "' is the name of another format: call it 'R'",
                                      "R", right));
  }
  EXPECT_EQ(runTool({"thumbnail", "/nowhere", "1", "-o", "x.jpg"}).status, 2);
  EXPECT_EQ(runTool({"contact-sheet", "/nowhere", "-o", "x.png"}).status, 2);
}

TEST_F(PictureCommands, KeepTheModeOfWhatTheyReplace) {
  const Sample library(200);
  const std::string file = library.outside("x.png");
  for (const mode_t mode : {0600U, 0664U, 0400U}) {
    std::ofstream(file) << "before";
    ASSERT_EQ(chmod(file.c_str(), mode), 0);
    EXPECT_EQ(runTool({"thumbnail", library.root, "102", "-o", file, "-q"}).status, 0);
    EXPECT_EQ(static_cast<mode_t>(fs::status(file).permissions()), mode);
    EXPECT_TRUE(fileBytes(file).starts_with("\x89PNG"));
    fs::remove(file);
  }
}

/// Runs something in a process of its own, and answers the signal that ends it; 0 for none.
int endingSignalOf(const std::function<void()>& run) {
  const pid_t process = fork();
  if (process == 0) {
    const rlimit noDump{};
    setrlimit(RLIMIT_CORE, &noDump);
    for (int signal = 1; signal <= SIGRTMAX; ++signal) {
      std::signal(signal, SIG_DFL);
    }
    run();
    std::_Exit(0);
  }
  int status = 0;
  waitpid(process, &status, 0);
  return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

TEST(NewFile, IsGoneWhenASignalEndsTheProgram) {
  const TemporaryFolder folder;
  writeSample(folder / "library", 60);
  const auto database = TVQiPhotoDatabase::initWithContentsOfDirectory(folder / "library");
  fs::create_directory(folder / "out");
  std::ofstream(folder / "out/x") << "before";
  std::vector<int> signals{SIGHUP,    SIGINT,    SIGQUIT,  SIGILL,  SIGTRAP, SIGABRT,
                           SIGBUS,    SIGFPE,    SIGUSR1,  SIGSEGV, SIGUSR2, SIGALRM,
                           SIGTERM,   SIGSTKFLT, SIGXCPU,  SIGIO,   SIGPWR,  SIGSYS,
                           SIGVTALRM, SIGPROF,   SIGRTMIN, SIGRTMAX};
  for (const int signal : signals) {
    EXPECT_EQ(endingSignalOf([&] {
                tool::NewFile file(folder / "out/x", tool::LibraryPlaces(*database));
                file.write("half");
                std::fflush(file.stream());
                std::raise(signal);
              }),
              signal);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "out"), {}), 1) << signal;
    EXPECT_EQ(fileBytes(folder / "out/x"), "before") << signal;
  }
  // What was ignored stays so, and nothing is handled any more when the file is there.
  EXPECT_EQ(endingSignalOf([&] {
              std::signal(SIGHUP, SIG_IGN);
              tool::NewFile file(folder / "out/x", tool::LibraryPlaces(*database));
              std::raise(SIGHUP);
              file.write("whole");
              file.takePlace();
              std::raise(SIGTERM);
            }),
            SIGTERM);
  EXPECT_EQ(fileBytes(folder / "out/x"), "whole");
}

TEST_F(PictureCommands, TellOfAFileThatMayGrowNoFurther) {
  const Sample library(200);
  const TemporaryFolder folder;
  const auto limited = [&](const std::string& words) {
    return WEXITSTATUS(std::system(
        ("ulimit -f 8; " MRZIPHOTO_TOOL " " + words + " 2>'" + folder / "err" + "'").c_str()));
  };
  const std::string sheet = library.outside("x.jpg");
  EXPECT_EQ(limited("contact-sheet '" + library.root + "' -o '" + sheet + "'"), 1);
  EXPECT_EQ(fileBytes(folder / "err"), "mrziphoto: cannot write '" + sheet + "': File too large\n");
  EXPECT_EQ(std::distance(fs::directory_iterator(library.outside("")), {}), 1);

  EXPECT_EQ(limited("sample '" + folder / "a/b/library" + "'"), 1);
  EXPECT_TRUE(lastLineOf(fileBytes(folder / "err")).ends_with(": File too large\n"));
  EXPECT_FALSE(fs::exists(folder / "a"));
}

TEST(SampleCommand, WritesArchivesInTheByteOrderAskedFor) {
  for (const auto& [option, beginning] :
       Rows<std::string, std::string>{{"", "\x04\x0Bstreamtyped"},
                                      {"--byte-order little", "\x04\x0Bstreamtyped"},
                                      {"--byte-order big", "\x04\x0Btypedstream"}}) {
    const TemporaryFolder folder;
    ASSERT_EQ(runLine("sample $L --photos 2 --no-images " + option, folder.path()).status, 0);
    for (const char* file : {"Dir.data", "Library.iPhoto"}) {
      EXPECT_TRUE(fileBytes(folder / file).starts_with(beginning)) << file;
    }
  }
}

TEST(SampleCommand, LeavesNothingWhenItIsEnded) {
  const TemporaryFolder folder;
  fs::create_directory(folder / "empty");
  for (const std::string& place : {folder / "empty", folder / "a/b"}) {
    const pid_t process = fork();
    if (process == 0) {
      execl(MRZIPHOTO_TOOL, MRZIPHOTO_TOOL, "sample", place.c_str(), "--photos", "100000",
            static_cast<char*>(nullptr));
      std::_Exit(127);
    }
    while (!fs::exists(place) || fs::is_empty(place)) {
      ASSERT_EQ(waitpid(process, nullptr, WNOHANG), 0) << "it goes on until it is ended";
    }
    kill(process, SIGTERM);
    int status = 0;
    waitpid(process, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
  }
  EXPECT_TRUE(fs::is_empty(folder / "empty"));
  EXPECT_FALSE(fs::exists(folder / "a"));
}

TEST_F(PictureCommands, FollowLinksAndWriteIntoStreams) {
  const Sample library(200);
  const std::string file = library.outside("file");
  const auto write = [&](const std::string& place, const std::string& destination) {
    const ToolResult result = runTool(
        {"contact-sheet", library.root, "-o", place, "--quiet", "--size", "400"}, destination);
    EXPECT_EQ(result.err, "") << place << destination;
    EXPECT_EQ(result.status, 0) << place << destination;
  };
  fs::create_symlink("file", library.outside("link"));
  write(library.outside("link"), "");
  EXPECT_TRUE(fs::is_symlink(library.outside("link")));
  const std::string sheet = fileBytes(file);
  EXPECT_TRUE(sheet.starts_with("\xFF\xD8\xFF"));
  EXPECT_GT(sheet.size(), 64U * 1024) << "more than a pipe holds";

  for (const char* stream : {"/dev/stdout", "/dev/fd/1"}) {
    fs::remove(file);
    std::ofstream(file) << "before ";
    write(stream, ">>'" + file + '\'');
    EXPECT_EQ(fileBytes(file), "before " + sheet) << stream;
  }
  write("/dev/stdout", "| true");
}

using Colour = std::array<double, 3>;

/// The mean colour, on white, of a part of a picture.
Colour meanOf(const NSBitmapImageRep& bitmap, std::size_t left, std::size_t top, std::size_t width,
              std::size_t height) {
  Colour sum{};
  for (std::size_t y = top; y < top + height; ++y) {
    for (std::size_t x = left; x < left + width; ++x) {
      const auto pixel = bitmap.bitmapData().subspan(y * bitmap.bytesPerRow() + x * 4, 4);
      for (std::size_t i = 0; i < sum.size(); ++i) {
        sum[i] += 255 - (255.0 - pixel[i]) * pixel[3] / 255;
      }
    }
  }
  for (double& sample : sum) {
    sample /= static_cast<double>(width * height);
  }
  return sum;
}

TEST_F(ContactSheet, ShowsALibraryWhosePictureFoldersAreGone) {
  const Sample library(200);
  library.remove({"Originals", "Modified", "Data"});
  const auto database = TVQiPhotoDatabase::initWithContentsOfDirectory(library.root);
  const std::string sheet = library.outside("sheet.jpg");
  // Cells of 80 pixels with a margin of 5.
  const Texts words{"contact-sheet", library.root, "-o", sheet, "--columns", "7", "--size", "80"};
  const ToolResult result = runTool(words);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(fileBytes(sheet).starts_with("\xFF\xD8\xFF"));
  const Ref<NSBitmapImageRep> drawn = NSImage::initByReferencingFile(sheet)->bitmap();
  ASSERT_TRUE(drawn);
  EXPECT_EQ(drawn->pixelsWide(), 7 * 80U);
  EXPECT_EQ(drawn->pixelsHigh(), 4 * 80U);
  constexpr double kLittle = 7;  // digits are drawn again, and JPEG is not exact
  std::size_t cell = 0;
  for (const Ref<ImageRecRef>& photo : database->photos()) {
    const Ref<NSBitmapImageRep> slot = database->cacheThumbnailForKey(photo->key());
    const Colour expected = meanOf(*slot, 0, 0, 64, 64);
    const Colour found = meanOf(*drawn, cell % 7 * 80 + 5, cell / 7 * 80 + 5, 70, 70);
    for (std::size_t i = 0; i < expected.size(); ++i) {
      EXPECT_NEAR(found[i], expected[i], kLittle) << photo->keyStringValue();
    }
    ++cell;
  }
  EXPECT_NEAR(meanOf(*drawn, 4 * 80, 3 * 80, 80, 80)[0], 255, kLittle) << "behind the last photo";

  library.remove({"Thumb64Segment.data"});
  const ToolResult grey = runTool(words);
  EXPECT_EQ(grey.status, 0);
  EXPECT_PRED2(contains, grey.err, "24 of 24 photos have no thumbnail");
  EXPECT_NEAR(meanOf(*NSImage::initByReferencingFile(sheet)->bitmap(), 5, 5, 70, 70)[0], 200,
              kLittle);
}

TEST(SheetLayout, FitsIntoAJpegPicture) {
  for (const auto& [photos, columns, cell, width, height, failure] :
       Rows<std::size_t, std::optional<std::uint32_t>, std::uint32_t, std::size_t, std::size_t,
            std::string>{{1, {}, 128, 128, 128, ""},
                         {24, {}, 128, 5 * 128, 5 * 128, ""},
                         {24, 6, 100, 600, 400, ""},
                         {3, 6, 100, 300, 100, ""},
                         {8000, {}, 128, 16 * 128, 500 * 128, ""},
                         {20'000, {}, 128, 40 * 128, 500 * 128, ""},
                         {20'000, 20, 128, 0, 0, "at least 40 with --columns"},
                         {20'000, 5000, 128, 0, 0, "at most 511 with --columns"},
                         {1'000'000, {}, 128, 0, 0, "at most 65 with --size"}}) {
    try {
      const auto layout = tool::SheetLayout::of(photos, columns, cell);
      EXPECT_EQ(layout.width(), width) << photos;
      EXPECT_EQ(layout.height(), height) << photos;
      EXPECT_EQ(failure, "");
    } catch (const tool::Failure& thrown) {
      EXPECT_NE(failure, "") << thrown.what();
      EXPECT_PRED2(contains, std::string(thrown.what()), failure);
    }
  }
}

}  // namespace
}  // namespace mrziphoto

#include <MRZiPhoto/images/NSImage.h>

#include "support/ArchiveBytes.h"
#include "support/EnvironmentVariable.h"
#include "support/LibraryFolder.h"
#include "support/MarkdownTable.h"
#include "support/RunTool.h"
#include "support/SampleFolder.h"

namespace mrziphoto {
namespace {

/// Two photos, one roll, two keywords and two albums, one of which has a number as its name.
class SmallLibrary : public LibraryFolder {
 public:
  SmallLibrary() {
    using namespace xml;
    writeCodedVersions(200);
    writeAlbumData(
        entry("Archive Path", text(root)) +
        entry("Master Image List",
              dict(image(7, "Köln &amp; so.jpg",
                         entry("Keywords", array(text("1") + text("2"))) +
                             entry("DateAsTimerInterval", "<real>0.5</real>")) +
                   image(8, "b.jpg", ""))) +
        entry("List of Keywords",
              dict(entry("1", text("Kids")) + entry("2", text("Se\u0301jour")))) +
        entry("List of Albums", array(album("AlbumName", "A\u0300 voir", 5, text("8") + text("7")) +
                                      album("AlbumName", "2009", 6, text("7") + text("99")))) +
        entry("List of Rolls", array(album("RollName", "Trip", 3, text("7") + text("8")))));
  }

 private:
  [[nodiscard]] std::string image(int key, const std::string& name,
                                  const std::string& others) const {
    using namespace xml;
    return entry(std::to_string(key),
                 dict(entry("ImagePath", text(root + "/" + name)) + entry("Caption", text(name)) +
                      entry("Roll", number(3)) + others));
  }
  static std::string album(const std::string& nameKey, const std::string& name, int key,
                           const std::string& photos) {
    using namespace xml;
    return dict(entry(nameKey, text(name)) + entry("AlbumId", number(key)) +
                entry("KeyList", array(photos)));
  }
};

std::size_t linesIn(const std::string& text) {
  return static_cast<std::size_t>(std::ranges::count(text, '\n'));
}

/// The sentence "mrziphoto: ..." is the last line of standard error.
std::string sentenceOf(const ToolResult& result) {
  const std::size_t begin = result.err.rfind("mrziphoto: ");
  EXPECT_NE(begin, std::string::npos) << result.err;
  EXPECT_EQ(linesIn(result.err.substr(std::min(begin, result.err.size()))), 1U) << result.err;
  return begin == std::string::npos ? "" : result.err.substr(begin);
}

TEST(Tool, ListsALibrary) {
  const SmallLibrary library;
  for (const auto& [line, answer] : Rows<std::string, std::string>{
           {"photos $L --format json --fields key,caption,keywords,archiveDate,comments",
            "[\n"
            R"({"key":7,"caption":"Köln & so.jpg","keywords":["Kids",)"
            "\"Se\u0301jour\"],"
            R"("archiveDate":"2001-01-01T00:00:00.5Z","comments":null},)"
            "\n"
            R"({"key":8,"caption":"b.jpg","keywords":[],"archiveDate":null,"comments":null})"
            "\n]\n"},
           {"photos $L --format csv --fields 'keywords, key,key'",
            "keywords,key\nKids; Se\u0301jour,7\n,8\n"},
           {"photos $L --album 'À voir' --format csv --fields key", "key\n8\n7\n"},
           {"photos $L --album 5 --format csv --fields key", "key\n8\n7\n"},
           {"photos $L --album 2009 --format csv --fields key", "key\n7\n"},
           {"photos $L --roll 3 --format csv --fields key", "key\n7\n8\n"},
           {"photos $L --album 'À voir' --roll 3 --keyword Séjour --format jsonl --fields key",
            "{\"key\":7}\n"},
           {"rolls $L --format jsonl",
            R"({"key":3,"name":"Trip","comments":null,"date":null,"archiveDate":null,)"
            R"("modificationDate":null,"photos":[7,8]})"
            "\n"},
           {"albums $L --format jsonl",
            "{\"key\":5,\"kind\":\"Album\",\"name\":\"A\u0300 voir\","
            R"("comments":null,"photos":[8,7],"children":[]})"
            "\n"
            R"({"key":6,"kind":"Album","name":"2009","comments":null,"photos":[7,99],)"
            R"("children":[]})"
            "\n"},
           {"keywords $L --format csv",
            "key,string,keyword\n1,Kids,Kids\n2,Se\u0301jour,Se\u0301jour\n"},
           {"get $L 8 imagePath cameraMaker imageSize rollKey --format json",
            R"({"imagePath":"ROOT/b.jpg","cameraMaker":null,)"
            R"("imageSize":{"width":0,"height":0},"rollKey":3})"
            "\n"},
           {"get $L 8 caption key", "caption  b.jpg\nkey      8\n"},
           {"info $L --format json",
            R"({"directory":"ROOT","catalogueFile":"ROOT/Library6.iPhoto","libraryVersion":200,)"
            R"("iPhotoDataVersion":"80","iPhotoVersion":"iPhoto Not Present",)"
            R"("archivePath":"ROOT","photos":2,"rollRecords":0,"rolls":1,"albums":2,)"
            R"("keywords":2,"thumbnailCache":null})"
            "\n"}}) {
    const ToolResult result = runLine(line + " --quiet", library.root);
    EXPECT_EQ(library.rooted(result.out), answer) << line << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
  }
}

TEST(Tool, TellsOfTheThumbnailCache) {
  const TemporaryFolder folder;
  for (const auto& [version, file] :
       Rows<int, std::string>{{50, "50/Thumb64.data"}, {51, "51/Thumb64Segment.data"}}) {
    const std::string library = folder / std::to_string(version);
    writeSample(library, version, 2, true);
    const std::string expected = R"("thumbnailCache":{"file":")" + (folder / file) +
                                 R"(","numberOfItems":2,"itemSize":16384}})";
    const std::string answer = runTool({"info", library, "--format", "json"}).out;
    EXPECT_PRED2(contains, answer, expected);
  }
}

TEST(Tool, SaysInOneSentenceWhatIsWrong) {
  const SmallLibrary library;
  library.write("other/file", "no archive");
  for (const auto& [line, status, named] : Rows<std::string, int, std::string>{
           {"photos $L $L", 2, library.root},
           {"photos $L --library $L", 2, library.root},
           {"photos $L --fields key,,date", 2, "''"},
           {"photos $L --roll x", 2, "'x'"},
           {"photos $L --roll 9", 1, "key 9"},
           {"photos $L --album Worst", 1, "'Worst'"},
           {"photos $L --album 9", 1, "'9'"},
           {"photos $L --keyword Work", 1, "'Work'"},
           {"photo $L seven", 2, "'seven'"},
           {"photo $L 9", 1, "key 9"},
           {"photo $L 4294967303", 1, "key 4294967303"},
           {"contact-sheet $L", 2, "--output"},
           {"contact-sheet $L -o x --size 8", 2, "8"},
           {"info $L/missing", 1, "missing"},
           {"info $L/other/file", 1, "other/file"},
           {"info $L/other", 1, "other' cannot be opened: no iPhoto library lies in this folder"},
           {"info $L/other -q", 1, "name the folder in which that file lies"},
           {"info ''", 1, "''"},
           {"archive $L/missing", 1, "missing' cannot be read: No such file or directory"},
           {"archive $L/other/file", 1, "other/file"},
           {"archive $L/other/file --format csv", 2, "csv"},
           {"sample $L", 1, library.root},
           {"sample ''", 1, "''"},
           {"sample $L/new --library-version 14", 2, "14"},
           {"sample $L/new --photos -1", 2, "-1"}}) {
    const ToolResult result = runLine(line, library.root);
    EXPECT_PRED2(contains, sentenceOf(result), named);
    EXPECT_EQ(result.status, status) << result.err;
    EXPECT_EQ(result.out, "");
  }
}

TEST(Tool, HintsAtTheRightWord) {
  const SmallLibrary library;
  for (const auto& [line, sentence] : Rows<std::string, std::string>{
           {"phtoos", "there is no command 'phtoos': did you mean 'photos'?"},
           {"list $L", "there is no command 'list', see 'mrziphoto --help'"},
           {"help Photo", "there is no command 'Photo': did you mean 'photo'?"},
           {"photos $L --fomat json", "there is no option '--fomat': did you mean '--format'?"},
           {"photos $L --fomat=json", "there is no option '--fomat': did you mean '--format'?"},
           {"photos $L --lib", "there is no option '--lib': did you mean '--library'?"},
           {"photos $L --bogus", "there is no option '--bogus', see 'mrziphoto photos --help'"},
           {"photos $L -qx", "there is no option '-x', see 'mrziphoto photos --help'"},
           {"photo $L -12", "there is no option '-12', see 'mrziphoto photo --help'"},
           {"check $L --album 5",
            "'check' takes no option '--album', see 'mrziphoto check --help'"},
           {"photos $L --format", "'--format' lacks its FORMAT, see 'mrziphoto photos --help'"},
           {"photos $L --strict=no", "'--strict' takes no value, see 'mrziphoto photos --help'"},
           {"photos $L --album 5 --album 6", "'--album' stands twice"},
           {"photos $L --format jsno",
            "'--format' takes table, json, jsonl or csv, not 'jsno': did you mean 'json'?"},
           {"archive $L/Library.iPhoto --format xml",
            "'--format' takes table, json, jsonl or csv, not 'xml'"},
           {"info $L --color off", "'--color' takes auto, always or never, not 'off'"},
           {"sample $L --photos 12x", "'--photos' takes a number from 0 to 2000000, not '12x'"},
           {"contact-sheet $L -o x --size 513",
            "'--size' takes a number from 16 to 512, not '513'"},
           {"thumbnail $L 7",
            "'thumbnail' needs '--output FILE', see 'mrziphoto thumbnail --help'"},
           {"photos $L --fields key,captoin",
            "a photo has no field 'captoin': did you mean 'caption'?"},
           {"get $L 7 imagepath", "a photo has no field 'imagepath': did you mean 'imagePath'?"},
           {"get $L 7", "'get' lacks its NAME..., see 'mrziphoto get --help'"},
           {"photo $L", "'photo' lacks its KEY, see 'mrziphoto photo --help'"},
           {"photo no-key",
            "'no-key' is neither a KEY, which is a decimal number, nor a LIBRARY with a KEY behind "
            "it, see 'mrziphoto photo --help'"},
           {"photos $L -- --quiet",
            "'--quiet' is one word too many, see 'mrziphoto photos --help'"},
           {"", "no command is named, see 'mrziphoto --help'"}}) {
    const ToolResult result = runLine(line, library.root);
    EXPECT_EQ(result.err, "mrziphoto: " + sentence + '\n');
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
  }
}

TEST(Tool, ShowsTheLogOnlyWhenAsked) {
  const SmallLibrary library;
  const std::string log = "New iPhoto library version 200\n";
  for (const auto& [line, err] :
       Rows<std::string, std::string>{{"photos $L", ""},
                                      {"--strict photos $L", log},
                                      {"photos -v $L", log},
                                      {"photos $L --verbose --stay-inside --color=never", log},
                                      {"photos $L --strict -q", ""},
                                      {"photos $L -vq", ""}}) {
    const ToolResult result = runLine(line, library.root);
    EXPECT_EQ(result.err, err);
    EXPECT_EQ(linesIn(result.out), 3U);
    EXPECT_EQ(result.status, 0);
  }
}

TEST(Tool, FitsTheTerminal) {
  const SmallLibrary library;
  const EnvironmentVariable terminal("TERM", "xterm");
  const EnvironmentVariable noColor("NO_COLOR", std::nullopt);
  const Texts words{"rolls", library.root};
  EXPECT_EQ(runToolInTerminal(words, 80),
            "\x1B[1mkey  name  comments  date  archiveDate  modificationDate  photos\x1B[0m\r\n"
            "  3  Trip" +
                std::string(49, ' ') + "7; 8\r\n");
  EXPECT_EQ(runToolInTerminal({"photos", library.root, "--color=never", "--fields",
                               "caption,modificationDate,hasBeenEdited"},
                              32),
            "caption    modifica…  hasBeenEd…\r\nKöln & s…             true\r\n"
            "b.jpg                 true\r\n");
  const EnvironmentVariable plain("NO_COLOR", "1");
  EXPECT_EQ(runToolInTerminal({"keywords", library.root}, 80),
            "key  string  keyword\r\n  1  Kids    Kids\r\n  2  Se\u0301jour  Se\u0301jour\r\n");
  EXPECT_EQ(runTool({"info", library.root, "--color=always"}).out.substr(0, 17),
            "\x1B[1mdirectory\x1B[0m");
}

TEST(Tool, TellsThatSomethingWasNotRead) {
  const std::string pipe = " cannot be read: it is no regular file";
  // Instead of the file there is a pipe, nothing, or these bytes; "FILE" stands for its path.
  for (const auto& [version, name, instead, status, told] :
       Rows<int, std::string, std::string, int, std::string>{
           {200, "AlbumData.xml", "pipe", 1, "cannot be read: 'FILE'" + pipe + ";"},
           {200, "AlbumData.xml", "", 1, "'FILE' cannot be read: No such file or directory;"},
           {24, "AlbumData.xml", "<plist><dict>", 1,
            "cannot be read: 'FILE' is damaged: the property list ends inside <dict> at line 1, "
            "byte 13;"},
           {60, "AlbumData.xml", "pipe", 3, "mrziphoto: 'FILE'" + pipe + "\n"},
           {60, "AlbumData.xml", "", 0, ""},
           {60, "Dir.data", "pipe", 3, "not known: 'FILE'" + pipe + "\n"},
           {20, "Albums/Last 12 Months", "pipe", 3, "the first because 'FILE'" + pipe + "\n"},
           {20, "Library.iPhoto", "pipe", 1, "cannot be opened: 'FILE'" + pipe + ";"}}) {
    const LibraryFolder library;
    writeSample(library.root, version, 3);
    fs::remove(library / name);
    if (instead == "pipe") {
      library.makePipe(name);
    } else if (!instead.empty()) {
      library.write(name, instead);
    }
    const ToolResult result = runLine("photos $L", library.root);
    EXPECT_EQ(result.status, status) << name;
    EXPECT_PRED2(contains, result.err, replaced(told, "FILE", library / name));
    EXPECT_EQ(result.out.empty(), status == 1) << result.out;
    const ToolResult quiet = runLine("photos $L -q", library.root);
    EXPECT_EQ(quiet.status, status);
    EXPECT_EQ(quiet.err.empty(), status != 1) << quiet.err;
    // Strictly, a library without its album data is one without photos.
    const ToolResult strict = runLine("photos $L --strict", library.root);
    EXPECT_EQ(strict.status, name == "Library.iPhoto" ? 1 : 0) << strict.err;
  }
}

TEST(Tool, FindsTheLibraryHoweverItIsNamed) {
  const SmallLibrary library;
  const TemporaryFolder home;
  fs::create_directory(home / "Pictures");
  for (const std::string name : {"Pictures/iPhoto Library", "77", "[x]"}) {
    fs::create_directory_symlink(library.root, home / name);
  }
  const EnvironmentVariable homeFolder("HOME", home.path());
  const fs::path before = fs::current_path();
  fs::current_path(home.path());
  for (const char* line : {"get 7 key", "get ./77 7 key", "get --library 77 7 key", "get [x] 7 key",
                           "get 7 --library=./77/. key"}) {
    EXPECT_EQ(runLine(line, "").out, "key  7\n") << line;
  }
  const EnvironmentVariable relativeHome("HOME", ".");
  for (const auto& [line, folder] : Rows<std::string, std::string>{
           {"info 77 --format json", "77"}, {"info --format json", "Pictures/iPhoto Library"}}) {
    const std::string told = "{\"directory\":\"" + (fs::current_path() / folder).string() + '"';
    EXPECT_TRUE(runLine(line, "").out.starts_with(told)) << told;
  }
  fs::current_path(before);
}

TEST(Tool, NamesThePathWhereTheWorkingFolderHasGone) {
  const fs::path before = fs::current_path();
  {
    const TemporaryFolder gone;
    fs::current_path(gone.path());
  }
  for (const char* command : {"info", "sample"}) {
    const ToolResult result = runTool({command, "x"});
    EXPECT_PRED2(contains, sentenceOf(result), "folder 'x'");
    EXPECT_EQ(result.status, 1);
  }
  fs::current_path(before);
}

TEST(Tool, TellsWhetherItsOutputArrived) {
  const SmallLibrary library;
  for (const char* nowhere : {">/dev/full", ">&-"}) {
    const ToolResult result = runTool({"photos", library.root}, nowhere);
    EXPECT_EQ(result.status, 1);
    EXPECT_PRED2(contains, sentenceOf(result), "standard output");
  }
  EXPECT_EQ(runTool({"--help"}, ">/dev/full").status, 1);

  // More than a pipe holds.
  const TemporaryFolder large;
  writeSample(large / "library", 200, 2000);
  const ToolResult result =
      runTool({"photos", large / "library", "--format", "jsonl", "--quiet"}, "| true");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST(Tool, WritesWhatIsNoTextAsReplacementCharacters) {
  const SmallLibrary library;
  const TemporaryFolder other;
  const std::string moved = other / "K\xF6ln";
  fs::copy(library.root, moved);
  const ToolResult result =
      runTool({"photos", moved, "--format", "jsonl", "--fields", "imagePath", "--quiet"});
  EXPECT_EQ(result.out, "{\"imagePath\":\"" + (other / "K\uFFFDln") + "/Köln & so.jpg\"}\n" +
                            "{\"imagePath\":\"" + (other / "K\uFFFDln") + "/b.jpg\"}\n");
}

TEST(Tool, LeavesOutACameraBlockThatCannotBeRead) {
  const TemporaryFolder folder;
  writeSample(folder / "library", 24, 3, true);
  const auto list = [&] {
    return runTool({"photos", folder / "library", "--fields", "key,maker,aperture,shutter",
                    "--format", "csv", "--quiet"});
  };
  const ToolResult before = list();
  EXPECT_EQ(before.err, "");

  // The aperture is a fraction: its size, its code, numerator and denominator.
  for (const auto& entry : fs::recursive_directory_iterator(folder / "library")) {
    if (entry.path().filename() == "103.attr") {
      std::string bytes = fileBytes(entry.path());
      const std::size_t code = bytes.find("ex\x82\x9D");
      ASSERT_NE(code, std::string::npos);
      bytes.replace(code + 8, 4, 4, '\0');
      folder.write(entry.path().lexically_relative(folder.path()).string(), bytes);
    }
  }
  const ToolResult after = list();
  EXPECT_EQ(after.status, 0);
  EXPECT_PRED2(contains, sentenceOf(after), "103");
  EXPECT_EQ(linesIn(after.err), 1U) << after.err;
  const std::size_t line = before.out.find("\n103,");
  ASSERT_NE(line, std::string::npos) << before.out;
  std::string expected = before.out;
  expected.replace(line, expected.find('\n', line + 1) - line, "\n103,,,");
  EXPECT_EQ(after.out, expected);
}

TEST(Tool, LetsNoTextOfALibrarySteerTheTerminal) {
  const SmallLibrary library;
  const std::string& root = library.root;
  library.write("archive", ArchiveBytes::build("'@' new A\x1B\u009B\u202EB:0 nil '+' "
                                               "\"x\x1B\u0085\u2066y\" end"));
  EXPECT_EQ(runTool({"archive", root + "/archive"}).out,
            "archive: little-endian, streamer version 4, system version 1000, 46 bytes\n"
            "@: object 0 A\\u001b B (0)\n"
            "  +: \"x\\u001b y\"\n");
  const std::string json = runTool({"archive", root + "/archive", "--format", "json"}).out;
  EXPECT_PRED2(contains, json, R"("name":"A\u001b\u009b\u202eB")");
  EXPECT_PRED2(contains, json, R"("values":["x\u001b\u0085\u2066y"])");

  library.writeAlbumData(xml::entry(
      "Master Image List",
      xml::dict(xml::entry(
          "7", xml::dict(xml::entry("ImagePath", xml::text("/a\u009B\u202Eb/c.jpg")))))));
  EXPECT_EQ(
      runTool({"dump", root}).out,
      "version = 200, nextImageKey = (null), nextRollKey = (null), flag1 = 0, flag2 = 0, "
      "imagesDate1 = (null), imageRecRefs = (\n"
      "    \"ImageRecRef: <no dictionary>, directory = /a\\U009b\\U202eb, attributes = (null), "
      "info = (null)\"\n"
      "), keywords = (\n"
      "), nextKeywordKey = (null)\n");

  const ToolResult failure = runTool({"photos", root, "--album", "a\x1B]0;x\x07\u202Eb\nc"});
  EXPECT_EQ(failure.err, "mrziphoto: the library '" + root + "' has no album 'a ]0;x b c'\n");
}

TEST(Tool, AnswersTheFieldsThatItsPageTells) {
  const SmallLibrary library;
  const ToolResult photo = runTool({"photo", library.root, "7", "--format", "csv"});
  std::string fields;
  for (const MarkdownRow& row : markdownTable(MRZIPHOTO_DOCS "/command-line.md", "Fields")) {
    fields += (fields.empty() ? "" : ",") + row.at(0);
  }
  EXPECT_EQ(photo.out.substr(0, photo.out.find('\n')), fields);
}

TEST(Tool, ExplainsEveryCommand) {
  const ToolResult help = runTool({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(runTool({"help"}).out, help.out);
  EXPECT_PRED2(contains, help.out, "\n  -q, --quiet  ");
  for (const char* command :
       {"info", "photos", "rolls", "albums", "keywords", "photo", "get", "thumbnail",
        "contact-sheet", "check", "dump", "watch", "archive", "sample", "help"}) {
    EXPECT_PRED2(contains, help.out, "\n  " + std::string(command) + "  ");
    const ToolResult one = runTool({command, "-h"});
    EXPECT_EQ(one.status, 0);
    EXPECT_EQ(runTool({"help", command}).out, one.out);
    std::istringstream lines(help.out + one.out);
    for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(line.size(), 80U) << line;
    }
    EXPECT_PRED2(contains, one.out, "\n  mrziphoto " + std::string(command) + " ");
  }
}

TEST(Tool, TellsPicturesAndCamerasInEveryGeneration) {
  const std::string fields =
      "key,imageWidth,imageHeight,maker,model,software,shutter,aperture,maximumAperture,"
      "exposureBias,subjectDistance,isoSpeed,focalLength,brightness,sensingMethod,lightSource,"
      "flash,meteringMode";
  for (const int version : {20, 40, 60, 150, 200}) {
    const TemporaryFolder folder;
    writeSample(folder / "library", version, 3, true);
    const ToolResult result =
        runTool({"photos", folder / "library", "--fields", fields, "--format", "csv", "--quiet"});
    if (version < 151) {
      EXPECT_EQ(result.out, fields + R"(
102,640,480,Sample Imaging,Pocket 3,v1.00,1,8,2.9,1,7.58,400,19.8,5.4,2,255,16,2
103,640,480,Example Optical Co.,EX-100,Firmware 1.2,500,4,2.9,0,6.92,200,7,7.2,2,9,1,5
104,640,480,Sample Imaging,Pocket 3,v1.00,125,4,2.9,1,2.84,1600,13.1,3.6,2,3,16,4
)");
    } else if (NSImage::isSupported()) {  // album data leaves sizes to the pictures
      EXPECT_PRED2(contains, result.out, "\n104,640,480,,,,0,,,,,,,,,,,\n");
    }
    EXPECT_EQ(result.err, "");
  }
}

TEST(Tool, ReadsARealLibrary) {
  const std::string library = MRZIPHOTO_REAL_FILES "/iPhoto-9.4.3.photolibrary";
  if (!fs::exists(library)) {
    GTEST_SKIP() << "There is no folder " << library;
  }
  const std::string info = runTool({"info", library, "--format", "json"}).out;
  EXPECT_PRED2(contains, info, R"("photos":7,"rollRecords":0,"rolls":1,"albums":5,)");

  const ToolResult paths =
      runTool({"photos", library, "--format", "csv", "--fields", "imagePath", "-v"});
  EXPECT_PRED2(contains, paths.err, " as the archive path\n");
  const std::string present = fs::path(library).lexically_normal().string();
  std::istringstream lines(paths.out.substr(paths.out.find('\n') + 1));
  std::size_t count = 0;
  for (std::string path; std::getline(lines, path); ++count) {
    EXPECT_TRUE(path.starts_with(present)) << path;
    EXPECT_TRUE(fs::is_regular_file(path)) << path;
  }
  EXPECT_EQ(count, 7U);
}

}  // namespace
}  // namespace mrziphoto

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include <MRZiPhoto/archive/ArchiveDocument.h>
#include <MRZiPhoto/values/NSException.h>
#include <MRZiPhoto/values/Text.h>

#include "support/ArchiveBytes.h"
#include "support/TemporaryFolder.h"

namespace mrziphoto {
namespace {

namespace fs = std::filesystem;

ArchiveDocument read(const std::string& bytes) {
  return ArchiveDocument::initWithData(Data::copyOf(bytes)).value();
}

constexpr std::string_view kPhotos = R"(
    'i' 25
    '@' new Photo:0 Stored:1 NSObject:0 nil
      S1 new NSString:1 O3  '+' "say \hi" end
      'c@@' x01 nil new O1  S1 O0 end
      '*' new S0  S8 O7
      '{s=fdd[2c]}' f0.5 2 x83000000000000f07f x00ff  S6 x02fffe
      '[30c]' x000000000000000000000000000000000000000000000000000000000000
      'Q' -1  '#' O1  ':' 'a'
    end
    S1 O4  x000100000002)";

TEST(ArchiveDocument, PrintsLinesThatCanBeFollowed) {
  EXPECT_EQ(read(ArchiveBytes::build(kPhotos)).text(),
            R"(archive: little-endian, streamer version 4, system version 1000, 190 bytes
i: 25
@: object 0 Photo (0) : Stored (1) : NSObject (0)
  @: object 4 NSString (1) : NSObject (0)
    +: "say \\hi"
  c@@:
    1
    nil
    object 6 Photo
      @: see object 0 Photo
  *: "i" (C string 7)
  *: "i" (C string 7)
  {s=fdd[2c]}: 0.5, 2, inf, 2 bytes <00ff>
  +: 2 bytes <fffe>
  [30c]: 30 bytes <000000000000000000000000000000000000000000000000...>
  Q: 18446744073709551615
  #: class Photo
  :: "a"
@: see object 4 NSString
6 more bytes from offset 190 that are no part of the archive: )"
            "*** Incorrect archive: reference to what has not been read\n");
}

TEST(ArchiveDocument, PrintsTheSameAsJson) {
  const std::string zeros(60, '0');
  EXPECT_EQ(read(ArchiveBytes::build(kPhotos)).json(),
            R"({"byteOrder":"littleEndian","streamerVersion":4,"systemVersion":1000,"length":190,)"
            R"("classes":[{"number":1,"name":"Photo","version":0,"superclass":2},)"
            R"({"number":2,"name":"Stored","version":1,"superclass":3},)"
            R"({"number":3,"name":"NSObject","version":0,"superclass":null},)"
            R"({"number":5,"name":"NSString","version":1,"superclass":3}],)"
            R"("groups":[{"types":"i","values":[25]},)"
            R"({"types":"@","values":[{"object":0,"class":"Photo","groups":[)"
            R"({"types":"@","values":[{"object":4,"class":"NSString","groups":[)"
            R"({"types":"+","values":["say \\hi"]}]}]},)"
            R"({"types":"c@@","values":[1,null,{"object":6,"class":"Photo","groups":[)"
            R"({"types":"@","values":[{"reference":0}]}]}]},)"
            R"({"types":"*","values":[{"cString":7,"text":"i"}]},)"
            R"({"types":"*","values":[{"cString":7,"text":"i"}]},)"
            R"({"types":"{s=fdd[2c]}","values":[0.5,2,"inf",{"bytes":2,"hex":"00ff"}]},)"
            R"({"types":"+","values":[{"bytes":2,"hex":"fffe"}]},)"
            R"({"types":"[30c]","values":[{"bytes":30,"hex":")" +
                zeros +
                R"("}]},)"
                R"({"types":"Q","values":[18446744073709551615]},)"
                R"({"types":"#","values":[{"class":"Photo","number":1}]},)"
                R"({"types":":","values":["a"]}]}]},)"
                R"({"types":"@","values":[{"reference":4}]}],)"
                R"("trailing":{"offset":190,"length":6,)"
                R"("reason":"*** Incorrect archive: reference to what has not been read"}})");
}

TEST(ArchiveDocument, EndsBeforeWhatIsNoGroup) {
  const std::string first = ArchiveBytes::build("'i' 1");
  const ArchiveDocument damagedLater = read(first + ArchiveBytes::build("'@' new A:0").substr(16));
  EXPECT_EQ(damagedLater.length(), first.size());
  EXPECT_EQ(damagedLater.trailingLength(), 9U);
  EXPECT_EQ(damagedLater.trailingReason(), "*** End of archive encountered prematurely at 29");
  EXPECT_EQ(damagedLater.write().bytes(), first);
  EXPECT_EQ(damagedLater.json().find("\"A\""), std::string::npos);

  EXPECT_THROW(read(ArchiveBytes::build("'i' x84")), NSException);
  EXPECT_FALSE(ArchiveDocument::initWithData(Data::copyOf("dbVS\0\0\0\4")));
  const ArchiveDocument empty = read(ArchiveBytes::build(""));
  EXPECT_EQ(empty.length(), 16U);
  EXPECT_EQ(empty.trailingLength(), 0U);
}

TEST(ArchiveDocument, WritesTheSameBytesAnew) {
  for (const std::endian order : {std::endian::big, std::endian::little}) {
    for (const std::string_view listing : {kEveryType, kPhotos}) {
      const std::string bytes = ArchiveBytes::build(listing, order);
      const ArchiveDocument document = read(bytes);
      EXPECT_EQ(document.byteOrder(), order);
      EXPECT_EQ(document.write().bytes(), bytes.substr(0, document.length()));
    }
  }
}

TEST(ArchiveDocument, ReadsOrRefusesAnythingCutOrChanged) {
  const auto check = [](const std::string& bytes) {
    try {
      if (const auto document = ArchiveDocument::initWithData(Data::copyOf(bytes))) {
        // What was read means the same when it is written in the shortest forms.
        EXPECT_EQ(read(std::string(document->write().bytes())).write(), document->write());
        EXPECT_TRUE(text::isUtf8(document->text()));
        EXPECT_TRUE(text::isUtf8(document->json()));
      }
    } catch (const NSException& exception) {
      EXPECT_LE(exception.offset().value_or(bytes.size() + 1), bytes.size()) << exception.what();
    }
  };
  const std::string whole = ArchiveBytes::build(kPhotos);
  for (std::size_t i = 0; i < whole.size(); ++i) {
    check(whole.substr(0, i));
    std::string changed = whole;
    for (const int byte : {0x00, 0x7F, 0x81, 0x84, 0x85, 0x86, 0x92, 0xFF, ~whole[i]}) {
      changed[i] = static_cast<char>(byte);
      check(changed);
    }
  }
}

TEST(ArchiveDocument, WritesFilesOfOtherProgramsByteForByte) {
  const fs::path folder(MRZIPHOTO_REAL_FILES);
  if (!fs::exists(folder / "typedstream")) {
    GTEST_SKIP() << "the files of other programs are not here";
  }
  std::vector<fs::path> files{folder / "iPhoto-9.4.3.photolibrary" / "Library.iPhoto",
                              folder / "iPhoto-9.4.3.photolibrary" / "Library.data"};
  for (const auto& entry : fs::directory_iterator(folder / "typedstream")) {
    files.push_back(entry.path());
  }
  EXPECT_GT(files.size(), 20U);
  for (const fs::path& file : files) {
    SCOPED_TRACE(file);
    const std::string bytes = fileBytes(file);
    const ArchiveDocument document = read(bytes);
    EXPECT_EQ(document.trailingLength(), 0U);
    EXPECT_TRUE(document.write().bytes() == bytes);
    EXPECT_NE(document.text().find(": "), std::string::npos);
    EXPECT_TRUE(text::isUtf8(document.json()));
  }
}

}  // namespace
}  // namespace mrziphoto

#include <string>

#include <gtest/gtest.h>

#include <MRZiPhoto/archive/ArchiveDocument.h>
#include <MRZiPhoto/values/NSException.h>
#include <MRZiPhoto/values/detail/Text.h>

#include "support/ArchiveBytes.h"
#include "tool/output/ArchivePrinting.h"

namespace mrziphoto::tool {
namespace {

std::string written(void (*write)(Output&, const ArchiveDocument&), const std::string& bytes) {
  Output output;
  write(output, ArchiveDocument::initWithData(Data::copyOf(bytes)).value());
  return output.text();
}

TEST(ArchivePrinting, WritesLinesThatCanBeFollowed) {
  EXPECT_EQ(written(writeArchiveLines, ArchiveBytes::build(kPhotoArchive)),
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

TEST(ArchivePrinting, WritesTheSameAsJson) {
  const std::string zeros(60, '0');
  EXPECT_EQ(written(writeArchiveJson, ArchiveBytes::build(kPhotoArchive)),
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
                R"("reason":"*** Incorrect archive: reference to what has not been read"}})"
                "\n");
}

TEST(ArchivePrinting, EscapesInTexts) {
  const std::string bytes = ArchiveBytes::build("'+' \"\t\n\\\x7F \u202E ö\"");
  EXPECT_NE(written(writeArchiveLines, bytes).find("+: \"\\u0009\\n\\\\\\u007f  ö\"\n"),
            std::string::npos);
  EXPECT_NE(written(writeArchiveJson, bytes).find(R"(["\u0009\n\\\u007f \u202e ö"])"),
            std::string::npos);
}

TEST(ArchivePrinting, WritesWhateverWasRead) {
  const std::string whole = ArchiveBytes::build(kPhotoArchive);
  for (std::size_t i = 0; i < whole.size(); ++i) {
    for (const int byte : {0x00, 0x7F, 0x84, 0x85, 0x86, 0x92, 0xFF}) {
      std::string changed = whole;
      changed[i] = static_cast<char>(byte);
      try {
        if (ArchiveDocument::initWithData(Data::copyOf(changed))) {
          EXPECT_TRUE(text::isUtf8(written(writeArchiveLines, changed)));
          EXPECT_TRUE(text::isUtf8(written(writeArchiveJson, changed)));
        }
      } catch (const NSException&) {
        continue;
      }
    }
  }
}

}  // namespace
}  // namespace mrziphoto::tool

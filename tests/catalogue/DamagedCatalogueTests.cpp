#include "support/CodedLibrary.h"
#include "support/LibraryFolder.h"
#include "support/Testing.h"

namespace mrziphoto {
namespace {

CodedBuilder roll(std::int32_t key) { return CodedBuilder().item("stKY", key); }

/// The text with "L" for the library folder.
std::string shortened(std::string text, const std::string& folder) {
  for (auto at = text.find(folder); at != std::string::npos; at = text.find(folder)) {
    text.replace(at, folder.size(), "L");
  }
  return text;
}

Texts sentences(const std::vector<Notice>& notices, const std::string& folder) {
  Texts lines;
  for (const Notice& notice : notices) {
    EXPECT_EQ(notice.file, folder + "/Library.iPhoto");
    EXPECT_TRUE(!notice.offset ||
                notice.sentence.find("offset " + std::to_string(*notice.offset)) !=
                    std::string::npos)
        << notice.sentence;
    lines.push_back(shortened(notice.sentence, folder));
  }
  return lines;
}

TEST(DamagedCatalogue, TellsWhatOfItsPromisesWasRead) {
  const std::string archive = albumArchive({Album::init<ArchiveAlbum>()});
  const auto withRolls = [&](const CodedBuilder& rolls) {
    return CodedBuilder().item("dbAL", archive).item("dbRL", rolls);
  };
  // Behind the version the albums stand at offset 12, and the rolls' records behind them.
  const std::size_t rollsAt = 12 + 8 + archive.size() + 8 + 4;
  struct Case {
    std::string_view what;
    CodedBuilder sections;
    std::size_t photos;
    std::size_t rolls;
    std::string logged;  // behind "Damaged iPhoto library …: "; empty for no line
    Texts noticed{};     // behind "the catalogue … "
  };
  const auto ended = [](std::string_view what, const CodedBuilder& sections, std::size_t photos,
                        const std::string& read, const std::string& where, std::size_t rolls = 0) {
    return Case{what, sections, photos, rolls, where, {"is damaged" + read + ": " + where}};
  };
  const auto odd = [](std::string_view what, const CodedBuilder& sections, std::size_t photos,
                      const std::string& noticed) {
    return Case{what, sections, photos, 0, "", {noticed}};
  };
  const CodedBuilder two = CodedBuilder().images({codedPhoto(1), codedPhoto(2)});
  for (const Case& each : std::initializer_list<Case>{
           {"nothing", two, 2, 0, ""},
           ended("an unlisted field",
                 CodedBuilder().images(
                     {codedPhoto(1), codedPhoto(2).code("idZZ").number(-5), codedPhoto(3)}),
                 1, ", and 1 of 3 photo records were read",
                 "the field 'idZZ' at offset 96 has the size -5"),
           ended("a block",
                 CodedBuilder().images({codedPhoto(1).item("idNI", 1).number(1).number(-8)}), 0,
                 ", and 0 of 1 photo record was read",
                 "the image-data block 1 at offset 76 has the size -8"),
           ended("a block behind the last",
                 CodedBuilder().images({codedPhoto(1).item("idNI", 1).number(9).number(-1)}), 0,
                 ", and 0 of 1 photo record was read",
                 "the image-data block 9 at offset 76 has the size -1"),
           ended("a record",
                 CodedBuilder()
                     .item("dbCT", 2)
                     .item("dbTV", std::string())
                     .item("imag", codedPhoto(1))
                     .code("imag")
                     .number(-1),
                 1, ", and 1 of 2 photo records were read",
                 "the photo record 'imag' at offset 64 has the size -1"),
           ended("a section before the table",
                 CodedBuilder().item("dbCT", 2).code("dbXX").number(-8).raw(two.bytes()), 0,
                 ", and 0 of 2 photo records were read",
                 "the section 'dbXX' at offset 24 has the size -8"),
           ended("the albums behind the table", CodedBuilder(two).code("dbAL").number(-9), 2,
                 ", and 2 of 2 photo records were read",
                 "the section 'dbAL' at offset 96 has the size -9"),
           ended("the first section", CodedBuilder().code("dbXX").number(-8).raw(two.bytes()), 0,
                 " before it counts photo records",
                 "the section 'dbXX' at offset 12 has the size -8"),
           ended("a section longer than the file",
                 CodedBuilder(two).code("dbXX").number(100).raw("abc"), 2,
                 ", and 2 of 2 photo records were read",
                 "the section 'dbXX' at offset 96, of 100 bytes, reaches beyond the end of the "
                 "file, which has 107"),
           ended("a roll field",
                 withRolls(
                     CodedBuilder().number(1).roll(roll(3)).roll(roll(4).code("rlXX").number(-8)))
                     .raw(two.bytes()),
                 2, ", and only 1 roll was read",
                 "the roll field 'rlXX' at offset " + std::to_string(rollsAt + 32) +
                     " has the size -8",
                 1),
           ended("a roll record", withRolls(CodedBuilder().number(1).number(-7)), 0,
                 ", and only 0 rolls were read",
                 "the roll record at offset " + std::to_string(rollsAt) + " has the size -7"),
           odd("a count without a table", CodedBuilder().item("dbCT", 3).item("dbMD", 1.0), 0,
               "holds 0 of 3 photo records: no table of records follows the count at offset 12"),
           odd("more records than counted",
               CodedBuilder()
                   .images({codedPhoto(1)})
                   .item("imag", codedPhoto(2))
                   .item("imag", codedPhoto(3)),
               1,
               "has 2 photo records that its count leaves out, and that were not read, at "
               "offset 64 first"),
           odd("records that nothing counts",
               CodedBuilder().item("dbTV", std::string()).item("imag", codedPhoto(2)), 0,
               "has 1 photo record that its count leaves out, and that was not read, at offset 20"),
           odd("fewer records than counted",
               CodedBuilder()
                   .item("dbCT", 2)
                   .item("dbTV", std::string())
                   .item("imag", codedPhoto(1))
                   .item("dbMD", std::string()),
               1,
               "has 1 photo record too few: another part of the catalogue stands in its place, at "
               "offset 64"),
           odd("a field beyond its record",
               CodedBuilder()
                   .item("dbCT", 1)
                   .item("dbTV", std::string())
                   .code("imag")
                   .number(20)
                   .raw(codedPhoto(1).bytes()),
               1, "has 1 photo record whose contents do not fit its size, at offset 32"),
           odd("blocks that end before the last",
               CodedBuilder().images({codedPhoto(1).item("idNI", 2).number(5).number(0)}), 1,
               "has 1 photo record that lacks some of its announced image data, at offset 32"),
           odd("albums behind the end mark",
               CodedBuilder().item("dbAL", albumArchive({0, Album::init<Album>(), 7})), 0,
               "has 1 album behind the end mark of its albums, not read, at offset 88"),
           odd("rolls without an archive album", CodedBuilder().rolls({roll(1), roll(2)}), 0,
               "has 2 rolls, of which 0 belong to its archive album; the others were left out"),
       }) {
    SCOPED_TRACE(each.what);
    const CodedLibrary library(60, each.sections);
    ASSERT_TRUE(library) << library.log().front();
    const std::string folder = library.path("");
    Texts logged;
    for (const std::string& line : library.log()) {
      logged.push_back(shortened(line, folder.substr(0, folder.size() - 1)));
    }
    // Without album data, the folder is told to stand for a recorded one that is nothing.
    logged.erase(std::remove_if(logged.begin(), logged.end(),
                                [](const std::string& line) { return line.starts_with("Using "); }),
                 logged.end());
    EXPECT_EQ(logged, each.logged.empty()
                          ? Texts()
                          : Texts{"Damaged iPhoto library L/Library.iPhoto: " + each.logged});
    Texts noticed;
    for (const std::string& rest : each.noticed) {
      noticed.push_back("the catalogue 'L/Library.iPhoto' " + rest);
    }
    EXPECT_EQ(sentences(library->notices(), folder.substr(0, folder.size() - 1)), noticed);
    EXPECT_EQ(library->photos().size(), each.photos);
    EXPECT_EQ(library->numberOfRolls(), each.rolls);
  }
}

TEST(DamagedCatalogue, IsRefusedWhereATypedReadMeetsANegativeSize) {
  const auto inPhoto = [](const CodedBuilder& field) {
    return CodedBuilder().images({codedPhoto(1).raw(field.bytes())});
  };
  const auto inBlock = [&](const CodedBuilder& field) {
    return inPhoto(CodedBuilder().item("idNI", 1).block(1, CodedBlockType::image, field));
  };
  const auto inRoll = [](const CodedBuilder& field) { return CodedBuilder().rolls({field}); };
  struct Case {
    CodedBuilder sections;
    std::int32_t size;
    std::string_view operation;
  };
  const auto item = [](const char(&code)[5], std::int32_t size) {
    return CodedBuilder().code(code).number(size);
  };
  for (const Case& each :
       std::initializer_list<Case>{{item("dbVS", -8), -8, "readCodedInt"},
                                   {item("dbCT", -1), -1, "readCodedInt"},
                                   {item("dbMD", -8), -8, "readCodedDouble"},
                                   {item("dbKW", -12), -12, "readCodedArchive"},
                                   {inPhoto(item("idRL", -4)), -4, "readCodedInt"},
                                   {inPhoto(item("idDT", -8)), -8, "readCodedDouble"},
                                   {inPhoto(item("idCP", -1)), -1, "readCodedUTF16String"},
                                   {inPhoto(item("idUD", -2)), -2, "readCodedData"},
                                   {inPhoto(item("idRS", -8)), -8, "readCodedArchive"},
                                   // Known, though without a count before them not read.
                                   {inPhoto(item("idKS", -4)), -4, "readCodedIntArray"},
                                   {inPhoto(item("idNI", -8)), -8, "readCodedInt"},
                                   {inBlock(item("idFP", -1)), -1, "readCodedUTF16String"},
                                   {inBlock(item("idIS", -8)), -8, "readCodedNSSize"},
                                   {inRoll(item("stKY", -4)), -4, "readCodedInt"},
                                   {inRoll(item("rlNM", -1)), -1, "readCodedUTF16String"},
                                   {inRoll(item("stPK", -4)), -4, "readCodedIntArray"},
                                   {inRoll(item("rlEM", -2)), -2, "readCodedShort"}}) {
    const CodedLibrary library(
        60, CodedBuilder().images({codedPhoto(1)}).raw(each.sections.bytes()).item("dbMD", 1.0));
    EXPECT_FALSE(library);
    EXPECT_EQ(library.log(), Texts{"NSInternalInconsistencyException - Unexpected datasize " +
                                   std::to_string(each.size) + " during " +
                                   std::string(each.operation) + " = (null)"});
  }
}

TEST(DamagedCatalogue, TellsThatAlbumDataStandsInForWhatItLost) {
  const std::string lists =
      xml::entry("Master Image List",
                 xml::dict(xml::entry("1", xml::dict(xml::entry("Roll", xml::number(5))))));
  const std::string others =
      xml::entry("List of Albums", xml::array(xml::dict(""))) +
      xml::entry("List of Rolls", xml::array(xml::dict(""))) +
      xml::entry("List of Keywords", xml::dict(xml::entry("3", xml::text("Kids"))));
  const CodedBuilder whole =
      CodedBuilder()
          .item("dbAL", albumArchive({Album::init<Album>(), Album::init<ArchiveAlbum>()}))
          .item("dbKW", archiveOf(keywordStore({{"one", 1}})))
          .rolls({roll(1)})
          .images({codedPhoto(1)});
  struct Case {
    CodedBuilder sections;
    std::string albumData;
    std::vector<std::string_view> standIns;
  };
  const std::string negative = CodedBuilder().code("dbXX").number(-8).bytes();
  for (const Case& each :
       std::initializer_list<Case>{{CodedBuilder(whole).raw(negative), lists + others, {}},
                                   {CodedBuilder(), lists + others, {}},
                                   {CodedBuilder().raw(negative), lists, {"photos"}},
                                   {CodedBuilder().images({codedPhoto(1)}).raw(negative),
                                    lists + others,
                                    {"albums", "rolls", "keywords"}}}) {
    const LibraryFolder folder;
    folder.write("Library.iPhoto", catalogueBytes(60, each.sections));
    folder.writeAlbumData(each.albumData);
    const Ref<TVQiPhotoLibrary> library =
        TVQiPhotoLibrary::initWithContentsOfFile(folder.root + "/Library.iPhoto");
    ASSERT_TRUE(library);
    // One of each: what the catalogue has is never mixed with what album data has.
    EXPECT_EQ(library->photos().size() + library->rollRecRefs().size(), 1U);
    EXPECT_EQ(library->numberOfAlbums(), each.albumData == lists ? 0U : 1U);
    EXPECT_EQ(library->numberOfRolls(), each.albumData == lists ? 0U : 1U);
    EXPECT_EQ(library->numberOfKeywords(), each.albumData == lists ? 0U : 1U);
    Texts told;
    for (const std::string& line : sentences(library->notices(), folder.root)) {
      if (!line.starts_with("the catalogue ")) {
        told.push_back(line);
      }
    }
    Texts expected;
    for (const std::string_view what : each.standIns) {
      expected.push_back("the " + std::string(what) +
                         " are those of 'L/AlbumData.xml': none could be read from the damaged "
                         "catalogue 'L/Library.iPhoto'");
    }
    EXPECT_EQ(told, expected);
  }
}

}  // namespace
}  // namespace mrziphoto

#include "support/CodedLibrary.h"
#include "support/LibraryFolder.h"

namespace mrziphoto {
namespace {

CodedBuilder roll(std::int32_t key) { return CodedBuilder().item("stKY", key); }

Texts sentences(const std::vector<Notice>& notices, const std::string& folder) {
  Texts lines;
  for (const Notice& notice : notices) {
    EXPECT_EQ(notice.file, folder + "/Library.iPhoto");
    EXPECT_TRUE(!notice.offset ||
                notice.sentence.find("offset " + std::to_string(*notice.offset)) !=
                    std::string::npos)
        << notice.sentence;
    lines.push_back(replaced(notice.sentence, folder, "L"));
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
  const CodedBuilder two = CodedBuilder().images({codedPhoto(1), codedPhoto(2)});
  // How many photos and rolls were read, and what is noticed behind "the catalogue …"; of damage
  // the part behind the colon is logged as well.
  for (const auto& [what, sections, photos, rolls, noticed] :
       Rows<std::string_view, CodedBuilder, std::size_t, std::size_t, std::string>{
           {"nothing", two, 2, 0, ""},
           {"an unlisted field",
            CodedBuilder().images(
                {codedPhoto(1), codedPhoto(2).code("idZZ").number(-5), codedPhoto(3)}),
            1, 0,
            "is damaged, and 1 of 3 photo records were read: the field 'idZZ' at offset 96 has the "
            "size -5"},
           {"a block", CodedBuilder().images({codedPhoto(1).item("idNI", 1).number(1).number(-8)}),
            0, 0,
            "is damaged, and 0 of 1 photo record was read: the image-data block 1 at offset 76 has "
            "the size -8"},
           {"a block behind the last",
            CodedBuilder().images({codedPhoto(1).item("idNI", 1).number(9).number(-1)}), 0, 0,
            "is damaged, and 0 of 1 photo record was read: the image-data block 9 at offset 76 has "
            "the size -1"},
           {"a record",
            CodedBuilder()
                .items("dbCT", 2, "dbTV", std::string(), "imag", codedPhoto(1))
                .code("imag")
                .number(-1),
            1, 0,
            "is damaged, and 1 of 2 photo records were read: the photo record 'imag' at offset 64 "
            "has the size -1"},
           {"a section before the table",
            CodedBuilder().item("dbCT", 2).code("dbXX").number(-8).raw(two.bytes()), 0, 0,
            "is damaged, and 0 of 2 photo records were read: the section 'dbXX' at offset 24 has "
            "the size -8"},
           {"the albums behind the table", CodedBuilder(two).code("dbAL").number(-9), 2, 0,
            "is damaged, and 2 of 2 photo records were read: the section 'dbAL' at offset 96 has "
            "the size -9"},
           {"the first section", CodedBuilder().code("dbXX").number(-8).raw(two.bytes()), 0, 0,
            "is damaged before it counts photo records: the section 'dbXX' at offset 12 has the "
            "size -8"},
           {"a section longer than the file", CodedBuilder(two).code("dbXX").number(100).raw("abc"),
            2, 0,
            "is damaged, and 2 of 2 photo records were read: the section 'dbXX' at offset 96, of "
            "100 bytes, reaches beyond the end of the "
            "file, which has 107"},
           {"a table longer than the file",
            CodedBuilder().item("dbCT", 0).code("dbTV").number(100).raw("abc"), 0, 0,
            "is damaged before it counts photo records: the section 'dbTV' at offset 24, of 100 "
            "bytes, reaches beyond the end of the file, which has 35"},
           {"a roll field",
            withRolls(CodedBuilder().number(1).roll(roll(3)).roll(roll(4).code("rlXX").number(-8)))
                .raw(two.bytes()),
            2, 1,
            "is damaged, and only 1 roll was read: the roll field 'rlXX' at offset " +
                std::to_string(rollsAt + 32) + " has the size -8"},
           {"a roll record", withRolls(CodedBuilder().number(1).number(-7)), 0, 0,
            "is damaged, and only 0 rolls were read: the roll record at offset " +
                std::to_string(rollsAt) + " has the size -7"},
           {"a count without a table", CodedBuilder().item("dbCT", 3).item("dbMD", 1.0), 0, 0,
            "holds 0 of 3 photo records: no table of records follows the count at offset 12"},
           {"more records than counted",
            CodedBuilder()
                .images({codedPhoto(1)})
                .item("imag", codedPhoto(2))
                .item("imag", codedPhoto(3)),
            1, 0,
            "has 2 photo records that its count leaves out, and that were not read, at "
            "offset 64 first"},
           {"records that nothing counts",
            CodedBuilder().item("dbTV", std::string()).item("imag", codedPhoto(2)), 0, 0,
            "has 1 photo record that its count leaves out, and that was not read, at offset 20"},
           {"fewer records than counted",
            CodedBuilder().items("dbCT", 2, "dbTV", std::string(), "imag", codedPhoto(1), "dbMD",
                                 std::string()),
            1, 0,
            "has 1 photo record too few: another part of the catalogue stands in its place, at "
            "offset 64"},
           {"a field beyond its record",
            CodedBuilder()
                .item("dbCT", 1)
                .item("dbTV", std::string())
                .code("imag")
                .number(20)
                .raw(codedPhoto(1).bytes()),
            1, 0, "has 1 photo record whose contents do not fit its size, at offset 32"},
           {"blocks that end before the last",
            CodedBuilder().images({codedPhoto(1).item("idNI", 2).number(5).number(0)}), 1, 0,
            "has 1 photo record that lacks some of its announced image data, at offset 32"},
           {"albums behind the end mark",
            CodedBuilder().item("dbAL", albumArchive({0, Album::init<Album>(), 7})), 0, 0,
            "has 1 album behind the end mark of its albums, not read, at offset 88"},
           {"rolls without an archive album", CodedBuilder().rolls({roll(1), roll(2)}), 0, 0,
            "has 2 rolls, of which 0 belong to its archive album; the others were left out"}}) {
    SCOPED_TRACE(what);
    const CodedLibrary library(60, sections);
    const std::string folder = fs::path(library.path("x")).parent_path();
    Texts logged;
    for (const std::string& line : library.log()) {
      // Without album data, the folder is told to stand for a recorded one that is nothing.
      if (!line.starts_with("Using ")) {
        logged.push_back(replaced(line, folder, "L"));
      }
    }
    Texts damage;
    if (noticed.starts_with("is damaged")) {
      damage.push_back("Damaged iPhoto library L/Library.iPhoto: " +
                       noticed.substr(noticed.find(": ") + 2));
    }
    EXPECT_EQ(logged, damage);
    EXPECT_EQ(sentences(library->notices(), folder),
              noticed.empty() ? Texts() : Texts{"the catalogue 'L/Library.iPhoto' " + noticed});
    EXPECT_EQ(library->photos().size(), photos);
    EXPECT_EQ(library->numberOfRolls(), rolls);
  }
}

TEST(DamagedCatalogue, TellsOfANegativeSizeInEveryGeneration) {
  for (const std::int32_t version : {15, 24, 50, 51, 150}) {
    const CodedBuilder before = CodedBuilder().item("dbAL", albumArchive({}));
    const std::size_t offset = catalogueBytes(version, before).size();
    const CodedLibrary library(version, CodedBuilder(before).code("dbAL").number(-8));
    const std::string folder = fs::path(library.path("x")).parent_path();
    EXPECT_EQ(sentences(library->notices(), folder),
              Texts{"the catalogue 'L/Library.iPhoto' is damaged before it counts photo records: "
                    "the section 'dbAL' at offset " +
                    std::to_string(offset) + " has the size -8"})
        << version;
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
  const auto item = [](const char(&code)[5], std::int32_t size) {
    return CodedBuilder().code(code).number(size);
  };
  for (const auto& [sections, size, operation] : Rows<CodedBuilder, std::int32_t, std::string_view>{
           {item("dbVS", -8), -8, "readCodedInt"},
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
        60, CodedBuilder().images({codedPhoto(1)}).raw(sections.bytes()).item("dbMD", 1.0));
    EXPECT_FALSE(library);
    EXPECT_EQ(library.log(),
              Texts{"NSInternalInconsistencyException - Unexpected datasize " +
                    std::to_string(size) + " during " + std::string(operation) + " = (null)"});
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
          .item("dbKW", archiveBytes(keywordStore({{"one", 1}})))
          .rolls({roll(1)})
          .images({codedPhoto(1)});
  const std::string negative = CodedBuilder().code("dbXX").number(-8).bytes();
  for (const auto& [sections, albumData, standIns] : Rows<CodedBuilder, std::string, Texts>{
           {CodedBuilder(whole).raw(negative), lists + others, {}},
           {CodedBuilder(), lists + others, {}},
           {CodedBuilder().raw(negative), lists, {"photos"}},
           {CodedBuilder().images({codedPhoto(1)}).raw(negative),
            lists + others,
            {"albums", "rolls", "keywords"}}}) {
    const LibraryFolder folder;
    folder.write("Library.iPhoto", catalogueBytes(60, sections));
    folder.writeAlbumData(albumData);
    const Ref<TVQiPhotoLibrary> library =
        TVQiPhotoLibrary::initWithContentsOfFile(folder.root + "/Library.iPhoto");
    // One of each: what the catalogue has is never mixed with what album data has.
    EXPECT_EQ(library->photos().size() + library->rollRecRefs().size(), 1U);
    EXPECT_EQ(library->numberOfAlbums(), albumData == lists ? 0U : 1U);
    EXPECT_EQ(library->numberOfRolls(), albumData == lists ? 0U : 1U);
    EXPECT_EQ(library->numberOfKeywords(), albumData == lists ? 0U : 1U);
    Texts told;
    for (const std::string& line : sentences(library->notices(), folder.root)) {
      if (!line.starts_with("the catalogue ")) {
        told.push_back(line);
      }
    }
    Texts expected;
    for (const std::string& what : standIns) {
      expected.push_back("the " + what +
                         " are those of 'L/AlbumData.xml': none could be read from the damaged "
                         "catalogue 'L/Library.iPhoto'");
    }
    EXPECT_EQ(told, expected);
  }
}

}  // namespace
}  // namespace mrziphoto

#include "support/CodedLibrary.h"

namespace mrziphoto {
namespace {

/// "name/comment/keys " of each roll of a catalogue whose roll section holds these bytes.
std::string rolls(const std::string& section) {
  const CodedLibrary library(60, CodedBuilder()
                                     .item("dbAL", albumArchive({Album::init<ArchiveAlbum>()}))
                                     .item("dbRL", section));
  if (!library) {
    return library.log().front();
  }
  std::string result;
  for (const Ref<RollAlbum>& roll : library->rolls()) {
    result += roll->key().description() + "/" + roll->albumName().value_or("-") + "/" +
              roll->annotation().value_or("-") + "/";
    for (const std::uint32_t key : roll->photoKeys()->keyNumbers()) {
      result += std::to_string(key) + ",";
    }
    result += " ";
  }
  return result;
}

CodedBuilder section() { return CodedBuilder().number(1); }

TEST(CodedRollRecords, BecomeRollAlbums) {
  const std::vector<std::int32_t> keys{3, -1};
  const CodedBuilder number12 = CodedBuilder().item("stKY", 12);
  for (const auto& [what, section, expected] :
       Rows<std::string_view, CodedBuilder, std::string_view>{
           {"nothing", CodedBuilder(), ""},
           {"the number in front alone", section(), ""},
           {"every field",
            section().roll(CodedBuilder().items("rlNM", u"Köln", "rlCM", u"comment", "stPK", keys,
                                                "slUI", u"id", "rlDT", 1.0, "rlDR",
                                                archiveBytes("text"), "rlEM", std::int16_t{1},
                                                "rlOR", std::int16_t{1}, "stKY", 12)),
            "12/Köln/comment/3,4294967295, "},
           {"a key alone", section().roll(number12), "12/// "},
           {"a key below zero", section().roll(CodedBuilder().item("stKY", -12)), "-12/// "},
           {"a text of four bytes",
            section().roll(CodedBuilder().item("rlNM", u"ab").item("stKY", 12)), "12/ab// "},
           {"no key, a key of 0 and a key of another size",
            section()
                .roll(CodedBuilder().item("rlNM", u"a"))
                .roll(CodedBuilder().item("stKY", 0))
                .roll(CodedBuilder().item("stKY", std::string()))
                .roll(number12),
            "12/// "},
           {"unlisted fields",
            section().roll(CodedBuilder()
                               .item("rlXX", 1)
                               .item("rlYY", std::string("odd"))
                               .raw(number12.bytes())),
            "12/// "},
           {"a record whose field reaches beyond it",
            section().number(5).raw(number12.bytes()).roll(number12), "12/// 12/// "},
           {"lengths that say nothing", section().number(0).number(3).roll(number12), "12/// "},
           {"a date of another size", section().roll(CodedBuilder().item("rlDT", 1)),
            "NSInternalInconsistencyException - Unexpected datasize 4 during readCodedDouble = "
            "(null)"},
           {"more keys than bytes", section().number(99).code("stPK").number(0x7FFFFFFF),
            "NSRangeException - the data ends inside a value: 2147483644 bytes wanted at offset 16 "
            "of 16 = (null)"}}) {
    EXPECT_EQ(rolls(section.bytes()), expected) << what;
  }
}

TEST(CodedRollRecords, StandInForTheRollsAmongTheArchiveAlbumsChildren) {
  const Value archive = archivedAs<ArchiveAlbum>({{"Children", list({Album::init<RollAlbum>()})}});
  const CodedBuilder albums = CodedBuilder().item("dbAL", albumArchive({archive}));
  const CodedLibrary alone(60, albums);
  EXPECT_EQ(alone->numberOfRolls(), 1U);
  const CodedBuilder roll = CodedBuilder().item("stKY", 12);
  const CodedLibrary both(60, CodedBuilder(albums).rolls({roll, roll}));
  ASSERT_EQ(both->numberOfRolls(), 2U);
  EXPECT_EQ(both->rolls()[0]->key(), Value(12));
}

}  // namespace
}  // namespace mrziphoto

#include <MRZiPhoto/albums/Album.h>
#include <MRZiPhoto/catalogue/detail/CodedFields.h>
#include <MRZiPhoto/values/Object.h>

#include "support/MarkdownTable.h"
#include "support/Testing.h"

namespace mrziphoto {
namespace {

using namespace std::string_view_literals;

using PageRows = std::vector<MarkdownRow>;

constexpr std::string_view kNone = "–";
constexpr std::array kReads{kNone,         "short"sv,     "int"sv,  "long"sv, "float"sv,  "date"sv,
                            "size pair"sv, "int array"sv, "text"sv, "data"sv, "archive"sv};
static_assert(kReads.size() == kCodedReads.size());

/// The rows of a page's table, cut to the columns that are compared. What a page says of a value
/// that is kept is its own affair.
PageRows table(const std::string& page, std::string_view heading, std::size_t columns,
               std::size_t keptColumns = 0) {
  PageRows rows = markdownTable(MRZIPHOTO_DOCS "/formats/" + page, heading);
  for (MarkdownRow& row : rows) {
    row.resize(columns + keptColumns);
    for (std::size_t i = columns; i < row.size(); ++i) {
      row[i] = row[i] == kNone ? kNone : "kept";
    }
  }
  return rows;
}

template <class Row>
MarkdownRow codeAndRead(const Row& row) {
  return {fourCharacterText(row.code).substr(1, 4),
          std::string(kReads[static_cast<std::size_t>(row.read)])};
}

template <class Value>
void addKept(MarkdownRow& row, Value value) {
  row.emplace_back(value == Value::nothing ? kNone : "kept");
}

TEST(FormatPages, ListTheKindsOfCodedValues) {
  PageRows expected;
  for (std::size_t i = 1; i < kCodedReads.size(); ++i) {
    const std::uint32_t size = kCodedReads[i].requiredSize;
    expected.push_back({std::string(kReads[i]), size == 0 ? "any" : std::to_string(size)});
  }
  EXPECT_EQ(table("coded-catalogue.md", "Kinds of values", 2), expected);
}

TEST(FormatPages, ListTheCodes) {
  PageRows sections;
  PageRows fields;
  PageRows blockFields;
  PageRows rollFields;
  for (const CodedSection& section : kCodedSections) {
    sections.push_back(codeAndRead(section));
  }
  for (const CodedImageField& field : kCodedImageFields) {
    addKept(fields.emplace_back(codeAndRead(field)), field.keep);
  }
  for (const CodedBlockField& field : kCodedBlockFields) {
    MarkdownRow& row = blockFields.emplace_back(codeAndRead(field));
    for (const ImageValue value :
         {field.inImage, field.inThumbnail, field.inOriginal, field.inOthers}) {
      addKept(row, value);
    }
  }
  for (const CodedRollField& field : kCodedRollFields) {
    addKept(rollFields.emplace_back(codeAndRead(field)), field.keep);
  }
  EXPECT_EQ(table("coded-catalogue.md", "Sections", 2), sections);
  EXPECT_EQ(table("coded-image-records.md", "Fields", 2, 1), fields);
  EXPECT_EQ(table("coded-roll-records.md", "Fields", 2, 1), rollFields);
  const PageRows blocks = table("coded-image-records.md", "Fields of a block", 2, 4);
  EXPECT_EQ(blocks, blockFields);
}

TEST(FormatPages, ListTheArchivedClasses) {
  PageRows albums;
  for (const AlbumKind* kind : albumKinds()) {
    albums.push_back({std::string(kind->name),
                      std::string(kind->superclass != nullptr ? kind->superclass->name : kNone),
                      std::to_string(kind->highestVersion), std::string(kind->defaultName)});
  }
  EXPECT_EQ(table("archived-records.md", "Albums", 4), albums);
  const PageRows classes = table("archived-records.md", "Classes", 3);
  EXPECT_EQ(classes.size(), 15U);
  for (const MarkdownRow& row : classes) {
    const Class* known = ClassRegistry::find(row[0]);
    ASSERT_NE(known, nullptr) << row[0];
    EXPECT_EQ(row[1], known->superclass != nullptr ? known->superclass->name : kNone) << row[0];
    EXPECT_EQ(row[2], std::to_string(known->highestVersion)) << row[0];
  }
}

}  // namespace
}  // namespace mrziphoto

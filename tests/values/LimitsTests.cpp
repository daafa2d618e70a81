#include "support/MarkdownTable.h"
#include "support/Testing.h"

namespace mrziphoto {
namespace {

/// "16 MiB" or "100,000".
std::string asWritten(std::uint64_t number, std::string_view unit, std::uint64_t inUnit) {
  std::string digits = std::to_string(number / inUnit);
  for (std::size_t i = digits.size(); i > 3; i -= 3) {
    digits.insert(i - 3, digits.size() > 4 ? "," : "");
  }
  return digits + (unit.empty() ? "" : " ") + std::string(unit);
}

TEST(Limits, AreAllDocumentedWithTheirDefaults) {
  struct Field {
    std::string_view name;
    std::uint64_t number;
    std::string_view unit = {};
    std::uint64_t inUnit = 1;
  };
  constexpr std::uint64_t kMiB = 1 << 20;
  const Limits limits;
  const std::array fields{
      Field{"fileSize", limits.fileSize, "GiB", kMiB << 10},
      Field{"expansion", limits.expansion},
      Field{"leastExpansion", limits.leastExpansion},
      Field{"nesting", limits.nesting},
      Field{"albums", limits.albums},
      Field{"flattenedAlbums", limits.flattenedAlbums},
      Field{"classChain", limits.classChain},
      Field{"typeString", limits.typeString},
      Field{"typeNesting", limits.typeNesting},
      Field{"describedKey", limits.describedKey},
      Field{"description", limits.description, "MiB", kMiB},
      Field{"imageSide", limits.imageSide},
      Field{"imagePixels", limits.imagePixels},
      Field{"decoderBytes", limits.decoderBytes, "MiB", kMiB},
      Field{"bitmapPixels", limits.bitmapPixels},
      Field{"decodingTime", static_cast<std::uint64_t>(limits.decodingTime.count()), "s", 1000}};
  std::set<std::pair<std::string, std::string>> wanted;
  for (const Field& field : fields) {
    wanted.emplace(field.name, asWritten(field.number, field.unit, field.inUnit));
  }
  std::set<std::pair<std::string, std::string>> documented;
  for (const MarkdownRow& row : markdownTable(MRZIPHOTO_DOCS "/limits.md", "Fields")) {
    ASSERT_GE(row.size(), 3U);
    documented.emplace(row[0], row[1]);
  }
  EXPECT_EQ(documented, wanted);
}

}  // namespace
}  // namespace mrziphoto

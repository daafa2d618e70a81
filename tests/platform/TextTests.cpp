#include <random>
#include <string>

#include <gtest/gtest.h>

#include <MRZiPhoto/platform/String.h>
#include <MRZiPhoto/platform/Text.h>

namespace mrziphoto {
namespace {

TEST(Text, EveryCharacterComesBack) {
  for (std::uint32_t character = 0; character <= 0x10FFFF; ++character) {
    std::string written;
    text::appendUtf8(written, character);
    ASSERT_TRUE(text::isUtf8(written)) << character;
    std::string_view left = written;
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    ASSERT_EQ(text::nextCharacter(left), isSurrogate ? 0xFFFD : character);
    ASSERT_TRUE(left.empty());
  }
  std::string beyond;
  text::appendUtf8(beyond, 0x110000);
  EXPECT_EQ(beyond, "\uFFFD");
}

TEST(Text, RepairsWhatIsIllFormed) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"plain", "plain"},
      {"a\x80z", "a\uFFFDz"},
      {"\xC0\xAF", "\uFFFD\uFFFD"},            // overlong
      {"\xE0\x80\x80", "\uFFFD\uFFFD\uFFFD"},  // overlong
      {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},  // a surrogate
      {"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"\xF0\x9F\x93", "\uFFFD\uFFFD\uFFFD"},  // cut off
      {"\xC3\xB6\xC3", "ö\uFFFD"},
  };
  for (const auto& [bytes, repaired] : cases) {
    EXPECT_EQ(text::repairedUtf8(bytes), repaired);
    EXPECT_EQ(text::isUtf8(bytes), bytes == repaired);
    EXPECT_EQ(String(bytes).utf8(), repaired);
  }
}

TEST(Text, ReadsUtf16OfBothOrders) {
  const std::string_view big("\0K\0\xF6\xD8\x3D\xDC\xF7", 8);
  const std::string_view little("K\0\xF6\0\x3D\xD8\xF7\xDC", 8);
  EXPECT_EQ(text::utf8FromUtf16(big, true), "Kö\U0001F4F7");
  EXPECT_EQ(text::utf8FromUtf16(little, false), "Kö\U0001F4F7");
  EXPECT_EQ(text::utf8FromUtf16(big.substr(0, 6), true), "Kö\uFFFD") << "half a pair";
  EXPECT_EQ(text::utf8FromUtf16(std::string_view("\xDC\xF7\0a", 4), true), "\uFFFDa");
  EXPECT_EQ(text::utf8FromUtf16(big.substr(0, 3), true), "K") << "half a unit";
  EXPECT_TRUE(String(nullptr, big, String::Encoding::utf16BigEndian) ==
              String(nullptr, little, String::Encoding::utf16LittleEndian));
}

}  // namespace
}  // namespace mrziphoto

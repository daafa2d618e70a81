#include <array>
#include <iconv.h>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include <MRZiPhoto/platform/MacRoman.h>
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
  EXPECT_EQ(text::utf8FromUtf16(std::string_view("\xD8\0\xDF\xFF\xDB\xFF\xDC\0", 8), true),
            "\U000103FF\U0010FC00");
  EXPECT_EQ(text::utf8FromUtf16(big.substr(0, 6), true), "Kö\uFFFD") << "half a pair";
  EXPECT_EQ(text::utf8FromUtf16(std::string_view("\xDC\xF7\0a", 4), true), "\uFFFDa");
  EXPECT_EQ(text::utf8FromUtf16(big.substr(0, 3), true), "K") << "half a unit";
  EXPECT_TRUE(String(nullptr, big, String::Encoding::utf16BigEndian) ==
              String(nullptr, little, String::Encoding::utf16LittleEndian));
}

/// As the C library converts them, but for two characters: it answers the Greek capital delta for
/// the increment sign, and another private character for the maker's sign.
TEST(MacRoman, IsTheTableOfIconv) {
  const iconv_t converter = iconv_open("UTF-8", "MACINTOSH");
  ASSERT_NE(converter, reinterpret_cast<iconv_t>(-1));
  for (int code = 0; code < 256; ++code) {
    std::string byte(1, static_cast<char>(code));
    std::array<char, 8> utf8{};
    char* from = byte.data();
    char* to = utf8.data();
    std::size_t left = 1;
    std::size_t room = utf8.size();
    ASSERT_NE(iconv(converter, &from, &left, &to, &room), static_cast<std::size_t>(-1));
    const std::string expected = code == 0xC6   ? "\u2206"
                                 : code == 0xF0 ? "\uF8FF"
                                                : std::string(utf8.data(), to);
    EXPECT_EQ(stringFromMacRoman(Data::copyOf(byte)).utf8(), expected) << code;
  }
  iconv_close(converter);
}

}  // namespace
}  // namespace mrziphoto

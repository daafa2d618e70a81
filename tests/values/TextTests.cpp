#include <iconv.h>

#include <MRZiPhoto/values/Log.h>
#include <MRZiPhoto/values/String.h>
#include <MRZiPhoto/values/detail/Description.h>
#include <MRZiPhoto/values/detail/MacRoman.h>
#include <MRZiPhoto/values/detail/Text.h>

#include "support/Testing.h"

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
  for (const auto& [bytes, repaired] : Rows<std::string_view, std::string_view>{
           {"plain", "plain"},
           {"a\x80z", "a\uFFFDz"},
           {"\xC0\xAF", "\uFFFD\uFFFD"},            // overlong
           {"\xE0\x80\x80", "\uFFFD\uFFFD\uFFFD"},  // overlong
           {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},  // a surrogate
           {"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
           {"\xF0\x9F\x93", "\uFFFD\uFFFD\uFFFD"},  // cut off
           {"\xC3\xB6\xC3", "ö\uFFFD"}}) {
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

TEST(Format, FillsDirectives) {
  EXPECT_EQ(stringWithFormat("%@ - %@ = %@", "Name", std::string("reason"), Value()),
            "Name - reason = (null)");
  EXPECT_EQ(stringWithFormat("%d %u %x %08X", -1, -1, 255, 0xBEEF), "-1 4294967295 ff 0000BEEF");
  EXPECT_EQ(stringWithFormat("[%5d|%-5d|%05d|%3@]", 42, 42, -42, "a"), "[   42|42   |-0042|  a]");
  EXPECT_EQ(stringWithFormat("%.2f %f %6.1f", 2.345, 0.5, -1.25), "2.35 0.500000   -1.2");
  EXPECT_EQ(stringWithFormat("'%c%c%c%c'", 'd', 'b', 0xD6, 'S'), "'dbÖS'") << "always valid text";
  EXPECT_EQ(stringWithFormat("100%% of %s", "all"), "100% of all");
  EXPECT_EQ(stringWithFormat("%@", ~0ULL), "18446744073709551615");
}

TEST(Format, LeavesWhatItCannotFill) {
  EXPECT_EQ(stringWithFormat("%@ and %@", 1), "1 and %@");
  EXPECT_EQ(stringWithFormat("%y %@ %", 1), "%y 1 %");
  EXPECT_EQ(stringWithFormat("no directive", 1, 2), "no directive");
  EXPECT_EQ(stringWithFormat("%99999999999d", 1).size(), 4096U);
  EXPECT_EQ(stringWithFormat("%.999f", 1e308).size(), 309U + 1 + 999);
}

TEST(Description, ContainersInTheCustomaryForm) {
  const auto words = list({1, "two words", make<Array>()});
  const auto inner = make<Dictionary>();
  inner->set("x", 1.5);
  inner->set("w", -3);
  const Dictionary all{{"list", words},
                       {"inner", inner},
                       {"Word1", "Word2"},
                       {"_key", ""},
                       {"city", "K\xC3\xB6ln \xF0\x9F\x93\xB7"},
                       {"edge", "\uFFFF\U00010000\U000103FF\U00010400"},
                       {"quotes", "a \"b\" \\ \n\t"},
                       {"bytes", Data::copyOf("hello")},
                       {"date", Date{0}}};
  EXPECT_EQ(all.description(),
            "{\n"
            "    Word1 = Word2;\n"
            "    \"_key\" = \"\";\n"
            "    bytes = <68656c6c 6f>;\n"
            "    city = \"K\\U00f6ln \\Ud83d\\Udcf7\";\n"
            "    date = \"2001-01-01 00:00:00 +0000\";\n"
            "    edge = \"\\Uffff\\Ud800\\Udc00\\Ud800\\Udfff\\Ud801\\Udc00\";\n"
            "    inner =     {\n"
            "        w = \"-3\";\n"
            "        x = \"1.5\";\n"
            "    };\n"
            "    list =     (\n"
            "        1,\n"
            "        \"two words\",\n"
            "                (\n"
            "        )\n"
            "    );\n"
            "    quotes = \"a \\\"b\\\" \\\\ \\n\\t\";\n"
            "}");
  EXPECT_EQ(make<Dictionary>()->description(), "{\n}");
}

TEST(Description, EndsWhereObjectsReferToEachOther) {
  const auto around = make<Dictionary>();
  around->set("self", Value::weak(*around));
  EXPECT_EQ(around->description(), "{\n    self = \"<NSDictionary>\";\n}");
  EXPECT_EQ(around->hash(), around->hash());
}

/// An object whose description holds that of others.
class Describing final : public Object {
 public:
  explicit Describing(Value inside) : _inside(std::move(inside)) {}
  [[nodiscard]] const Class& objectClass() const override {
    static constexpr Class kClass{"Describing"};
    return kClass;
  }
  [[nodiscard]] std::string description() const override {
    return stringWithFormat("%@ and %@", _inside, _inside);
  }

 private:
  Value _inside;
};

TEST(Description, HasOneBudgetForAllOfIt) {
  Limits limits;
  limits.description = 100'000;
  const Limits::Scope scope(limits);
  const auto doubled = [](int depth, auto around) {
    Value value = 1;
    for (; depth > 0; --depth) {
      value = around(value);
    }
    return value;
  };
  const auto twice = [](const Value& value) { return list({value, value}); };
  const auto object = [&](const Value& value) { return make<Describing>(twice(value)); };
  const Value bytes = Data::copyOf(std::string(1'000'000, 'x'));
  const Value many = make<Array>(std::vector<Value>(1000, doubled(16, twice)));
  for (const Value& value :
       {doubled(60, twice), doubled(24, object), many, Value(list({bytes})), bytes}) {
    const std::string text = value.description();
    EXPECT_LT(text.size(), 130'000U) << value.className();
    EXPECT_PRED2(contains, text, "...");
    EXPECT_LT(stringWithFormat("%@%@", value, value).size(), 130'000U) << "one for both arguments";
    EXPECT_EQ(text, value.description()) << "a new one each time";
  }
  const Value fitting = make<Array>(std::vector<Value>(9000, 1));
  EXPECT_EQ(fitting.description().size(), 9000U * 7 + 2);
}

TEST(Description, IsBriefInMessages) {
  const std::string text(1100, 'x');
  const Ref<Array> large = make<Array>();
  large->append(text);
  for (const auto& [value, expected] :
       Rows<Value, std::string>{{Value(), "(null)"},
                                {1, "1"},
                                {Date{0}, "2001-01-01 00:00:00 +0000"},
                                {"a text", "a text"},
                                {text, "<NSString>"},
                                {Data::copyOf("ab"), "<6162>"},
                                {Data::copyOf(text), "<NSData>"},
                                {make<Array>(), "(\n)"},
                                {large, "<NSArray>"}}) {
    EXPECT_EQ(describeBriefly(value), expected);
  }
}

}  // namespace
}  // namespace mrziphoto

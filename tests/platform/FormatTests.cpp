#include <gtest/gtest.h>

#include <MRZiPhoto/platform/Array.h>
#include <MRZiPhoto/platform/Dictionary.h>
#include <MRZiPhoto/platform/Format.h>

namespace mrziphoto {
namespace {

TEST(Format, FillsDirectives) {
  EXPECT_EQ(format("%@ - %@ = %@", "Name", std::string("reason"), Value()),
            "Name - reason = (null)");
  EXPECT_EQ(format("%d %u %x %08X", -1, -1, 255, 0xBEEF), "-1 4294967295 ff 0000BEEF");
  EXPECT_EQ(format("[%5d|%-5d|%05d|%3@]", 42, 42, -42, "a"), "[   42|42   |-0042|  a]");
  EXPECT_EQ(format("%.2f %f %6.1f", 2.345, 0.5, -1.25), "2.35 0.500000   -1.2");
  EXPECT_EQ(format("'%c%c%c%c'", 'd', 'b', 0xD6, 'S'), "'dbÖS'") << "always valid text";
  EXPECT_EQ(format("100%% of %s", "all"), "100% of all");
}

TEST(Format, LeavesWhatItCannotFill) {
  EXPECT_EQ(format("%@ and %@", 1), "1 and %@");
  EXPECT_EQ(format("%y %@ %", 1), "%y 1 %");
  EXPECT_EQ(format("no directive", 1, 2), "no directive");
  EXPECT_EQ(format("%99999999999d", 1).size(), 4096U);
  EXPECT_EQ(format("%.999f", 1e308).size(), 309U + 1 + 999);
}

TEST(Description, ContainersInTheCustomaryForm) {
  const auto list = make<Array>(std::vector<Value>{1, "two words", make<Array>()});
  const auto inner = make<Dictionary>();
  inner->set("x", 1.5);
  inner->set("w", -3);
  const Dictionary dictionary{{"list", list},
                              {"inner", inner},
                              {"Word1", "Word2"},
                              {"_key", ""},
                              {"city", "K\xC3\xB6ln \xF0\x9F\x93\xB7"},
                              {"quotes", "a \"b\" \\ \n\t"},
                              {"bytes", Data::copyOf("hello")},
                              {"date", Date{0}}};
  EXPECT_EQ(dictionary.description(),
            "{\n"
            "    Word1 = Word2;\n"
            "    \"_key\" = \"\";\n"
            "    bytes = <68656c6c 6f>;\n"
            "    city = \"K\\U00f6ln \\Ud83d\\Udcf7\";\n"
            "    date = \"2001-01-01 00:00:00 +0000\";\n"
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

TEST(Description, SharedPartsDoNotFillTheMemory) {
  Ref<Array> list = make<Array>();
  for (int depth = 0; depth < 60; ++depth) {
    list = make<Array>(std::vector<Value>{list, list});
  }
  const std::string text = list->description();
  EXPECT_LT(text.size(), std::size_t{64} << 20);
  EXPECT_NE(text.find("...\n"), std::string::npos);
}

}  // namespace
}  // namespace mrziphoto

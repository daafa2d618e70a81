#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include <MRZiPhoto/photos/Key.h>
#include <MRZiPhoto/values/Array.h>
#include <MRZiPhoto/values/Dictionary.h>

#include "tool/output/JsonText.h"
#include "tool/output/Messages.h"
#include "tool/output/Output.h"
#include "tool/output/Progress.h"
#include "tool/output/RecordWriter.h"
#include "tool/output/TerminalText.h"
#include "tool/output/Values.h"

namespace mrziphoto::tool {
namespace {

TEST(JsonText, EscapesTextsAndRepairsThem) {
  const struct {
    std::string text;
    std::string json;
  } cases[] = {
      {"", R"("")"},
      {"Köln 東京 🌸", R"("Köln 東京 🌸")"},
      {"a\"b\\c/d", R"("a\"b\\c/d")"},
      {"\n\t\r\b\f", R"("\n\t\r\b\f")"},
      {std::string("\0\x1F\x7F", 3), R"("\u0000\u001f\u007f")"},
      {"\u0080\u009F\u00A0", "\"\\u0080\\u009f\u00A0\""},
      {"broken \xFF end", "\"broken \uFFFD end\""},
      {"cut \xE6\x9D", "\"cut \uFFFD\uFFFD\""},
      {"\xC2", "\"\uFFFD\""},
      {"surrogate \xED\xA0\x80", "\"surrogate \uFFFD\uFFFD\uFFFD\""},
      {"twelve letters\u202E ب\u061C\u200F…", R"("twelve letters\u202e ب\u061c\u200f…")"},
      {"\u2028\u2066\u2070\U000E0041\U0001F3F4",
       "\"\\u2028\\u2066\u2070\\udb40\\udc41\U0001F3F4\""},
  };
  for (const auto& [text, json] : cases) {
    std::string out;
    JsonText::appendQuoted(out, text);
    EXPECT_EQ(out, json);
  }
}

/// What each format makes of one field with this value.
struct Written {
  std::string json;
  std::string csv;
  std::string table;
};

Written writtenInAllFormats(const Value& value) {
  const auto written = [&](Format format) {
    Output output;
    const auto out = RecordWriter::to(output, format, Shape::single, {"f"});
    out->beginRecord();
    writeValue(*out, value);
    out->endRecord();
    out->finish();
    return output.text();
  };
  return {written(Format::json), written(Format::csv), written(Format::table)};
}

TEST(RecordWriter, WritesEveryKindOfValue) {
  const Value list = make<Array>(std::vector<Value>{1, Value(), "a;b", true});
  const Value nested = make<Array>(std::vector<Value>{list, "x"});
  const Value object = make<Dictionary>(
      std::initializer_list<std::pair<std::string_view, Value>>{{"b", 1}, {"a", list}});
  const struct {
    Value value;
    std::string json;
    std::string csv;
    std::string table;
  } cases[] = {
      {Value(), "null", "\"\"", ""},
      {false, "false", "false", "false"},
      {-7, "-7", "-7", "-7"},
      {std::numeric_limits<std::uint64_t>::max(), "18446744073709551615", "18446744073709551615",
       "18446744073709551615"},
      {0.1, "0.1", "0.1", "0.1"},
      {0.1F, "0.1", "0.1", "0.1"},
      {100000.0, "100000", "100000", "100000"},
      {-0.0, "-0", "-0", "-0"},
      {1e300, "1e+300", "1e+300", "1e+300"},
      {std::nan(""), "null", "\"\"", ""},
      {std::numeric_limits<double>::infinity(), "null", "\"\"", ""},
      {Decimal{28, -1}, "2.8", "2.8", "2.8"},
      {Decimal{1, 300}, "1e+300", "1e+300", "1e+300"},
      {Decimal{1, 2000000000}, "null", "\"\"", ""},
      {Date{0.25}, "\"2001-01-01T00:00:00.25Z\"", "2001-01-01T00:00:00.25Z",
       "2001-01-01T00:00:00.25Z"},
      {Date{1e12}, "null", "\"\"", ""},
      {"two\nlines, \"quoted\"", R"("two\nlines, \"quoted\"")", "\"two\nlines, \"\"quoted\"\"\"",
       "two lines, \"quoted\""},
      {Key::initWithKey(12), "12", "12", "12"},
      {make<Key>(), "null", "\"\"", ""},
      {list, R"([1,null,"a;b",true])", "1; ; a;b; true", "1; ; a;b; true"},
      {nested, R"([[1,null,"a;b",true],"x"])", R"("[1,null,""a;b"",true]; x")",
       R"([1,null,"a;b",true]; x)"},
      {object, R"({"b":1,"a":[1,null,"a;b",true]})", R"("{""b"":1,""a"":[1,null,""a;b"",true]}")",
       R"({"b":1,"a":[1,null,"a;b",true]})"},
      {Data::copyOf("abc"), R"("<616263>")", "<616263>", "<616263>"},
  };
  for (const auto& [value, json, csv, table] : cases) {
    const Written written = writtenInAllFormats(value);
    EXPECT_EQ(written.json, "{\"f\":" + json + "}\n");
    EXPECT_EQ(written.csv, "f\n" + csv + "\n");
    EXPECT_EQ(written.table, table.empty() ? "f\n" : "f  " + table + "\n");
  }
}

TEST(RecordWriter, WritesAValueThatContainsItself) {
  const Ref<Array> array = make<Array>();
  array->append(Value::weak(*array));
  EXPECT_EQ(writtenInAllFormats(array).json, "{\"f\":[\"<NSArray>\"]}\n");
}

TEST(RecordWriter, WritesLists) {
  const auto written = [](Format format, std::size_t records) {
    Output output;
    const auto out = RecordWriter::to(output, format, Shape::list, {"key", "na\"me"});
    for (std::size_t i = 0; i < records; ++i) {
      out->beginRecord();
      out->integer(static_cast<std::int64_t>(9 + i));
      out->text(i == 0 ? std::optional<std::string>("東京") : std::nullopt);
      out->endRecord();
    }
    out->finish();
    return output.text();
  };
  EXPECT_EQ(written(Format::json, 0), "[]\n");
  EXPECT_EQ(written(Format::json, 2),
            "[\n{\"key\":9,\"na\\\"me\":\"東京\"},\n{\"key\":10,\"na\\\"me\":null}\n]\n");
  EXPECT_EQ(written(Format::jsonl, 0), "");
  EXPECT_EQ(written(Format::jsonl, 2),
            "{\"key\":9,\"na\\\"me\":\"東京\"}\n{\"key\":10,\"na\\\"me\":null}\n");
  EXPECT_EQ(written(Format::csv, 2), "key,\"na\"\"me\"\n9,東京\n10,\n");
  EXPECT_EQ(written(Format::table, 2), "key  na\"me\n  9  東京\n 10\n");
}

TEST(TableWriter, FitsATerminal) {
  const auto written = [](Format format, std::size_t width) {
    Output output;
    output.setTerminal({.isThere = true, .width = width});
    const auto out =
        RecordWriter::to(output, format, Shape::list, {"key", "taken", "text", "path"});
    for (std::size_t i = 0; i < 201; ++i) {
      out->beginRecord();
      out->unsignedInteger(1000 + i);
      out->text(std::string("2003-03-02T08:48:56Z"));
      out->text(
          std::string(i == 200 ? "the last one\x1B, and the longest" : "a text of some length"));
      out->text(std::string("/library/Originals/2003/Roll 1/picture.jpg"));
      out->endRecord();
    }
    out->finish();
    return output.text();
  };
  const auto firstAndLast = [](const std::string& text, std::size_t lines) {
    std::size_t end = 0;
    for (std::size_t i = 0; i < lines; ++i) {
      end = text.find('\n', end) + 1;
    }
    return text.substr(0, end) + text.substr(text.rfind('\n', text.size() - 2) + 1);
  };
  EXPECT_EQ(firstAndLast(written(Format::table, 120), 2),
            "key   taken                 text                   path\n"
            "1000  2003-03-02T08:48:56Z  a text of some length  "
            "/library/Originals/2003/Roll 1/picture.jpg\n"
            "1200  2003-03-02T08:48:56Z  the last one , and t…  "
            "/library/Originals/2003/Roll 1/picture.jpg\n");
  EXPECT_EQ(firstAndLast(written(Format::table, 70), 2),
            "key   taken                 text                  path\n"
            "1000  2003-03-02T08:48:56Z  a text of some leng…  /library…picture.jpg\n"
            "1200  2003-03-02T08:48:56Z  the last one , and …  /library…picture.jpg\n");
  EXPECT_EQ(firstAndLast(written(Format::table, 33), 8),
            "key    1000\n"
            "taken  2003-03-02T08:48:56Z\n"
            "text   a text of some length\n"
            "path   /library/Originals/2003/Ro\n"
            "       ll 1/picture.jpg\n"
            "\n"
            "key    1001\n"
            "taken  2003-03-02T08:48:56Z\n"
            "       ll 1/picture.jpg\n");
  EXPECT_NE(written(Format::csv, 34).find(",\"the last one , and"), std::string::npos);
}

TEST(Messages, CountWhatIsTooMuchOfAKind) {
  const auto said = [](Messages::Loudness loudness) {
    Messages::setLoudness(loudness);
    testing::internal::CaptureStderr();
    for (int i = 1; i <= 12; ++i) {
      Messages::complain("camera", "photo " + std::to_string(i) + "\u202E");
      Messages::notice("grey", "grey\n" + std::to_string(i));
    }
    Messages::logLine("mrziphoto: a line of the log\nand\x1B another");
    Messages::fail("the end");
    Messages::setLoudness(Messages::Loudness::usual);
    return testing::internal::GetCapturedStderr();
  };
  std::string photos;
  std::string both;
  for (int i = 1; i <= 12; ++i) {
    const std::string photo = "mrziphoto: photo " + std::to_string(i) + '\n';
    photos += i <= 10 ? photo : "";
    both += photo + "mrziphoto: grey " + std::to_string(i) + '\n';
  }
  const std::string end = "mrziphoto: the end\n";
  const std::string more = "mrziphoto: 2 more lines like these (camera), which --verbose shows\n";
  EXPECT_EQ(said(Messages::Loudness::failures), photos + more + end);
  EXPECT_EQ(said(Messages::Loudness::everything),
            both + " mrziphoto: a line of the log\nand  another\n" + end);
  EXPECT_EQ(said(Messages::Loudness::usual),
            both.substr(0, both.find("mrziphoto: photo 11")) + more +
                "mrziphoto: 2 more lines like these (grey), which --verbose shows\n" + end);
}

TEST(TerminalText, StaysInItsColumnsAndSteersNothing) {
  EXPECT_EQ(terminalText("a\x1B[31m\nb\xFF"), "a [31m b\uFFFD");
  EXPECT_EQ(terminalText("\u009B\u2028|\u061C\u200E\u202A\u2069\U000E007F|\u200D\u00A0"),
            "  ||\u200D\u00A0");
  EXPECT_EQ(terminalLines("a\r\nb\u2029"), "a \nb ");
  EXPECT_EQ(cutPathToWidth("/a/b/c.jpg", 10), "/a/b/c.jpg");
  EXPECT_EQ(cutPathToWidth("/folder/another/c.jpg", 12), "/folde…c.jpg");
  EXPECT_EQ(cutPathToWidth("/folder/a long name.jpg", 12), "…ng name.jpg");
  EXPECT_EQ(cutPathToWidth("/東京/東京タワー", 12), "/…東京タワー");
  using Lines = std::vector<std::string>;
  EXPECT_EQ(wrapToWidth("", 5), Lines{""});
  EXPECT_EQ(wrapToWidth("one two three", 8), (Lines{"one two", "three"}));
  EXPECT_EQ(wrapToWidth("a threehundred", 8), (Lines{"a threeh", "undred"}));
  EXPECT_EQ(wrapToWidth("東京", 1), (Lines{"東", "京"}));
  EXPECT_EQ(displayWidth("Ko\u0308ln"), 4U);
  EXPECT_EQ(displayWidth("東京🌸"), 6U);
  EXPECT_EQ(cutToWidth("Smørrebrød", 10), "Smørrebrød");
  EXPECT_EQ(cutToWidth("Smørrebrød", 6), "Smørr…");
  EXPECT_EQ(cutToWidth("東京タワー", 6), "東京…");
}

TEST(Progress, SaysHowFarWorkIsAndHowLongItTakes) {
  using std::chrono::duration;
  const struct {
    std::size_t done;
    std::size_t total;
    double elapsed;
    std::size_t width;
    std::string line;
  } cases[] = {
      {50, 200, 2, 72, "Checking  [#####...............]  25 %  50 of 200  25 a second  6 s left"},
      {200, 200, 0, 200,
       "Checking  [##############################]  100 %  200 of 200  200000000000 a second  "
       "0 s left"},
      {1, 1000, 1, 56, "Checking  0 %  1 of 1000  1 a second  17 min left"},
      {1, 1'000'000, 1, 10, "Checking …"},
      {30, 0, 2, 72, "Checking  30  15 a second"},
  };
  for (const auto& [done, total, elapsed, width, line] : cases) {
    EXPECT_EQ(progressLine("Checking", done, total, duration<double>(elapsed), width), line);
  }
}

}  // namespace
}  // namespace mrziphoto::tool

#include <cmath>
#include <limits>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include <MRZiPhoto/platform/Date.h>

namespace mrziphoto {
namespace {

TEST(Date, ReadsAndWritesTheSameInstant) {
  const std::pair<const char*, double> cases[] = {
      {"2001-01-01T00:00:00Z", 0},
      {"2000-12-31T23:59:59Z", -1},
      {"2004-05-06T12:34:56Z", 105539696},
      {"2004-05-06T13:00:00Z", 105541200},
      {"2000-02-29T00:00:00Z", -26524800},
      {"1970-01-01T00:00:00Z", -978307200},
      {"0001-01-01T00:00:00Z", -63113904000},
      {"9999-12-31T23:59:59Z", 252423993599},
  };
  for (const auto& [text, seconds] : cases) {
    const std::optional<Date> date = Date::fromIso8601(text);
    ASSERT_TRUE(date) << text;
    EXPECT_EQ(date->secondsSinceReferenceDate, seconds) << text;
    EXPECT_EQ(Date{seconds}.iso8601(), text);
  }
}

TEST(Date, RefusesWhatIsNoDate) {
  for (const char* text :
       {"", "2004-05-06", "2004-05-06T12:34:56", "2004-05-06 12:34:56Z", "2004-13-01T00:00:00Z",
        "2003-02-29T00:00:00Z", "2004-00-10T00:00:00Z", "2004-05-06T24:00:00Z",
        "2004-05-06T12:60:00Z", "2004-05-06T12:34:5xZ", "-004-05-06T12:34:56Z"}) {
    EXPECT_FALSE(Date::fromIso8601(text)) << text;
  }
}

TEST(Date, WritesTheFractionOnlyWhenThereIsOne) {
  const std::pair<double, const char*> cases[] = {
      {0.25, "2001-01-01T00:00:00.25Z"},    {0.1, "2001-01-01T00:00:00.1Z"},
      {-0.25, "2000-12-31T23:59:59.75Z"},   {105539696.1, "2004-05-06T12:34:56.1Z"},
      {-86400.5, "2000-12-30T23:59:59.5Z"}, {59.9999999999, "2001-01-01T00:01:00Z"},
      {-1e-12, "2001-01-01T00:00:00Z"},
  };
  for (const auto& [seconds, text] : cases) {
    EXPECT_EQ(Date{seconds}.iso8601(), text) << seconds;
  }
}

TEST(Date, HasNoCalendarFormBeyondTheYears1To9999) {
  for (const double seconds :
       {252423993600.0, -63113904001.0, 1e13, -1e300, std::numeric_limits<double>::infinity(),
        std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_FALSE(Date{seconds}.iso8601()) << seconds;
    EXPECT_FALSE(Date{seconds}.description().empty());
  }
}

TEST(Date, DescribesItselfInUtc) {
  EXPECT_EQ(Date{398639278.75}.description(), "2013-08-19 21:07:58 +0000");
  EXPECT_EQ(Date{-0.5}.description(), "2000-12-31 23:59:59 +0000");
}

}  // namespace
}  // namespace mrziphoto

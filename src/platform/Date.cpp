#include "Date.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace mrziphoto {
namespace {

using Days = std::chrono::sys_days;

constexpr std::int64_t kReferenceDate = 978307200;  // 2001-01-01 in seconds since 1970-01-01
constexpr std::int64_t kSecondsADay = 86400;
// Beyond these the calendar has no use; they keep the arithmetic far from its limits.
constexpr double kFurthest = 1e13;
constexpr std::size_t kFractionDigits = 9;

struct CalendarTime {
  std::int64_t year;
  unsigned month, day;
  int hour, minute, second;
};

CalendarTime calendarTime(std::int64_t secondsSinceReferenceDate) {
  const std::int64_t seconds = secondsSinceReferenceDate + kReferenceDate;
  std::int64_t days = seconds / kSecondsADay;
  std::int64_t rest = seconds % kSecondsADay;
  if (rest < 0) {
    rest += kSecondsADay;
    --days;
  }
  // std::chrono's years stop at 32767; the Gregorian calendar repeats every 400 years.
  constexpr std::int64_t kCycleDays = 146097;
  const std::int64_t cycles = days >= 0 ? days / kCycleDays : -((-days) / kCycleDays) - 1;
  const std::chrono::year_month_day date{
      Days{std::chrono::days{static_cast<int>(days - cycles * kCycleDays)}}};
  return {static_cast<int>(date.year()) + cycles * 400,
          static_cast<unsigned>(date.month()),
          static_cast<unsigned>(date.day()),
          static_cast<int>(rest / 3600),
          static_cast<int>(rest / 60 % 60),
          static_cast<int>(rest % 60)};
}

struct SplitSeconds {
  std::int64_t whole;    // rounded down
  std::string fraction;  // decimal digits without trailing zeros
};

/// The digits come from the shortest decimal text of the number, so that 0.1 stays "1".
SplitSeconds splitSeconds(double seconds) {
  std::array<char, 64> text{};
  const auto written = std::to_chars(text.data(), text.data() + text.size(), std::fabs(seconds),
                                     std::chars_format::fixed, kFractionDigits);
  const std::string_view digits(text.data(), static_cast<std::size_t>(written.ptr - text.data()));
  const std::size_t point = digits.size() - kFractionDigits - 1;
  SplitSeconds result{};
  std::from_chars(digits.data(), digits.data() + point, result.whole);
  std::int64_t fraction = 0;
  std::from_chars(digits.data() + point + 1, digits.data() + digits.size(), fraction);
  // A double near today's dates is good for seven digits; what lies behind them is noise.
  const std::int64_t noise = result.whole >= 1000000 ? 100 : 1;
  fraction = (fraction + noise / 2) / noise * noise;
  constexpr std::int64_t kWhole = 1000000000;
  if (fraction == kWhole) {
    fraction = 0;
    ++result.whole;
  }
  if (std::signbit(seconds)) {
    result.whole = -result.whole;
    if (fraction != 0) {
      --result.whole;
      fraction = kWhole - fraction;
    }
  }
  if (fraction != 0) {
    std::array<char, 16> padded{};
    std::snprintf(padded.data(), padded.size(), "%09lld", static_cast<long long>(fraction));
    result.fraction = padded.data();
    result.fraction.erase(result.fraction.find_last_not_of('0') + 1);
  }
  return result;
}

}  // namespace

Date Date::now() {
  const std::chrono::duration<double> since = std::chrono::system_clock::now().time_since_epoch();
  return {since.count() - static_cast<double>(kReferenceDate)};
}

std::optional<Date> Date::fromIso8601(std::string_view text) {
  constexpr std::string_view kForm = "dddd-dd-ddTdd:dd:ddZ";
  if (text.size() != kForm.size()) {
    return std::nullopt;
  }
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    const bool digit = text[i] >= '0' && text[i] <= '9';
    if (kForm[i] == 'd' ? !digit : text[i] != kForm[i]) {
      return std::nullopt;
    }
  }
  const auto number = [text](std::size_t at, std::size_t count) {
    int result = 0;
    for (const char digit : text.substr(at, count)) {
      result = result * 10 + (digit - '0');
    }
    return result;
  };
  const std::chrono::year_month_day date{std::chrono::year{number(0, 4)},
                                         std::chrono::month{static_cast<unsigned>(number(5, 2))},
                                         std::chrono::day{static_cast<unsigned>(number(8, 2))}};
  const int hour = number(11, 2);
  const int minute = number(14, 2);
  const int second = number(17, 2);
  if (!date.ok() || hour > 23 || minute > 59 || second > 59) {
    return std::nullopt;
  }
  const std::int64_t days = Days{date}.time_since_epoch().count();
  const std::int64_t seconds = days * kSecondsADay + hour * 3600 + minute * 60 + second;
  return Date{static_cast<double>(seconds - kReferenceDate)};
}

std::optional<std::string> Date::iso8601() const {
  if (!(std::fabs(secondsSinceReferenceDate) < kFurthest)) {
    return std::nullopt;
  }
  const SplitSeconds seconds = splitSeconds(secondsSinceReferenceDate);
  const CalendarTime time = calendarTime(seconds.whole);
  if (time.year < 1 || time.year > 9999) {
    return std::nullopt;
  }
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d",
                static_cast<int>(time.year), time.month, time.day, time.hour, time.minute,
                time.second);
  std::string result = text.data();
  if (!seconds.fraction.empty()) {
    result += '.' + seconds.fraction;
  }
  return result + 'Z';
}

std::string Date::description() const {
  if (!(std::fabs(secondsSinceReferenceDate) < kFurthest)) {
    return "(no calendar date)";
  }
  const CalendarTime time =
      calendarTime(static_cast<std::int64_t>(std::floor(secondsSinceReferenceDate)));
  std::array<char, 96> text{};
  std::snprintf(text.data(), text.size(), "%04lld-%02u-%02u %02d:%02d:%02d +0000",
                static_cast<long long>(time.year), time.month, time.day, time.hour, time.minute,
                time.second);
  return text.data();
}

}  // namespace mrziphoto

#include "Date.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace mrziphoto {
namespace {

using Days = std::chrono::sys_days;

constexpr std::int64_t kReferenceDate = 978307200;  // 2001-01-01 in seconds since 1970-01-01
constexpr std::int64_t kSecondsADay = 86400;
// Keep the arithmetic far from its limits.
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

constexpr std::int64_t kWhole = 1000000000;  // one second, as a fraction is counted

struct SplitSeconds {
  std::int64_t whole;     // rounded down
  std::int64_t fraction;  // in nanoseconds
};

SplitSeconds splitSeconds(double seconds) {
  const double size = std::fabs(seconds);
  SplitSeconds result{};
  result.whole = static_cast<std::int64_t>(size);
  result.fraction = std::llround((size - std::floor(size)) * static_cast<double>(kWhole));
  // Near today's dates a double has seven digits; the others are noise.
  const std::int64_t noise = result.whole >= 1000000 ? 100 : 1;
  result.fraction = (result.fraction + noise / 2) / noise * noise;
  if (result.fraction == kWhole) {
    result.fraction = 0;
    ++result.whole;
  }
  if (std::signbit(seconds)) {
    result.whole = -result.whole;
    if (result.fraction != 0) {
      --result.whole;
      result.fraction = kWhole - result.fraction;
    }
  }
  return result;
}

/// Writes a number with that many digits and a character; answers the end.
template <std::size_t width>
char* writeDigits(char* to, std::uint64_t number, char behind) {
  for (std::size_t at = width; at > 0; number /= 10) {
    to[--at] = static_cast<char>('0' + number % 10);
  }
  to[width] = behind;
  return to + width + 1;
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
  std::array<char, std::string_view("2004-05-06T12:34:56.123456789Z").size()> text{};
  char* end = writeDigits<4>(text.data(), static_cast<std::uint64_t>(time.year), '-');
  end = writeDigits<2>(end, time.month, '-');
  end = writeDigits<2>(end, time.day, 'T');
  end = writeDigits<2>(end, static_cast<std::uint64_t>(time.hour), ':');
  end = writeDigits<2>(end, static_cast<std::uint64_t>(time.minute), ':');
  end = writeDigits<2>(end, static_cast<std::uint64_t>(time.second), '.');
  if (seconds.fraction != 0) {
    end = writeDigits<kFractionDigits>(end, static_cast<std::uint64_t>(seconds.fraction), '0');
    while (end[-1] == '0') {
      --end;
    }
    ++end;
  }
  end[-1] = 'Z';
  return std::string(text.data(), end);
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

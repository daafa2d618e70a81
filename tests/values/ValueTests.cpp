#include <cmath>

#include <MRZiPhoto/values/Decimal.h>

#include "support/Testing.h"

namespace mrziphoto {
namespace {

constexpr std::int64_t kMostNegative = std::numeric_limits<std::int64_t>::min();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::uint32_t bits(std::int32_t value) { return static_cast<std::uint32_t>(value); }

TEST(Value, ReadsNumbersFromAllKinds) {
  for (const auto& [value, signedInt, unsignedInt, expected] :
       Rows<Value, std::int32_t, std::uint32_t, double>{
           {42, 42, 42, 42},
           {-5, -5, bits(-5), -5},
           {std::int64_t{0x1'0000'0007}, 7, 7, 4294967303.0},
           {std::uint64_t{0xFFFF'FFFF'FFFF'FFFF}, -1, 0xFFFF'FFFF, 18446744073709551615.0},
           {3.9, 3, 3, 3.9},
           {-0.5, 0, 0, -0.5},
           {1e20, 2147483647, 0xFFFF'FFFF, 1e20},
           {std::numeric_limits<double>::quiet_NaN(), 0, 0, 0},
           {Decimal{28, -1}, 2, 2, 2.8},
           {"42 photos", 42, 42, 42},
           {" \t+17", 17, 17, 17},
           {"-3", -3, 0, -3},
           {"+-3", 0, 0, 0},
           {"99999999999999999999", 2147483647, 0xFFFF'FFFF, 1e20},
           {"4294967295", 2147483647, 0xFFFF'FFFF, 4294967295.0},
           {".5e1x", 0, 0, 5},
           {"nan", 0, 0, 0},
           {"Infinity", 0, 0, 0},
           {"", 0, 0, 0},
           {nullptr, 0, 0, 0},
           {make<Array>(), 0, 0, 0}}) {
    EXPECT_EQ(value.intValue(), signedInt) << value.description();
    EXPECT_EQ(value.unsignedIntValue(), unsignedInt) << value.description();
    const double real = value.doubleValue();
    EXPECT_TRUE(real == expected || value.description() == "nan") << real;
  }
}

template <class... Integers>
void expectHeldExactly(char narrow, char wide) {
  const auto expectOne = [&](auto number) {
    const Value value(number);
    EXPECT_EQ(value.numberType(), sizeof number > 4 ? wide : narrow);
    EXPECT_EQ(value.description(), std::to_string(number));
    EXPECT_EQ(value.integer(), std::in_range<std::int64_t>(number)
                                   ? std::optional(static_cast<std::int64_t>(number))
                                   : std::nullopt);
  };
  (expectOne(std::numeric_limits<Integers>::min()), ...);
  (expectOne(std::numeric_limits<Integers>::max()), ...);
}

TEST(Value, TakesEveryIntegerType) {
  // NOLINTBEGIN(google-runtime-int): every type by name
  expectHeldExactly<short, unsigned short, int, long, long long>('i', 'q');
  expectHeldExactly<unsigned, unsigned long, unsigned long long>('I', 'Q');
  // NOLINTEND(google-runtime-int)
  EXPECT_EQ(Value(true).numberType(), 'B');
}

TEST(Value, DescribesNumbersTheSameEverywhere) {
  for (const auto& [value, text] : Rows<Value, std::string>{
           {true, "1"},
           {Value::integerOfType(kMostNegative, 'q'), "-9223372036854775808"},
           {Value::integerOfType(-1, 'Q'), "18446744073709551615"},
           {0.1, "0.1"},
           {0.1F, "0.1"},
           {1.0 / 3, "0.3333333333333333"},
           {100000.0, "100000"},
           {1e22, "1e+22"},
           {-std::numeric_limits<double>::quiet_NaN(), "nan"},
           {-kInfinity, "-inf"},
           {Decimal{-3, -2}, "-0.03"},
           {Decimal{12, 3}, "12000"},
           {Decimal{1, std::numeric_limits<std::int32_t>::max()}, "1e2147483647"},
           {Value(), "(null)"}}) {
    EXPECT_EQ(value.description(), text);
  }
}

/// Values that are equal stand in one row.
TEST(Value, EqualValuesHaveEqualHashesAndOthersDiffer) {
  const auto inner = make<Dictionary>();
  inner->set("Key", 7);
  const std::string_view utf16("\0K\0\xF6\0l\0n", 8);
  const std::vector<std::vector<Value>> rows{
      {Value(), nullptr, Value(Ref<Object>())},
      {1, true, 1.0, std::uint64_t{1}, Decimal{10, -1}},
      {0, -0.0, Decimal{0, 5}},
      {-1, -1.0},
      {std::uint64_t{0xFFFF'FFFF'FFFF'FFFF}},
      {2.5, 2.5F, Decimal{25, -1}, Decimal{2500, -3}},
      {"1", String("1")},
      {"Köln", String(nullptr, utf16, String::Encoding::utf16BigEndian)},
      {Data::copyOf("1")},
      {Date{1.0}},
      {list({1, "a"}), list({1.0, "a"})},
      {list({"a", 1})},
      {Value(inner), Value::weak(*inner)},
      {make<Array>()},
      {make<Dictionary>()}};
  for (const auto& row : rows) {
    for (const auto& other : rows) {
      for (const Value& left : row) {
        for (const Value& right : other) {
          EXPECT_EQ(left == right, &row == &other)
              << left.description() << " and " << right.description();
          if (&row == &other) {
            EXPECT_EQ(left.hash(), right.hash()) << left.description();
          }
        }
      }
    }
  }
}

TEST(Value, AnswersNothingForOtherKinds) {
  const Value text = "text";
  EXPECT_FALSE(text.integer() || text.date() || text.data() || text.decimal());
  EXPECT_FALSE(text.array() || text.dictionary() || text.object());
  const Value number = 5;
  EXPECT_FALSE(number.text() || number.string() || number.date());
  EXPECT_FALSE(Value(std::numeric_limits<std::uint64_t>::max()).integer());
  EXPECT_EQ(Value(std::uint64_t{5}).integer(), 5);
}

TEST(Date, ReadsAndWritesTheSameInstant) {
  for (const auto& [text, seconds] :
       Rows<const char*, double>{{"2001-01-01T00:00:00Z", 0},
                                 {"2000-12-31T23:59:59Z", -1},
                                 {"2004-05-06T12:34:56Z", 105539696},
                                 {"2004-05-06T13:00:00Z", 105541200},
                                 {"2000-02-29T00:00:00Z", -26524800},
                                 {"1970-01-01T00:00:00Z", -978307200},
                                 {"0001-01-01T00:00:00Z", -63113904000},
                                 {"9999-12-31T23:59:59Z", 252423993599}}) {
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
  for (const auto& [seconds, text] :
       Rows<double, const char*>{{0.25, "2001-01-01T00:00:00.25Z"},
                                 {0.1, "2001-01-01T00:00:00.1Z"},
                                 {-0.25, "2000-12-31T23:59:59.75Z"},
                                 {105539696.1, "2004-05-06T12:34:56.1Z"},
                                 {-86400.5, "2000-12-30T23:59:59.5Z"},
                                 {59.9999999999, "2001-01-01T00:01:00Z"},
                                 {-1e-12, "2001-01-01T00:00:00Z"}}) {
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

TEST(DecimalArithmetic, TakesTheShortestNumberThatReadsBackAsTheDouble) {
  for (const auto& [real, decimal] :
       Rows<double, const char*>{{0.1, "0.1"},
                                 {-2.5, "-2.5"},
                                 {1e21, "1000000000000000000000"},
                                 {0.008000000119, "0.008000000119"},
                                 {-0.0, "0"},
                                 {std::numeric_limits<double>::infinity(), "0"},
                                 {std::nan(""), "0"}}) {
    EXPECT_EQ(Decimal::fromDouble(real).description(), decimal);
  }
  for (const double real :
       {1.0 / 3, 2.0 / 3e200, 5e-324, 1.7976931348623157e308, 9007199254740993.0}) {
    EXPECT_EQ(Decimal::fromDouble(real).doubleValue(), real);
  }
}

/// Rounds to a number of digits after the point; failures answer the error's number, negative.
class Rounding final : public NSDecimalNumberBehaviors {
 public:
  explicit Rounding(std::int16_t digits) : _digits(digits) {}
  NSRoundingMode roundingMode() const override { return NSRoundingMode::plain; }
  std::int16_t scale() const override { return _digits; }
  Decimal exceptionDuringOperationErrorLeftOperandRightOperand(
      std::string_view /*operation*/, NSCalculationError error, const Decimal& /*left*/,
      const Decimal& /*right*/) const override {
    return {-static_cast<std::int64_t>(error), 0};
  }

 private:
  std::int16_t _digits;
};

TEST(DecimalArithmetic, DividesExactlyAndRoundsOnce) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
  for (const auto& [left, right, digits, quotient] :
       Rows<Decimal, Decimal, std::int16_t, const char*>{
           {{1}, {8, -3}, 0, "125"},
           {{5}, {2}, 0, "3"},  // halves go away from zero
           {{-5}, {2}, 0, "-3"},
           {{249999999, -8}, {1}, 0, "2"},
           {{2}, {3}, 4, "0.6667"},
           {{kLeast}, {-2}, 0, "4611686018427387904"},
           {{1}, {kMost, 1000000}, 0, "0"},
           {{kMost}, {1, -1}, 0, "92233720368547758070"},
           {{kMost}, {3, -1}, 0, "30744573456182586020"},  // 30744573456182586023.3
           {{1}, {1, -1000000}, 0, "1e1000000"},
           {{kMost, 2147483647}, {1, -40}, 0, "-3"},  // overflow
           {{1}, {0, 5}, 0, "-4"}                     // division by zero
       }) {
    EXPECT_EQ(left.dividing(right, Rounding(digits)).description(), quotient);
  }
}

}  // namespace
}  // namespace mrziphoto

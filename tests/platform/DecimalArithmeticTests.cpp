#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include <MRZiPhoto/platform/Decimal.h>
#include <MRZiPhoto/platform/NSDecimalNumberBehaviors.h>

namespace mrziphoto {
namespace {

TEST(DecimalArithmetic, TakesTheShortestNumberThatReadsBackAsTheDouble) {
  struct Case {
    double real;
    const char* decimal;
  };
  for (const Case& each : {Case{0.1, "0.1"},
                           {-2.5, "-2.5"},
                           {1e21, "1000000000000000000000"},
                           {0.008000000119, "0.008000000119"},
                           {-0.0, "0"},
                           {std::numeric_limits<double>::infinity(), "0"},
                           {std::nan(""), "0"}}) {
    EXPECT_EQ(Decimal::fromDouble(each.real).description(), each.decimal);
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
  struct Case {
    Decimal left;
    Decimal right;
    std::int16_t digits;
    const char* quotient;
  };
  for (const Case& each : {
           Case{{1}, {8, -3}, 0, "125"},
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
           {{1}, {0, 5}, 0, "-4"},                    // division by zero
       }) {
    EXPECT_EQ(each.left.dividing(each.right, Rounding(each.digits)).description(), each.quotient);
  }
}

}  // namespace
}  // namespace mrziphoto

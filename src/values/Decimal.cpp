#include "Decimal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "detail/Text.h"

namespace mrziphoto {
namespace {

using Wide = unsigned __int128;

// Keeps damaged files from filling the memory.
constexpr std::int64_t kMostZeros = 400;

Wide magnitude(std::int64_t value) {
  const auto bits = static_cast<std::uint64_t>(value);
  return value < 0 ? 0 - bits : bits;
}

/// Multiplies by ten, `times` times or as often as the product fits; answers how many times were
/// left.
std::int64_t shiftLeft(Wide& number, std::int64_t times) {
  for (; times > 0 && number <= std::numeric_limits<Wide>::max() / 10; --times) {
    number *= 10;
  }
  return std::max<std::int64_t>(times, 0);
}

Wide roundedQuotient(Wide numerator, Wide denominator) {
  const Wide remainder = numerator % denominator;
  return numerator / denominator + (remainder >= denominator - remainder ? 1U : 0U);
}

}  // namespace

Decimal Decimal::fromDouble(double value) {
  if (!std::isfinite(value)) {
    return {};
  }
  std::array<char, 32> buffer{};
  const char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                  std::chars_format::scientific)
                        .ptr;
  const std::string_view written(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
  const std::string_view digits = written.substr(0, written.find('e'));
  Decimal result;
  const char* exponent = digits.data() + digits.size() + 1;
  std::from_chars(exponent + (*exponent == '+' ? 1 : 0), end, result.exponent);
  bool isBehindPoint = false;
  for (const char digit : digits) {
    if (text::isDigit(digit)) {
      result.mantissa = result.mantissa * 10 + (digit - '0');
      result.exponent -= isBehindPoint ? 1 : 0;
    }
    isBehindPoint = isBehindPoint || digit == '.';
  }
  result.mantissa *= value < 0 ? -1 : 1;
  return result.normalized();
}

double Decimal::doubleValue() const {
  // Through the text, which is rounded once; powers of ten would round twice.
  const std::string text = std::to_string(mantissa) + 'e' + std::to_string(exponent);
  double result = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), result);
  if (read.ec == std::errc::result_out_of_range && exponent > 0) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    return mantissa < 0 ? -kInfinity : kInfinity;
  }
  return result;
}

std::string Decimal::description() const {
  const Decimal number = normalized();
  const bool negative = number.mantissa < 0;
  std::string digits = std::to_string(number.mantissa).substr(negative ? 1 : 0);
  if (std::abs(static_cast<std::int64_t>(number.exponent)) > kMostZeros) {
    digits += 'e' + std::to_string(number.exponent);
  } else if (number.exponent >= 0) {
    digits.append(static_cast<std::size_t>(number.exponent), '0');
  } else {
    const auto places = static_cast<std::size_t>(-static_cast<std::int64_t>(number.exponent));
    if (digits.size() <= places) {
      digits.insert(0, places + 1 - digits.size(), '0');
    }
    digits.insert(digits.size() - places, 1, '.');
  }
  return (negative ? "-" : "") + digits;
}

Decimal Decimal::normalized() const {
  if (mantissa == 0) {
    return {};
  }
  Decimal result = *this;
  while (result.mantissa % 10 == 0 && result.exponent < std::numeric_limits<std::int32_t>::max()) {
    result.mantissa /= 10;
    ++result.exponent;
  }
  return result;
}

Decimal Decimal::dividing(const Decimal& divisor, const NSDecimalNumberBehaviors& behaviors) const {
  const auto fail = [&](NSCalculationError error) {
    return behaviors.exceptionDuringOperationErrorLeftOperandRightOperand("dividing", error, *this,
                                                                          divisor);
  };
  const Decimal left = normalized();
  const Decimal right = divisor.normalized();
  if (right.mantissa == 0) {
    return fail(NSCalculationError::divideByZero);
  }
  if (left.mantissa == 0) {
    return {};
  }
  Wide numerator = magnitude(left.mantissa);
  Wide denominator = magnitude(right.mantissa);
  const std::int64_t places =
      static_cast<std::int64_t>(left.exponent) - right.exponent + behaviors.scale();
  // A denominator without room means a quotient far below one half.
  if (shiftLeft(denominator, -places) > 0) {
    return {};
  }
  // Where a mantissa has no room for all digits of the quotient, the last ones become zeros.
  std::int64_t zeros = shiftLeft(numerator, places);
  Wide quotient = roundedQuotient(numerator, denominator);
  while (quotient > static_cast<Wide>(std::numeric_limits<std::int64_t>::max())) {
    ++zeros;
    denominator *= 10;
    quotient = roundedQuotient(numerator, denominator);
  }
  const std::int64_t resultExponent = zeros - behaviors.scale();
  if (resultExponent > std::numeric_limits<std::int32_t>::max()) {
    return fail(NSCalculationError::overflow);
  }
  const auto whole = static_cast<std::int64_t>(quotient);
  const bool isNegative = (left.mantissa < 0) != (right.mantissa < 0);
  return {isNegative ? -whole : whole, static_cast<std::int32_t>(resultExponent)};
}

bool Decimal::operator==(const Decimal& other) const {
  const Decimal a = normalized();
  const Decimal b = other.normalized();
  return a.mantissa == b.mantissa && a.exponent == b.exponent;
}

}  // namespace mrziphoto

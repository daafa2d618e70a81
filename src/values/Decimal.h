#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Export.h"

namespace mrziphoto {

class NSDecimalNumberBehaviors;

/// An exact decimal number, mantissa × 10^exponent.
struct MRZIPHOTO_EXPORT Decimal {
  std::int64_t mantissa = 0;
  std::int32_t exponent = 0;

  /// The decimal number with the fewest digits, at most 17, that reads back as `value`; 0 for an
  /// infinite value and for one that is no number.
  static Decimal fromDouble(double value);

  [[nodiscard]] double doubleValue() const;
  /// Plain decimal digits: "2.8", "0.03", "100"; with more than 400 zeros "1e401".
  [[nodiscard]] std::string description() const;
  /// The same number without trailing zeros in its mantissa; equal numbers have one such form.
  [[nodiscard]] Decimal normalized() const;
  /// The quotient, rounded once: as `behaviors` says, or to the 18 or 19 digits that a mantissa can
  /// hold. Fails on division by zero and when the quotient is beyond all exponents.
  [[nodiscard]] Decimal dividing(const Decimal& divisor,
                                 const NSDecimalNumberBehaviors& behaviors) const;
  /// Equal as numbers: 28 × 10^-1 equals 280 × 10^-2.
  bool operator==(const Decimal& other) const;
};

/// How a decimal result is rounded: to the nearest value, halves away from zero.
enum class NSRoundingMode : std::uint8_t { plain = 0 };

/// What may go wrong in a calculation with decimal numbers.
enum class NSCalculationError : std::uint8_t { overflow = 3, divideByZero = 4 };

/// How a calculation with decimal numbers rounds, and what it answers when it fails.
class MRZIPHOTO_EXPORT NSDecimalNumberBehaviors {
 public:
  NSDecimalNumberBehaviors() = default;
  NSDecimalNumberBehaviors(const NSDecimalNumberBehaviors&) = delete;
  NSDecimalNumberBehaviors& operator=(const NSDecimalNumberBehaviors&) = delete;
  virtual ~NSDecimalNumberBehaviors() = default;

  [[nodiscard]] virtual NSRoundingMode roundingMode() const = 0;
  /// The number of digits that a result keeps after the decimal point.
  [[nodiscard]] virtual std::int16_t scale() const = 0;
  /// What a failed calculation answers. May throw instead.
  [[nodiscard]] virtual Decimal exceptionDuringOperationErrorLeftOperandRightOperand(
      std::string_view operation, NSCalculationError error, const Decimal& leftOperand,
      const Decimal& rightOperand) const = 0;
};

}  // namespace mrziphoto

#pragma once

#include <cstdint>
#include <string_view>

#include "Decimal.h"
#include "Export.h"

namespace mrziphoto {

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

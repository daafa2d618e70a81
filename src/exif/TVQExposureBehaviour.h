#pragma once

#include <cstdint>
#include <string_view>

#include "../values/Decimal.h"
#include "../values/Export.h"
#include "../values/NSDecimalNumberBehaviors.h"
#include "../values/Object.h"

namespace mrziphoto {

/// How exposure times are calculated: whole numbers, rounded plainly, and 0 where that fails.
class MRZIPHOTO_EXPORT TVQExposureBehaviour final : public Object, public NSDecimalNumberBehaviors {
 public:
  static const Class kClass;

  /// The shared instance, which is never freed.
  static Ref<TVQExposureBehaviour> exposureBehaviour();

  [[nodiscard]] NSRoundingMode roundingMode() const override { return NSRoundingMode::plain; }
  [[nodiscard]] std::int16_t scale() const override { return 0; }
  /// 0, whatever went wrong.
  [[nodiscard]] Decimal exceptionDuringOperationErrorLeftOperandRightOperand(
      std::string_view operation, NSCalculationError error, const Decimal& leftOperand,
      const Decimal& rightOperand) const override;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

}  // namespace mrziphoto

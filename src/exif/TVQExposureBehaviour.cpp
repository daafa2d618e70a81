#include "TVQiPhotoUserData.h"

namespace mrziphoto {

const Class TVQExposureBehaviour::kClass{"TVQExposureBehaviour"};

Ref<TVQExposureBehaviour> TVQExposureBehaviour::exposureBehaviour() {
  static TVQExposureBehaviour* const kShared = new TVQExposureBehaviour;
  return kShared;
}

Decimal TVQExposureBehaviour::exceptionDuringOperationErrorLeftOperandRightOperand(
    std::string_view /*operation*/, NSCalculationError /*error*/, const Decimal& /*leftOperand*/,
    const Decimal& /*rightOperand*/) const {
  return {};
}

}  // namespace mrziphoto

#include <bit>

#include "../values/detail/NumberTypes.h"
#include "ArchiveDocument.h"

namespace mrziphoto {

bool ArchiveItem::isUnsigned() const {
  const detail::IntegerType* integerType = detail::integerType(type);
  return integerType != nullptr && !integerType->isSigned;
}

double ArchiveItem::real() const {
  if (kind == Kind::integer) {
    return static_cast<double>(integer());
  }
  return type == 'f' ? static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(number)))
                     : std::bit_cast<double>(number);
}

}  // namespace mrziphoto

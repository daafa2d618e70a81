#include "detail/FourCharacterCode.h"

#include "../values/detail/Text.h"

namespace mrziphoto {

std::string fourCharacterText(std::uint32_t code) {
  std::string result = "'";
  for (const unsigned shift : {24U, 16U, 8U, 0U}) {
    text::appendUtf8(result, code >> shift & 0xFFU);
  }
  return result + '\'';
}

}  // namespace mrziphoto

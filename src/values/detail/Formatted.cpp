#include "Formatted.h"

#include <iterator>

#include "Description.h"
#include "Text.h"

namespace mrziphoto::detail {

std::string formattedArguments(fmt::string_view text, fmt::format_args arguments) {
  const DescriptionBudget budget;
  std::string result;
  fmt::vformat_to(std::back_inserter(result), text, arguments);
  return text::isUtf8(result) ? result : text::repairedUtf8(result);
}

}  // namespace mrziphoto::detail

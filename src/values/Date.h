#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Export.h"

namespace mrziphoto {

/// An instant: seconds, with fraction, since 2001-01-01 00:00:00 UTC.
struct MRZIPHOTO_EXPORT Date {
  double secondsSinceReferenceDate = 0;

  /// The present instant.
  static Date now();
  /// Reads "YYYY-MM-DDThh:mm:ssZ", as property lists write dates; nothing for other texts and for
  /// days and times that do not exist.
  static std::optional<Date> fromIso8601(std::string_view text);

  /// "YYYY-MM-DDThh:mm:ssZ", with the fraction of the second when there is one (at most nine
  /// digits); nothing outside the years 1 to 9999.
  [[nodiscard]] std::optional<std::string> iso8601() const;
  /// "YYYY-MM-DD hh:mm:ss +0000", always in UTC, so that it does not depend on where it is printed.
  [[nodiscard]] std::string description() const;

  auto operator<=>(const Date&) const = default;
};

}  // namespace mrziphoto

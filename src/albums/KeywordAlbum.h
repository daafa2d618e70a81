#pragma once

#include "Album.h"

namespace mrziphoto {

/// The photos that bear a keyword.
class MRZIPHOTO_EXPORT KeywordAlbum final : public Album {
 public:
  static const AlbumKind kClass;

  /// The comments of the roll record of the album's own key, which each call logs.
  [[nodiscard]] std::optional<std::string> comments() const override;
  /// The present instant, at every call.
  [[nodiscard]] std::optional<Date> date() const override { return Date::now(); }
  [[nodiscard]] std::optional<Date> archiveDate() const override { return Date::now(); }

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;
};

}  // namespace mrziphoto

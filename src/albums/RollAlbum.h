#pragma once

#include "Album.h"

namespace mrziphoto {

/// The photos of one film roll. Its name, comments and dates are those of the roll record that the
/// database finds for the album's key; where there is none, the album's own.
///
/// From album data it also takes "RollName", which wins over "AlbumName", and
/// "RollDateAsTimerInterval", which becomes its modification date.
class MRZIPHOTO_EXPORT RollAlbum final : public Album {
 public:
  static const AlbumKind kClass;

  /// The roll record, looked up anew at every call; nothing without a database.
  [[nodiscard]] Ref<ImageRecRef> _rollRecRef() const;
  [[nodiscard]] std::optional<std::string> albumName() const override;
  [[nodiscard]] std::optional<std::string> comments() const override;
  [[nodiscard]] std::optional<Date> date() const override;
  [[nodiscard]] std::optional<Date> archiveDate() const override;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

  static constexpr std::string_view kRollName = "RollName";
  static constexpr std::string_view kRollDateAsTimerInterval = "RollDateAsTimerInterval";

 protected:
  void takeAlbumData(const Dictionary& albumData) override;
};

}  // namespace mrziphoto

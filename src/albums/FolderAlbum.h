#pragma once

#include "Album.h"

namespace mrziphoto {

/// A folder of albums.
class MRZIPHOTO_EXPORT FolderAlbum final : public Album {
 public:
  static const AlbumKind kClass;

  /// The plain albums in the folder and, in their place, those of the folders in it; all other
  /// kinds are left out, and so is a folder that stands there a second time. A new list at every
  /// call.
  [[nodiscard]] List<Album> albums() const;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;
};

}  // namespace mrziphoto

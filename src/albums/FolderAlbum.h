#pragma once

#include "Album.h"

namespace mrziphoto {

/// A folder of albums.
class MRZIPHOTO_EXPORT FolderAlbum final : public Album {
 public:
  static const AlbumKind kClass;

  /// The plain albums in the folder and, in their place, those of the folders in it, each time that
  /// one stands there; all other kinds are left out, and so is a folder inside itself. A new list
  /// at every call. Where there are more than `Limits::flattenedAlbums`, a log line says that the
  /// list is cut.
  [[nodiscard]] List<Album> albums() const;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;
};

}  // namespace mrziphoto

#pragma once

#include "Album.h"

namespace mrziphoto {

/// Photos in the trash.
class MRZIPHOTO_EXPORT TrashAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

}  // namespace mrziphoto

#pragma once

#include "Album.h"

namespace mrziphoto {

/// Photos that wait for their rotation.
class MRZIPHOTO_EXPORT RotationAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

}  // namespace mrziphoto

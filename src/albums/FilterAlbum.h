#pragma once

#include "Album.h"

namespace mrziphoto {

/// An album that a filter fills.
class MRZIPHOTO_EXPORT FilterAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

}  // namespace mrziphoto

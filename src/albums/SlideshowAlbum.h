#pragma once

#include "Album.h"

namespace mrziphoto {

/// The photos of a slideshow.
class MRZIPHOTO_EXPORT SlideshowAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

}  // namespace mrziphoto

#pragma once

#include "Album.h"

namespace mrziphoto {

/// The photos of a book.
class MRZIPHOTO_EXPORT BookAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

}  // namespace mrziphoto

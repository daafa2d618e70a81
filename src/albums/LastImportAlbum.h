#pragma once

#include "Album.h"

namespace mrziphoto {

/// The photos of the last import; named "Last Import" by default.
class MRZIPHOTO_EXPORT LastImportAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

}  // namespace mrziphoto

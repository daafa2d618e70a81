#pragma once

#include "Album.h"

namespace mrziphoto {

/// An album whose photos iPhoto works out anew; reading one from an archive logs its description.
class MRZIPHOTO_EXPORT DynamicAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  void initWithCoder(NSUnarchiver& coder) override;
};

}  // namespace mrziphoto

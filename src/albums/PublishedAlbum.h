#pragma once

#include "Album.h"

namespace mrziphoto {

/// An album that was published on the web.
class MRZIPHOTO_EXPORT PublishedAlbum final : public Album {
 public:
  static const AlbumKind kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }

 protected:
  void logNewerVersion(const Class& olderClass, const NSUnarchiver& coder,
                       std::uint32_t version) const override;
};

}  // namespace mrziphoto

#include "../archive/NSUnarchiver.h"
#include "../values/Log.h"
#include "AlbumKinds.h"

namespace mrziphoto {

void PublishedAlbum::logNewerVersion(const Class& olderClass, const NSUnarchiver& coder,
                                     std::uint32_t version) const {
  if (&olderClass != &kClass) {
    Album::logNewerVersion(olderClass, coder, version);
    return;
  }
  log("%@ version %u isKeyed = %d", className(), version,
      NSUnarchiver::allowsKeyedCoding() ? 1 : 0);
}

}  // namespace mrziphoto

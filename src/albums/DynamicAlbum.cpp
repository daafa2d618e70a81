#include "../values/Log.h"
#include "AlbumKinds.h"

namespace mrziphoto {

void DynamicAlbum::initWithCoder(NSUnarchiver& coder) {
  Album::initWithCoder(coder);
  log("%@ %@", className(), description());
}

}  // namespace mrziphoto

#include "DynamicAlbum.h"

#include "../platform/Log.h"

namespace mrziphoto {

void DynamicAlbum::initWithCoder(NSUnarchiver& coder) {
  Album::initWithCoder(coder);
  log("%@ %@", className(), description());
}

}  // namespace mrziphoto

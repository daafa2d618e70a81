#include "DynamicAlbum.h"

#include "../values/Log.h"

namespace mrziphoto {

void DynamicAlbum::initWithCoder(NSUnarchiver& coder) {
  Album::initWithCoder(coder);
  log("%@ %@", className(), description());
}

}  // namespace mrziphoto

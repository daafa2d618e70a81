#include <array>

#include "../albums/Album.h"
#include "../albums/AlbumKinds.h"
#include "../albums/Keyword.h"
#include "../directories/TVQiPhotoDirectories.h"
#include "../photos/ImageRec.h"
#include "../photos/ImageRecRef.h"
#include "../photos/Key.h"
#include "../values/Object.h"

namespace mrziphoto {
namespace {

constexpr std::array kArchivedClasses{
    &Key::kClass,         &ImageRefKey::kClass, &ImageRec::kClass,     &AttributeMgr::kClass,
    &ImageSource::kClass, &DBSource::kClass,    &DBCopySource::kClass, &ImageRecRef::kClass,
    &Keyword::kClass,     &KeywordMgr::kClass,  &KeyMgr::kClass,       &Filter::kClass,
    &Book::kClass,        &Page::kClass,        &DirectoryRec::kClass};

/// Archives name their classes; they are known from the moment the library is loaded.
[[maybe_unused]] const bool registered = [] {
  for (const Class* each : kArchivedClasses) {
    ClassRegistry::add(*each);
  }
  for (const AlbumKind* kind : albumKinds()) {
    ClassRegistry::add(*kind);
  }
  return true;
}();

}  // namespace
}  // namespace mrziphoto

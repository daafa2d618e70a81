#include <array>

#include "../albums/Album.h"
#include "../albums/Book.h"
#include "../albums/Filter.h"
#include "../albums/KeyMgr.h"
#include "../albums/Keyword.h"
#include "../albums/KeywordMgr.h"
#include "../albums/Page.h"
#include "../directories/DirectoryRec.h"
#include "../photos/AttributeMgr.h"
#include "../photos/DBCopySource.h"
#include "../photos/DBSource.h"
#include "../photos/ImageRec.h"
#include "../photos/ImageRecRef.h"
#include "../photos/ImageRefKey.h"
#include "../photos/Key.h"
#include "../values/ClassRegistry.h"

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

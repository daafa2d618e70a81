#include "FolderAlbum.h"

#include <unordered_set>

#include "../platform/KeyValue.h"

namespace mrziphoto {
namespace {

// Deeper than archives nest.
constexpr int kDeepest = 256;

using Folders = std::unordered_set<const FolderAlbum*>;

void appendAlbums(const FolderAlbum& folder, List<Album>& albums, Folders& met, int depth) {
  // Folders of a damaged archive may contain one another, and the same one many times over.
  if (depth > kDeepest || !met.insert(&folder).second) {
    return;
  }
  for (const Ref<Album>& child : folder.children()) {
    if (&child->objectClass() == &Album::kClass) {
      albums.append(child);
    } else if (&child->objectClass() == &FolderAlbum::kClass) {
      appendAlbums(static_cast<const FolderAlbum&>(*child), albums, met, depth + 1);
    }
  }
}

}  // namespace

List<Album> FolderAlbum::albums() const {
  List<Album> albums = List<Album>::makeEmpty();
  Folders met;
  appendAlbums(*this, albums, met, 0);
  return albums;
}

const Accessor* FolderAlbum::accessorNamed(std::string_view name) const {
  static constexpr Accessor kAlbums{"albums", [](const Object& o) {
                                      return static_cast<const FolderAlbum&>(o).albums().value();
                                    }};
  return name == kAlbums.name ? &kAlbums : Album::accessorNamed(name);
}

}  // namespace mrziphoto

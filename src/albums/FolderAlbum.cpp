#include "FolderAlbum.h"

#include "../platform/KeyValue.h"

namespace mrziphoto {
namespace {

// Deeper than archives nest; a folder that was made to contain itself ends here.
constexpr int kDeepest = 256;

void appendAlbums(const FolderAlbum& folder, List<Album>& albums, int depth) {
  for (const Ref<Album>& child : folder.children()) {
    if (&child->objectClass() == &Album::kClass) {
      albums.append(child);
    } else if (&child->objectClass() == &FolderAlbum::kClass && depth < kDeepest) {
      appendAlbums(static_cast<const FolderAlbum&>(*child), albums, depth + 1);
    }
  }
}

}  // namespace

List<Album> FolderAlbum::albums() const {
  List<Album> albums = List<Album>::makeEmpty();
  appendAlbums(*this, albums, 0);
  return albums;
}

const Accessor* FolderAlbum::accessorNamed(std::string_view name) const {
  static constexpr Accessor kAlbums{"albums", [](const Object& o) {
                                      return static_cast<const FolderAlbum&>(o).albums().value();
                                    }};
  return name == kAlbums.name ? &kAlbums : Album::accessorNamed(name);
}

}  // namespace mrziphoto

#include <algorithm>
#include <array>
#include <vector>

#include "../values/Limits.h"
#include "../values/Log.h"
#include "../values/detail/KeyValue.h"
#include "AlbumKinds.h"

namespace mrziphoto {
namespace {

/// The walk over a folder and the folders in it.
class Flattening {
 public:
  /// Lists the plain albums of the folder, and of those in it. False when there are too many.
  bool add(const FolderAlbum& folder) {
    // A host, or a damaged archive, may put a folder into itself.
    if (std::ranges::find(_around, &folder) != _around.end()) {
      return true;
    }
    _around.push_back(&folder);
    for (const Ref<Album>& child : folder.children()) {
      if (++_met > Limits::current().flattenedAlbums ||
          _around.size() > Limits::current().nesting) {
        return false;
      }
      if (&child->objectClass() == &Album::kClass) {
        albums.push_back(child);
      } else if (&child->objectClass() == &FolderAlbum::kClass &&
                 !add(static_cast<const FolderAlbum&>(*child))) {
        return false;
      }
    }
    _around.pop_back();
    return true;
  }

  List<Album>::Items albums;

 private:
  std::vector<const FolderAlbum*> _around;
  std::size_t _met = 0;
};

}  // namespace

List<Album> FolderAlbum::albums() const {
  Flattening all;
  if (!all.add(*this)) {
    log("%@ '%@' holds too many albums: %u of them are listed", className(), albumName(),
        static_cast<std::uint32_t>(all.albums.size()));
  }
  return List<Album>(std::move(all.albums));
}

const Accessor* FolderAlbum::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      accessor<&FolderAlbum::albums>("albums"),
  };
  return findAccessor<kAccessors>(name, Album::accessorNamed(name));
}

}  // namespace mrziphoto

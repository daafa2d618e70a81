#include <array>
#include <unordered_set>
#include <vector>

#include "../values/detail/KeyValue.h"
#include "AlbumKinds.h"

namespace mrziphoto {

void ArchiveAlbum::addRoll(Ref<RollAlbum> roll) { _rolls.append(std::move(roll)); }

const List<RollAlbum>& ArchiveAlbum::rolls() const {
  if (_rolls.isNothing()) {
    OwnedList<RollAlbum> rolls = OwnedList<RollAlbum>::makeEmpty();
    for (const Ref<Album>& child : children()) {
      rolls.append(child.as<RollAlbum>());
    }
    _rolls = std::move(rolls);
  }
  return _rolls;
}

void ArchiveAlbum::setDatabase(RecordDatabase* database) {
  // An archive album may stand among the children of others many times over, or inside itself.
  std::vector<Ref<ArchiveAlbum>> waiting{Ref<ArchiveAlbum>(this)};
  std::unordered_set<const ArchiveAlbum*> reached{this};
  while (!waiting.empty()) {
    const Ref<ArchiveAlbum> archive = std::move(waiting.back());
    waiting.pop_back();
    archive->Album::setDatabase(database);
    for (const Ref<Album>& child : archive->children()) {
      if (const Ref<ArchiveAlbum> inner = child.as<ArchiveAlbum>()) {
        if (reached.insert(inner.get()).second) {
          waiting.push_back(inner);
        }
      } else {
        child->setDatabase(database);
      }
    }
    for (const Ref<RollAlbum>& roll : archive->_rolls) {
      roll->setDatabase(database);
    }
  }
}

const Accessor* ArchiveAlbum::accessorNamed(std::string_view name) const {
  static constexpr std::array kAccessors{
      accessor<&ArchiveAlbum::rolls>("rolls"),
  };
  return findAccessor<kAccessors>(name, Album::accessorNamed(name));
}

}  // namespace mrziphoto

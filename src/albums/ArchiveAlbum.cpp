#include "ArchiveAlbum.h"

#include "../platform/KeyValue.h"

namespace mrziphoto {

void ArchiveAlbum::addRoll(Ref<RollAlbum> roll) {
  if (_rolls.isNothing()) {
    _rolls = List<RollAlbum>::makeEmpty();
  }
  _rolls.append(std::move(roll));
}

const List<RollAlbum>& ArchiveAlbum::rolls() const {
  if (_rolls.isNothing()) {
    _rolls = List<RollAlbum>::makeEmpty();
    for (const Ref<Album>& child : children()) {
      if (const Ref<RollAlbum> roll = child.as<RollAlbum>()) {
        _rolls.append(roll);
      }
    }
  }
  return _rolls;
}

void ArchiveAlbum::setDatabase(RecordDatabase* database) {
  // Its children have it already; in a damaged archive this album may be one of them.
  const bool isNew = database != this->database();
  Album::setDatabase(database);
  if (isNew) {
    for (const Ref<Album>& child : children()) {
      child->setDatabase(database);
    }
  }
  for (const Ref<RollAlbum>& roll : _rolls) {
    roll->setDatabase(database);
  }
}

const Accessor* ArchiveAlbum::accessorNamed(std::string_view name) const {
  static constexpr Accessor kRolls{
      "rolls", [](const Object& o) { return static_cast<const ArchiveAlbum&>(o).rolls().value(); }};
  return name == kRolls.name ? &kRolls : Album::accessorNamed(name);
}

}  // namespace mrziphoto

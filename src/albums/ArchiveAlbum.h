#pragma once

#include "Album.h"
#include "RollAlbum.h"

namespace mrziphoto {

/// The whole photo library as an album, with its rolls; named "Photo Library" by default.
class MRZIPHOTO_EXPORT ArchiveAlbum final : public Album {
 public:
  static const AlbumKind kClass;

  /// Appends a roll album; an absent one is passed over.
  void addRoll(Ref<RollAlbum> roll);
  /// The roll albums: those added, else those among the children; never nothing. The list is made
  /// once; later changes to the children are not seen.
  [[nodiscard]] const List<RollAlbum>& rolls() const;

  /// Hands the database on to the children and to the rolls.
  void setDatabase(RecordDatabase* database) override;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

 private:
  mutable OwnedList<RollAlbum> _rolls;
};

}  // namespace mrziphoto

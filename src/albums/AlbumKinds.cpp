#include "AlbumKinds.h"

#include <array>

namespace mrziphoto {

// Name, base, highest version read without a log line, maker; default name.
// clang-format off
const AlbumKind Album::kClass          {{"Album",           nullptr,        9, &makeEmpty<Album>},           "Album"};
const AlbumKind ArchiveAlbum::kClass   {{"ArchiveAlbum",    &Album::kClass, 0, &makeEmpty<ArchiveAlbum>},    "Photo Library"};
const AlbumKind LastImportAlbum::kClass{{"LastImportAlbum", &Album::kClass, 0, &makeEmpty<LastImportAlbum>}, "Last Import"};
const AlbumKind RollAlbum::kClass      {{"RollAlbum",       &Album::kClass, 9, &makeEmpty<RollAlbum>},       "Album"};
const AlbumKind RotationAlbum::kClass  {{"RotationAlbum",   &Album::kClass, 9, &makeEmpty<RotationAlbum>},   "Album"};
const AlbumKind TrashAlbum::kClass     {{"TrashAlbum",      &Album::kClass, 0, &makeEmpty<TrashAlbum>},      "Album"};
const AlbumKind FilterAlbum::kClass    {{"FilterAlbum",     &Album::kClass, 0, &makeEmpty<FilterAlbum>},     "Album"};
const AlbumKind KeywordAlbum::kClass   {{"KeywordAlbum",    &Album::kClass, 9, &makeEmpty<KeywordAlbum>},    "Album"};
const AlbumKind DynamicAlbum::kClass   {{"DynamicAlbum",    &Album::kClass, 0, &makeEmpty<DynamicAlbum>},    "Album"};
const AlbumKind BookAlbum::kClass      {{"BookAlbum",       &Album::kClass, 9, &makeEmpty<BookAlbum>},       "Album"};
const AlbumKind SlideshowAlbum::kClass {{"SlideshowAlbum",  &Album::kClass, 9, &makeEmpty<SlideshowAlbum>},  "Album"};
const AlbumKind FolderAlbum::kClass    {{"FolderAlbum",     &Album::kClass, 0, &makeEmpty<FolderAlbum>},     "Album"};
const AlbumKind PublishedAlbum::kClass {{"PublishedAlbum",  &Album::kClass, 1, &makeEmpty<PublishedAlbum>},  "Album"};
// clang-format on

std::span<const AlbumKind* const> albumKinds() {
  static constexpr std::array kKinds{
      &Album::kClass,         &ArchiveAlbum::kClass,   &LastImportAlbum::kClass,
      &RollAlbum::kClass,     &RotationAlbum::kClass,  &TrashAlbum::kClass,
      &FilterAlbum::kClass,   &KeywordAlbum::kClass,   &DynamicAlbum::kClass,
      &BookAlbum::kClass,     &SlideshowAlbum::kClass, &FolderAlbum::kClass,
      &PublishedAlbum::kClass};
  return kKinds;
}

}  // namespace mrziphoto

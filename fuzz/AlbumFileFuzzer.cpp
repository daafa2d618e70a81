#include <cstddef>
#include <cstdint>

#include <MRZiPhoto/albums/AlbumKinds.h>

#include "CatalogueInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mrziphoto;
  setLogSink({});
  const InputFile file({reinterpret_cast<const char*>(data), size});
  if (const Ref<Album> album = Album::albumWithContentsOfFile(file.path())) {
    album->setDatabase(nullptr);
    (void)album->description();
    (void)album->albumName();
    (void)album->photoKeys();
    if (const Ref<FolderAlbum> folder = album.as<FolderAlbum>()) {
      (void)folder->albums();
    }
    if (const Ref<ArchiveAlbum> archive = album.as<ArchiveAlbum>()) {
      (void)archive->rolls();
    }
  }
  return 0;
}

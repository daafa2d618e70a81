// The album section of a coded catalogue.

#include <algorithm>
#include <array>

#include "../albums/AlbumKinds.h"
#include "../archive/NSUnarchiver.h"
#include "../stream/TVQStreamData.h"
#include "../values/NSException.h"
#include "../values/detail/Description.h"
#include "../values/detail/Formatted.h"
#include "TVQiPhotoLibrary.h"
#include "detail/Reading.h"

namespace mrziphoto {
namespace {

/// Counts the albums behind the end marker, which are not taken but may have been meant to be.
template <class Tally>
void countAlbumsBehindEnd(NSUnarchiver& reader, std::uint32_t location, std::size_t size,
                          Tally& albums) {
  try {
    while (reader.cursor() < size) {
      const auto offset = static_cast<std::uint32_t>(location + reader.cursor());
      if (reader.decodeObject().object<Album>()) {
        albums.add(offset);
      }
    }
  } catch (const NSException&) {
    return;  // no archive any more
  }
}

}  // namespace

/// Takes in an album by its exact class; kinds that are not in the table are dropped.
void TVQiPhotoLibrary::takeArchivedAlbum(const Ref<Album>& album) {
  struct Kept {
    const Class* kind;
    void (*take)(TVQiPhotoLibrary& library, const Ref<Album>& album);
  };
  static constexpr auto kAdd = [](TVQiPhotoLibrary& library, const Ref<Album>& added) {
    if (library.hasRoomForAlbum()) {
      library.addAlbum(added);
    }
  };
  static constexpr std::array kKept{
      Kept{&Album::kClass, kAdd},
      Kept{&FilterAlbum::kClass, kAdd},
      Kept{&ArchiveAlbum::kClass,
           [](TVQiPhotoLibrary& library, const Ref<Album>& archive) {
             library._archiveAlbum = archive.as<ArchiveAlbum>();
           }},
      Kept{&FolderAlbum::kClass,
           [](TVQiPhotoLibrary& library, const Ref<Album>& folder) {
             for (const Ref<Album>& inside : folder.as<FolderAlbum>()->albums()) {
               kAdd(library, inside);
             }
           }},
  };
  const auto row = std::ranges::find(kKept, &album->objectClass(), &Kept::kind);
  if (row != kKept.end()) {
    row->take(*this, album);
  }
}

void TVQiPhotoLibrary::_readAlbumDataFromStreamRange(const TVQiPhotoCodedStreamData& stream,
                                                     std::uint32_t location, std::uint32_t length,
                                                     Reading& reading) {
  const Data bytes = stream.dataCutToRange(location, length);
  const auto reader = NSUnarchiver::initForReadingWithData(bytes);
  if (!reader) {
    throw NSException(
        kNSInvalidArgumentException,
        detail::formatted("the album section at offset {} holds no archive", location), location);
  }
  // A number of unknown meaning.
  static_cast<void>(reader->decodeValueOfObjCType("i"));
  while (reader->cursor() < bytes.size()) {
    const Value object = reader->decodeObject();
    if (const Ref<Album> album = object.object<Album>()) {
      takeArchivedAlbum(album);
    } else if (object.isNumber() && object.intValue() == 0) {
      countAlbumsBehindEnd(*reader, location, bytes.size(), reading.albumsBehindEnd);
      return;
    } else {
      NSException::raise(
          kNSInternalInconsistencyException,
          detail::formatted("Unexpected object {} {} while loading album data", object.className(),
                            object.isNothing() ? std::string() : describeBriefly(object)));
    }
  }
}

}  // namespace mrziphoto

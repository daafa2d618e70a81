// What "AlbumData.xml" adds to a catalogue.

#include <array>

#include "../albumdata/detail/AlbumData.h"
#include "../albums/AlbumKinds.h"
#include "../files/Path.h"
#include "../values/Dictionary.h"
#include "../values/Log.h"
#include "../values/detail/Formatted.h"
#include "../values/detail/Generation.h"
#include "TVQiPhotoLibrary.h"
#include "detail/KeywordStore.h"

namespace mrziphoto {
namespace {

/// Calls `use` for every dictionary in an array of them, which are made one at a time.
template <class Use>
void forEachDictionary(const Fact& list, Use&& use) {
  list.forEachElement([&use](const Fact& element) {
    if (element.kind() == FactKind::dictionary) {
      use(*element.value().dictionary());
    }
  });
}

}  // namespace

void TVQiPhotoLibrary::loadFromXML(const std::string& folder) {
  const AlbumData data =
      AlbumData::read(path::join(folder, library_file::kAlbumData), &_albumDataFailure);
  // Beside a catalogue of its own, album data is a copy that need not be there.
  if (_albumDataFailure && (_albumDataFailure->cause != FileFailure::Cause::notThere ||
                            !Generation::of(_version).isCoded)) {
    _notices.push_back({_albumDataFailure->sentence(), _albumDataFailure->path, {}});
  }

  takeArchivePath(data.archivePath.value().text(), folder);
  loadImageRecords(data.photos);
  if (_photoImageRecRefs.isNothing() && data.photos->size() != 0) {
    noticeStandIn("photos");
  }

  struct StandIn {
    std::string_view what;
    Fact AlbumData::*entry;
    std::uint32_t (TVQiPhotoLibrary::*count)() const;
    void (TVQiPhotoLibrary::*load)(const Fact& list);
  };
  static constexpr std::array kStandIns{
      StandIn{"albums", &AlbumData::albums, &TVQiPhotoLibrary::numberOfAlbums,
              &TVQiPhotoLibrary::loadAlbums},
      StandIn{"rolls", &AlbumData::rolls, &TVQiPhotoLibrary::numberOfRolls,
              &TVQiPhotoLibrary::loadRolls},
      StandIn{"keywords", &AlbumData::keywords, &TVQiPhotoLibrary::numberOfKeywords,
              &TVQiPhotoLibrary::loadKeywords},
  };
  for (const StandIn& each : kStandIns) {
    const Fact& list = data.*each.entry;
    if ((this->*each.count)() == 0) {
      if (list.holdsAny()) {
        noticeStandIn(each.what);
      }
      (this->*each.load)(list);
    }
  }
  noticeLeftOut(path::join(folder, library_file::kAlbumData));
}

/// What album data says may be older or less than what a damaged catalogue has lost.
void TVQiPhotoLibrary::noticeStandIn(std::string_view what) {
  if (!_notices.empty()) {
    _notices.push_back(
        {detail::formatted(
             "the {} are those of '{}': none could be read from the damaged "
             "catalogue '{}'",
             what, path::join(path::withoutLastComponent(_loadedFrom), library_file::kAlbumData),
             _loadedFrom),
         _loadedFrom,
         {}});
  }
}

void TVQiPhotoLibrary::takeArchivePath(const std::optional<std::string>& recorded,
                                       const std::string& folder) {
  _lastArchivePath = recorded;
  if (recorded != folder) {
    log("Using %@ instead of %@ as the archive path", folder, recorded);
  }
  _archivePath = folder;
}

void TVQiPhotoLibrary::loadImageRecords(const Ref<PhotoTable>& photos) {
  List<ImageRecRef>::Items records;
  records.reserve(photos->size());
  for (std::uint32_t row = 0; row < photos->size(); ++row) {
    records.push_back(ImageRecRef::init());
    records.back()->setRow(photos, row);
  }
  _imageRecRefs = OwnedList<ImageRecRef>(std::move(records));
}

void TVQiPhotoLibrary::loadAlbums(const Fact& listOfAlbums) {
  forEachDictionary(listOfAlbums, [this](const Dictionary& albumData) {
    if (hasRoomForAlbum()) {
      addAlbum(Album::initWithDictionary<Album>(albumData));
    }
  });
}

void TVQiPhotoLibrary::loadRolls(const Fact& listOfRolls) {
  _archiveAlbum = Album::init<ArchiveAlbum>();
  forEachDictionary(listOfRolls, [this, taken = 0U](const Dictionary& albumData) mutable {
    if (hasRoomForRoll(taken)) {
      addRoll(Album::initWithDictionary<RollAlbum>(albumData));
      ++taken;
    }
  });
}

void TVQiPhotoLibrary::loadKeywords(const Fact& listOfKeywords) {
  *_keywords = KeywordStore::emptyList();
  listOfKeywords.forEachEntry([&](std::uint32_t name, const Fact& keyword) {
    const std::string key(listOfKeywords.table().name(name).text());
    addKeyword(Keyword::initWithDictionary(Dictionary{
        {Keyword::kString, keyword.value()}, {Keyword::kKey, Key::initWithKeyString(key)}}));
  });
}

}  // namespace mrziphoto

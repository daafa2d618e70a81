// What "AlbumData.xml" adds to a catalogue.

#include <array>

#include "../albums/ArchiveAlbum.h"
#include "../platform/Array.h"
#include "../platform/Dictionary.h"
#include "../platform/FileManager.h"
#include "../platform/Log.h"
#include "../platform/Path.h"
#include "../platform/PropertyList.h"
#include "TVQiPhotoLibrary.h"
#include "TVQiPhotoLibraryIndexesPrivate.h"

namespace mrziphoto {
namespace {

constexpr std::string_view kMasterImageList = "Master Image List";
constexpr std::string_view kArchivePath = "Archive Path";
constexpr std::string_view kListOfAlbums = "List of Albums";
constexpr std::string_view kListOfRolls = "List of Rolls";
constexpr std::string_view kListOfKeywords = "List of Keywords";

/// Calls `use` for every dictionary in an array of them.
template <class Use>
void forEachDictionary(const Value& list, Use&& use) {
  if (const Ref<Array> array = list.array()) {
    for (const Value& element : *array) {
      if (const Ref<Dictionary> dictionary = element.dictionary()) {
        use(*dictionary);
      }
    }
  }
}

}  // namespace

void TVQiPhotoLibrary::loadFromXML(const std::string& folder) {
  FileFailure failure;
  const std::optional<Data> bytes =
      FileManager::contents(path::join(folder, kAlbumDataFile), &failure);
  if (!bytes) {
    // Beside a catalogue of its own, album data is a copy that need not be there.
    if (failure.cause != FileFailure::Cause::notThere || _version > kLastCodedVersion) {
      _notices.push_back({failure.sentence(), failure.path, {}});
    }
    _albumDataFailure = std::move(failure);
  }
  _xmlAlbumData = bytes ? propertyListFromData(*bytes) : Value();
  const Ref<Dictionary> top = _xmlAlbumData.dictionary();
  const auto entry = [&top](std::string_view name) { return top ? top->get(name) : Value(); };

  takeArchivePath(entry(kArchivePath).text(), folder);
  loadImageRecords(entry(kMasterImageList));
  if (_photoImageRecRefs.isNothing()) {
    noticeStandIn("photos", entry(kMasterImageList));
  }

  struct StandIn {
    std::string_view what;
    std::string_view entry;
    std::uint32_t (TVQiPhotoLibrary::*count)() const;
    void (TVQiPhotoLibrary::*load)(const Value& list);
  };
  static constexpr std::array kStandIns{
      StandIn{"albums", kListOfAlbums, &TVQiPhotoLibrary::numberOfAlbums,
              &TVQiPhotoLibrary::loadAlbums},
      StandIn{"rolls", kListOfRolls, &TVQiPhotoLibrary::numberOfRolls,
              &TVQiPhotoLibrary::loadRolls},
      StandIn{"keywords", kListOfKeywords, &TVQiPhotoLibrary::numberOfKeywords,
              &TVQiPhotoLibrary::loadKeywords},
  };
  for (const StandIn& each : kStandIns) {
    if ((this->*each.count)() == 0) {
      noticeStandIn(each.what, entry(each.entry));
      (this->*each.load)(entry(each.entry));
    }
  }
  noticeLeftOut(path::join(folder, kAlbumDataFile));
}

/// What album data says may be older or less than what a damaged catalogue has lost.
void TVQiPhotoLibrary::noticeStandIn(std::string_view what, const Value& list) {
  const Ref<Array> array = list.array();
  const Ref<Dictionary> dictionary = list.dictionary();
  const bool isEmpty = !(array && !array->empty()) && !(dictionary && !dictionary->empty());
  if (!_notices.empty() && !isEmpty) {
    _notices.push_back(
        {format("the %@ are those of '%@': none could be read from the damaged "
                "catalogue '%@'",
                what, path::join(path::withoutLastComponent(_loadedFrom), kAlbumDataFile),
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

void TVQiPhotoLibrary::loadImageRecords(const Value& masterImageList) {
  const Ref<Dictionary> images = masterImageList.dictionary();
  List<ImageRecRef>::Items records;
  if (images) {
    records.reserve(images->size());
    for (const Dictionary::Entry& image : *images) {
      const Ref<ImageRecRef> record = ImageRecRef::init();
      record->setImageInfoForKeyString(image.value.dictionary(), image.key.text());
      records.push_back(record);
    }
  }
  _imageRecRefs = OwnedList<ImageRecRef>(std::move(records));
}

void TVQiPhotoLibrary::loadAlbums(const Value& listOfAlbums) {
  forEachDictionary(listOfAlbums, [this](const Dictionary& albumData) {
    if (hasRoomForAlbum()) {
      addAlbum(Album::initWithDictionary<Album>(albumData));
    }
  });
}

void TVQiPhotoLibrary::loadRolls(const Value& listOfRolls) {
  _archiveAlbum = Album::init<ArchiveAlbum>();
  forEachDictionary(listOfRolls, [this](const Dictionary& albumData) {
    if (hasRoomForRoll()) {
      addRoll(Album::initWithDictionary<RollAlbum>(albumData));
    }
  });
}

void TVQiPhotoLibrary::loadKeywords(const Value& listOfKeywords) {
  _keywords = {};
  _keywordList = OwnedList<Keyword>::makeEmpty();
  _keywordIndex.reset();
  if (const Ref<Dictionary> keywords = listOfKeywords.dictionary()) {
    for (const Dictionary::Entry& keyword : *keywords) {
      addKeyword(Keyword::initWithDictionary(
          Dictionary{{Keyword::kString, keyword.value},
                     {Keyword::kKey, Key::initWithKeyString(keyword.key.text())}}));
    }
  }
}

}  // namespace mrziphoto

// The image records of a coded catalogue.

#include "../albums/KeywordMgr.h"
#include "../stream/TVQiPhotoCodedStreamData.h"
#include "CodedImageRecordsPrivate.h"
#include "TVQiPhotoLibrary.h"
#include "TVQiPhotoLibraryReadingPrivate.h"

namespace mrziphoto {
namespace {

// Up to this version the photos themselves come from other files.
constexpr std::int32_t kLastVersionWithoutPhotos = 24;

OwnedList<ImageRecRef>& existing(OwnedList<ImageRecRef>& list) {
  if (list.isNothing()) {
    list = OwnedList<ImageRecRef>::makeEmpty();
  }
  return list;
}

}  // namespace

void TVQiPhotoLibrary::readImageRecords(TVQiPhotoCodedStreamData& stream, Reading& reading) {
  reading.promisedRecords += reading.imageRecordCount;
  reading.countWithoutTable.reset();
  for (std::uint32_t left = reading.imageRecordCount; left > 0; --left) {
    const std::uint32_t position = stream.offsetInData();
    const CodedImageRecords::Record found = CodedImageRecords::pass(stream);
    reading.note(found.state, position);
    OwnedList<ImageRecRef>& all = existing(_imageRecRefs);
    const bool isPhoto = found.rollKey != 0;
    if (isPhoto && _version <= kLastVersionWithoutPhotos) {
      continue;
    }
    Ref<ImageRecRef> record = found.isBlank ? reading.blank : nullptr;
    if (!record) {
      if (!reading.source) {
        reading.source = make<CodedImageRecords>(stream.data(), directory(), _version,
                                                 _keywords.object<KeywordMgr>());
      }
      record = ImageRecRef::init();
      record->setSourceForKey(reading.source, position, found.imageKey);
      if (found.isBlank) {
        reading.blank = record;
      }
    }
    all.append(record);
    existing(isPhoto ? _photoImageRecRefs : _rollImageRecRefs).append(record);
  }
}

}  // namespace mrziphoto

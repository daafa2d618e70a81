// The image records of a coded catalogue.

#include <utility>

#include "../files/Path.h"
#include "../stream/TVQStreamData.h"
#include "TVQiPhotoLibrary.h"
#include "detail/KeywordStore.h"
#include "detail/Reading.h"

namespace mrziphoto {

void TVQiPhotoLibrary::readImageRecords(TVQiPhotoCodedStreamData& stream, Reading& reading) {
  reading.promisedRecords += reading.imageRecordCount;
  reading.countWithoutTable.reset();
  if (!reading.images) {
    reading.images =
        std::make_unique<CodedImageReader>(path::withoutLastComponent(_loadedFrom), _version);
  }
  reading.images->setKeywords(_keywords->manager());
  for (std::uint32_t left = reading.imageRecordCount; left > 0; --left) {
    const std::uint32_t position = stream.offsetInData();
    const CodedImageReader::Record found = reading.images->read(stream);
    reading.note(found.state, position);
    reading.hasReadAny = true;
    if (!found.hasRow) {
      continue;
    }
    Ref<ImageRecRef> record = found.isBlank ? reading.blank : nullptr;
    if (!record) {
      record = ImageRecRef::init();
      record->setRow(reading.images->table(), found.row);
      if (found.isBlank) {
        reading.blank = record;
      }
    }
    (found.isPhoto ? reading.photos : reading.rolls).push_back(record);
    reading.records.push_back(std::move(record));
  }
}

/// Hands the records to the catalogue. Lists for which nothing was read stay unset.
void TVQiPhotoLibrary::takeImageRecords(Reading& reading) {
  if (!reading.records.empty()) {
    // The records' paths lie in it.
    static_cast<void>(directory());
  }
  const auto give = [](OwnedList<ImageRecRef>& list, List<ImageRecRef>::Items& items) {
    if (!items.empty()) {
      list = OwnedList<ImageRecRef>(std::move(items));
    }
  };
  if (reading.hasReadAny) {
    _imageRecRefs = OwnedList<ImageRecRef>(std::move(reading.records));
  }
  give(_photoImageRecRefs, reading.photos);
  give(_rollImageRecRefs, reading.rolls);
}

}  // namespace mrziphoto

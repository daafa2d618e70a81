#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "../albums/KeywordMgr.h"
#include "../photos/ImageRecRef.h"
#include "../photos/RecordSource.h"
#include "../stream/TVQiPhotoCodedStreamData.h"
#include "../values/Data.h"
#include "CodedImageWalkPrivate.h"

namespace mrziphoto {

/// The image records of a coded catalogue. When the catalogue is loaded they are walked and checked
/// only; a photo record gets its stores from a second walk over its one image record, when somebody
/// asks for them.
class CodedImageRecords final : public RecordSource {
 public:
  /// What must be known of a record to file it.
  struct Record {
    std::uint32_t imageKey = 0;
    std::int32_t rollKey = 0;  // 0 for a record that stands for a roll
    bool isBlank = true;       // nothing that it says is kept
    CodedRecordState state;
  };

  /// The records of a catalogue of that version in `directory`. Their keywords are those of
  /// `keywords` (which may be nothing), the keyword store as it stands where the records do.
  CodedImageRecords(Data catalogue, std::string directory, std::int32_t version,
                    Ref<KeywordMgr> keywords);

  /// Passes and checks the record at the stream's position. Throws NegativeSize, and NSException
  /// for a record that cannot be read.
  static Record pass(TVQiPhotoCodedStreamData& stream);

  [[nodiscard]] RecordStores stores(std::uint32_t position) const override;
  [[nodiscard]] const Class& objectClass() const override;

  class Contents;

 private:
  [[nodiscard]] RecordStores photoStores(Contents& contents) const;
  [[nodiscard]] RecordStores rollStores(Contents& contents) const;
  [[nodiscard]] Value keywordsForKeys(const std::vector<std::int32_t>& keys) const;
  /// The full path of a file whose path the record tells; nothing when it does not.
  [[nodiscard]] Value inDirectory(const Value& file) const;

  Data _catalogue;
  std::string _directory;
  std::int32_t _version;
  Ref<KeywordMgr> _keywords;
};

}  // namespace mrziphoto

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "../../albums/Keyword.h"
#include "../../stream/TVQStreamData.h"
#include "../../table/detail/PhotoTable.h"
#include "CodedFields.h"
#include "CodedItems.h"

namespace mrziphoto {

/// What is odd about an image record that was read to its end.
struct CodedRecordState {
  std::uint32_t code = 0;
  /// False when its fields, or those of a block, end elsewhere than their size says.
  bool fitsItsSize = true;
  /// False when the image-data blocks ended before the one that was announced as the last.
  bool hasAllBlocks = true;
};

/// Reads the image records of a coded catalogue, each once, into the rows of a photo table.
class CodedImageReader {
 public:
  struct Record {
    bool isPhoto = false;  // else it stands for a roll
    bool isBlank = true;   // nothing that it says is kept; all such records have one row
    bool hasRow = false;   // older catalogues leave the photos to other files
    std::uint32_t row = 0;
    CodedRecordState state;
  };

  /// For a catalogue of that version in `directory`.
  CodedImageReader(std::string directory, std::int32_t version);

  /// The keyword store of the records that come next; nothing for none.
  void setKeywords(Ref<KeywordMgr> keywords);
  /// Reads and checks the record at the stream's position. Throws NegativeSize, and NSException
  /// for a record that cannot be read.
  Record read(TVQiPhotoCodedStreamData& stream);
  /// The table with the rows so far.
  [[nodiscard]] const Ref<PhotoTable>& table() const { return _filler.table(); }

 private:
  /// Where a value of the present record lies.
  struct Place {
    std::uint32_t offset;
    std::uint32_t size;
  };

  // The walk over a record.
  void walkRecord();
  void walkField();
  std::uint32_t takeField(const CodedImageField& field);
  std::uint32_t _readImageDataFromStreamLast(std::uint32_t last);
  void walkBlock(std::uint64_t end);
  void take(ImageValue value, CodedRead read);

  // What the record has said.
  [[nodiscard]] bool has(ImageValue value) const;
  [[nodiscard]] std::string_view bytes(ImageValue value) const;
  [[nodiscard]] std::int32_t number(ImageValue value) const;
  /// As UTF-8 in `room`, until that is used again.
  std::optional<std::string_view> text(ImageValue value, std::string& room) const;
  void countBytes();

  // The row.
  std::uint32_t fillBlank();
  void fillPhoto();
  void fillRoll();
  void put(PhotoField field, ImageValue value);
  void putFile(PhotoField field, std::string_view fileInDirectory);
  void putJoined(PhotoField field, std::string_view path);
  void putImageSize();
  void putFileName(std::optional<std::string_view> imageFile);
  void putKeywords();
  std::uint32_t keywordNumber(std::uint32_t key);

  std::string _directory;
  bool _hasStores;
  PhotoTable::Filler _filler;
  Ref<KeywordMgr> _keywords;
  // By key: the number of its keyword in the table, or `kUnknown`.
  FirstIndex<std::uint32_t> _keywordPlaces;
  std::vector<std::uint32_t> _keywordNumbers;
  std::optional<std::uint32_t> _blankRow;
  std::uint64_t _bytesKept = 0;

  TVQiPhotoCodedStreamData* _stream = nullptr;
  CodeSearch<CodedImageField, kCodedImageFields.size()> _fields{kCodedImageFields};
  CodeSearch<CodedBlockField, kCodedBlockFields.size()> _blockFields{kCodedBlockFields};
  std::array<Place, static_cast<std::size_t>(ImageValue::count)> _places;
  std::uint32_t _said = 0;  // a bit for each value that has a place
  std::int32_t _keywordCount = 0;
  Record _record;

  std::string _imageText;
  std::string _otherText;
  std::vector<std::uint32_t> _numbers;
};

}  // namespace mrziphoto

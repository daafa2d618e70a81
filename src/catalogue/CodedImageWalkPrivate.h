#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "../stream/TVQiPhotoCodedStreamData.h"
#include "../values/detail/Formatted.h"
#include "CodedFields.h"

namespace mrziphoto {

/// Thrown where a size below zero leads back to bytes that were read already: nobody knows where
/// the next item begins.
struct NegativeSize {
  std::string item;
  std::uint32_t offset;
  std::int32_t size;

  [[nodiscard]] std::string description() const {
    return detail::formatted("the {} at offset {} has the size {}", item, offset, size);
  }

  /// The size of the item at `offset`, which was just read, unless it is below zero.
  static void refuse(std::string_view kind, std::uint32_t code, std::uint32_t offset,
                     std::int32_t size) {
    if (size < 0) {
      throw NegativeSize{detail::formatted("{} {}", kind, fourCharacterText(code)), offset, size};
    }
  }
};

/// Refuses a size below zero as the typed read of the item would refuse any other size that does
/// not fit. Finds the stream right behind the size word and leaves it there.
inline void refuseNegativeSize(CodedRead read, std::int32_t size,
                               TVQiPhotoCodedStreamData& stream) {
  if (size < 0) {
    stream.raiseUnexpectedCodeSizeExceptionDuring(codedReadKind(read).operation);
  }
}

/// Moves the stream to `bytes` behind `start`; beyond the last offset there is, to the end.
inline void seekBehind(TVQiPhotoCodedStreamData& stream, std::uint32_t start, std::uint64_t bytes) {
  stream.seekToDataOffset(static_cast<std::uint32_t>(
      std::min<std::uint64_t>(start + bytes, std::numeric_limits<std::uint32_t>::max())));
}

/// Finds rows by code. Fields come in much the same order in every record, so the search goes on
/// behind the row that was found last.
template <class Row, std::size_t count>
class CodeSearch {
 public:
  explicit CodeSearch(const std::array<Row, count>& table) : _table(table) {}

  /// The row of that code; nullptr when there is none.
  const Row* find(std::uint32_t code) {
    for (std::size_t tried = 0; tried < count; ++tried) {
      const Row& row = _table[_next];
      _next = _next + 1 < count ? _next + 1 : 0;
      if (row.code == code) {
        return &row;
      }
    }
    return nullptr;
  }

 private:
  const std::array<Row, count>& _table;
  std::size_t _next = 0;
};

/// What is odd about an image record that was walked to its end.
struct CodedRecordState {
  std::uint32_t code = 0;
  /// False when its fields, or those of a block, end elsewhere than their size says.
  bool fitsItsSize = true;
  /// False when the image-data blocks ended before the one that was announced as the last.
  bool hasAllBlocks = true;
};

/// The one walk over an image record: its fields and the image-data blocks behind them. What the
/// record says goes to a `Taker`, which has
///
///     void take(ImageValue value, CodedRead read, TVQiPhotoCodedStreamData& stream);
///     void startImageData();  // forgets what earlier blocks of the record said
///
/// `take` finds the stream at a value's size word and leaves it where the typed read would.
template <class Taker>
class CodedImageWalk {
 public:
  CodedImageWalk(TVQiPhotoCodedStreamData& stream, Taker& taker) : _stream(stream), _taker(taker) {}

  /// Walks the record at the stream's position. A record ends with the first field that begins at
  /// its end or behind it, wherever that field before it has left the stream. Throws NegativeSize,
  /// and NSException where a typed read does.
  CodedRecordState walkRecord() {
    _state = {};
    _keywordCount = 0;
    const std::uint32_t start = _stream.offsetInData();
    _state.code = _stream.readCode();
    const std::int32_t size = _stream.readInt();
    NegativeSize::refuse("photo record", _state.code, start, size);
    const std::uint64_t end = std::uint64_t{start} + 8 + static_cast<std::uint32_t>(size);
    while (!_stream.isAtEndOfData() && _stream.offsetInData() < end) {
      walkField();
    }
    _state.fitsItsSize &= _stream.offsetInData() == end;
    return _state;
  }

 private:
  void walkField() {
    const std::uint32_t start = _stream.offsetInData();
    const std::uint32_t code = _stream.readCode();
    const std::int32_t size = _stream.readInt();
    const CodedImageField* field = _fields.find(code);
    std::uint32_t blockBytes = 0;
    if (field != nullptr) {
      refuseNegativeSize(field->read, size, _stream);
      _stream.seekToDataOffset(start + 4);
      blockBytes = takeField(*field);
    }
    NegativeSize::refuse("field", code, start, size);
    seekBehind(_stream, start, std::uint64_t{8} + static_cast<std::uint32_t>(size) + blockBytes);
  }

  /// Answers how many bytes behind the field belong to it.
  std::uint32_t takeField(const CodedImageField& field) {
    switch (field.keep) {
      case ImageValue::keywordCount:
        _keywordCount = _stream.readCodedInt();
        return 0;
      case ImageValue::keywordKeys:
        // Without a count before them the keys mean nothing.
        if (_keywordCount != 0) {
          _taker.take(field.keep, field.read, _stream);
        }
        return 0;
      case ImageValue::lastBlock: {
        const auto last = static_cast<std::uint32_t>(_stream.readCodedInt());
        _taker.startImageData();
        return _readImageDataFromStreamLast(last);
      }
      default:
        _taker.take(field.keep, field.read, _stream);
        return 0;
    }
  }

  /// Walks the image-data blocks at the stream's position up to the one of number `last`, and
  /// answers how many bytes they take.
  std::uint32_t _readImageDataFromStreamLast(std::uint32_t last) {
    const std::uint32_t firstBlock = _stream.offsetInData();
    for (std::uint32_t number = 0; number < last;) {
      const std::uint32_t start = _stream.offsetInData();
      number = _stream.readCode();
      const std::int32_t size = _stream.readInt();
      if (size < 0) {
        throw NegativeSize{detail::formatted("image-data block {}", number), start, size};
      }
      const std::uint64_t length = std::uint64_t{8} + static_cast<std::uint32_t>(size);
      if (number <= last) {
        walkBlock(start + length);
      } else {
        _state.hasAllBlocks = false;
      }
      seekBehind(_stream, start, length);
    }
    return _stream.offsetInData() - firstBlock;
  }

  void walkBlock(std::uint64_t end) {
    std::int32_t type = 0;
    while (_stream.offsetInData() < end) {
      const CodedBlockField* field = _blockFields.find(_stream.readCode());
      if (field == nullptr) {
        // Nothing is known of such a field, not even that it has a size.
        continue;
      }
      const std::uint32_t sizeWord = _stream.offsetInData();
      refuseNegativeSize(field->read, _stream.readInt(), _stream);
      _stream.seekToDataOffset(sizeWord);
      const ImageValue value = field->keepIn(type);
      if (value == ImageValue::blockType) {
        type = _stream.readCodedInt();
      } else {
        _taker.take(value, field->read, _stream);
      }
    }
    _state.fitsItsSize &= _stream.offsetInData() == end;
  }

  TVQiPhotoCodedStreamData& _stream;
  Taker& _taker;
  CodeSearch<CodedImageField, kCodedImageFields.size()> _fields{kCodedImageFields};
  CodeSearch<CodedBlockField, kCodedBlockFields.size()> _blockFields{kCodedBlockFields};
  std::int32_t _keywordCount = 0;
  CodedRecordState _state;
};

}  // namespace mrziphoto

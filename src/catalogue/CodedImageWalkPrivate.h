#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "../stream/TVQiPhotoCodedStreamData.h"
#include "CodedFields.h"

namespace mrziphoto {

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
  /// its end or behind it, wherever that field before it has left the stream. False when a size
  /// leads back to bytes that were read already.
  bool walkRecord() {
    const std::uint32_t start = _stream.offsetInData();
    static_cast<void>(_stream.readCode());
    const std::int64_t end = std::int64_t{start} + 8 + _stream.readInt();
    _keywordCount = 0;
    while (!_stream.isAtEndOfData() && _stream.offsetInData() < end) {
      if (!walkField()) {
        return false;
      }
    }
    return true;
  }

 private:
  bool walkField() {
    const std::uint32_t start = _stream.offsetInData();
    const CodedImageField* field = _fields.find(_stream.readCode());
    const std::int32_t size = _stream.readInt();
    std::uint32_t blockBytes = 0;
    if (field != nullptr) {
      _stream.seekToDataOffset(start + 4);
      if (!takeField(*field, blockBytes)) {
        return false;
      }
    }
    seekBehind(_stream, start, std::uint64_t{8} + static_cast<std::uint32_t>(size) + blockBytes);
    return size >= 0;
  }

  bool takeField(const CodedImageField& field, std::uint32_t& blockBytes) {
    switch (field.keep) {
      case ImageValue::keywordCount:
        _keywordCount = _stream.readCodedInt();
        return true;
      case ImageValue::keywordKeys:
        // Without a count before them the keys mean nothing.
        if (_keywordCount != 0) {
          _taker.take(field.keep, field.read, _stream);
        }
        return true;
      case ImageValue::lastBlock: {
        const auto last = static_cast<std::uint32_t>(_stream.readCodedInt());
        _taker.startImageData();
        return _readImageDataFromStreamLastImageDataSize(last, blockBytes);
      }
      default:
        _taker.take(field.keep, field.read, _stream);
        return true;
    }
  }

  /// Walks the image-data blocks at the stream's position up to the one of number `last`, and adds
  /// up the bytes that they take. False when a size leads back to bytes that were read already.
  bool _readImageDataFromStreamLastImageDataSize(std::uint32_t last, std::uint32_t& imageDataSize) {
    const std::uint32_t firstBlock = _stream.offsetInData();
    for (std::uint32_t number = 0; number < last;) {
      const std::uint32_t start = _stream.offsetInData();
      number = _stream.readCode();
      const std::int32_t size = _stream.readInt();
      if (size < 0) {
        return false;
      }
      const std::uint64_t length = std::uint64_t{8} + static_cast<std::uint32_t>(size);
      if (number <= last) {
        walkBlock(start + length);
      }
      seekBehind(_stream, start, length);
    }
    imageDataSize = _stream.offsetInData() - firstBlock;
    return true;
  }

  void walkBlock(std::uint64_t end) {
    std::int32_t type = 0;
    while (_stream.offsetInData() < end) {
      const CodedBlockField* field = _blockFields.find(_stream.readCode());
      if (field == nullptr) {
        // Nothing is known of such a field, not even that it has a size.
        continue;
      }
      const ImageValue value = field->keepIn(type);
      if (value == ImageValue::blockType) {
        type = _stream.readCodedInt();
      } else {
        _taker.take(value, field->read, _stream);
      }
    }
  }

  TVQiPhotoCodedStreamData& _stream;
  Taker& _taker;
  CodeSearch<CodedImageField, kCodedImageFields.size()> _fields{kCodedImageFields};
  CodeSearch<CodedBlockField, kCodedBlockFields.size()> _blockFields{kCodedBlockFields};
  std::int32_t _keywordCount = 0;
};

}  // namespace mrziphoto

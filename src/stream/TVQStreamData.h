#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "../images/NSSize.h"
#include "../values/Data.h"
#include "../values/Export.h"
#include "../values/String.h"
#include "../values/Value.h"

namespace mrziphoto {

enum class CodedRead : std::uint8_t;

class StreamedFile;

/// A seekable reader over one unchangeable byte buffer: turns the bytes of a catalogue into numbers
/// and checks every bound. Over a file that is not to lie in memory as a whole, what is said of the
/// buffer holds of the file, and slices are copies.
///
/// A read that needs more bytes than are left throws NSException "NSRangeException" with
/// the offset, and leaves the position where it was.
class MRZIPHOTO_EXPORT TVQStreamData {
 public:
  /// How multi-byte values are ordered in the buffer. Any other number behaves as `host`.
  enum SwapMode : std::int32_t { host = 0, opposite = 1, bigEndian = 2, littleEndian = 3 };

  /// A reader at offset 0 that keeps the buffer alive. Its swap mode is `host`.
  static TVQStreamData initWithData(Data data) { return TVQStreamData(std::move(data)); }
  explicit TVQStreamData(Data data);
  /// A reader of that file. It throws FileException when the file cannot be read any more, and may
  /// not be copied.
  explicit TVQStreamData(std::shared_ptr<StreamedFile> file);

  /// The whole buffer; no bytes for a reader of a file.
  [[nodiscard]] const Data& data() const { return _data; }
  /// The number of bytes in the buffer; the reader sees no more than 2^32 - 1 of them.
  [[nodiscard]] std::uint32_t length() const { return _length; }
  /// The read position, in bytes from the start of the buffer.
  [[nodiscard]] std::uint32_t offsetInData() const { return _offset; }
  /// The number of bytes from the position to the end; 0 beyond the end.
  [[nodiscard]] std::uint32_t remaining() const { return isAtEndOfData() ? 0 : length() - _offset; }
  /// Moves to an absolute offset, which may lie beyond the end.
  void seekToDataOffset(std::uint32_t offset) { _offset = offset; }
  /// Moves by a number of bytes; stops at offset 0 and at 2^32 - 1.
  void seekByDataOffset(std::int32_t delta);
  /// True at the end of the buffer and beyond it.
  [[nodiscard]] bool isAtEndOfData() const { return _offset >= length(); }

  [[nodiscard]] std::int32_t readInt() {
    return static_cast<std::int32_t>(readUnsigned<std::uint32_t>());
  }
  [[nodiscard]] std::int16_t readShort() {
    return static_cast<std::int16_t>(readUnsigned<std::uint16_t>());
  }
  [[nodiscard]] std::int64_t readLongLong() {
    return static_cast<std::int64_t>(readUnsigned<std::uint64_t>());
  }
  [[nodiscard]] float readFloat() { return std::bit_cast<float>(readUnsigned<std::uint32_t>()); }
  [[nodiscard]] double readDouble() { return std::bit_cast<double>(readUnsigned<std::uint64_t>()); }
  /// Copies raw bytes, unswapped.
  void readBytesCount(void* destination, std::uint32_t count);
  /// The next bytes as a slice of the buffer.
  [[nodiscard]] Data readDataWithLength(std::uint32_t count);
  /// The bytes of a range as a slice of the buffer, wherever the position is; it stays. Throws as a
  /// read there would.
  [[nodiscard]] Data dataInRange(std::uint32_t location, std::uint32_t count) const;
  /// The same, cut to what is there.
  [[nodiscard]] Data dataCutToRange(std::uint32_t location, std::uint32_t count) const;
  /// The bytes of a range that was found to be there, for as long as nothing else is read.
  [[nodiscard]] std::string_view bytesInRange(std::uint32_t location, std::uint32_t count) const {
    return isInWindow(location, count) ? _window.substr(location - _windowStart, count)
                                       : bytesOutsideWindow(location, count);
  }

  void setShouldSwapMode(std::int32_t mode);
  [[nodiscard]] std::int32_t shouldSwapMode() const { return _shouldSwapMode; }

 protected:
  /// The next `count` bytes, which it passes. Every read goes through here.
  [[nodiscard]] std::string_view take(std::uint32_t count) {
    if (count > remaining()) {
      failBeyondEnd(_offset, count);
    }
    if (!isInWindow(_offset, count)) {
      return takeOutsideWindow(count);
    }
    const std::string_view bytes(_window.data() + (_offset - _windowStart), count);
    _offset += count;
    return bytes;
  }

 private:
  /// Of a range in the buffer.
  [[nodiscard]] bool isInWindow(std::uint32_t location, std::uint32_t count) const {
    return count <= _window.size() && location - _windowStart <= _window.size() - count;
  }
  [[nodiscard]] std::string_view takeOutsideWindow(std::uint32_t count);
  [[nodiscard]] std::string_view bytesOutsideWindow(std::uint32_t location,
                                                    std::uint32_t count) const;
  [[nodiscard]] Data piece(std::uint32_t location, std::uint32_t count) const;

  // In the header to be inlined: large catalogues are read number by number.
  template <class Unsigned>
  [[nodiscard]] Unsigned readUnsigned() {
    Unsigned value;
    std::memcpy(&value, take(sizeof value).data(), sizeof value);
    return _readsSwapped ? swapped(value) : value;
  }
  static std::uint16_t swapped(std::uint16_t value) { return __builtin_bswap16(value); }
  static std::uint32_t swapped(std::uint32_t value) { return __builtin_bswap32(value); }
  static std::uint64_t swapped(std::uint64_t value) { return __builtin_bswap64(value); }
  [[noreturn]] void failBeyondEnd(std::uint32_t location, std::uint32_t count) const;

  Data _data;
  std::shared_ptr<StreamedFile> _file;
  // What of the buffer lies in memory: of a file a part.
  std::string_view _window;
  std::uint32_t _windowStart = 0;
  std::uint32_t _length;
  std::uint32_t _offset = 0;
  std::int32_t _shouldSwapMode = host;
  bool _readsSwapped = false;  // what the swap mode means on this machine
};

/// Reads the coded stream of the newer catalogues: items of a four-character code, a 32-bit size
/// and that many bytes of value, nested within one another.
///
/// The typed reads start at an item's size word. Those of a fixed size throw NSException
/// "NSInternalInconsistencyException" with the reason "Unexpected datasize %d during %@" when the
/// item has another size, and leave the position right behind the size word.
class MRZIPHOTO_EXPORT TVQiPhotoCodedStreamData : public TVQStreamData {
 public:
  using TVQStreamData::TVQStreamData;
  /// A reader at offset 0 that keeps the buffer alive. Its swap mode is `host`.
  static TVQiPhotoCodedStreamData initWithData(Data data) {
    return TVQiPhotoCodedStreamData(std::move(data));
  }

  [[nodiscard]] std::uint32_t readCode();
  /// The integer at the position, which stays where it is.
  [[nodiscard]] std::int32_t peekInt();

  [[nodiscard]] std::int16_t readCodedShort();
  [[nodiscard]] std::int32_t readCodedInt();
  [[nodiscard]] std::int64_t readCodedLongLong();
  [[nodiscard]] float readCodedFloat();
  [[nodiscard]] double readCodedDouble();
  [[nodiscard]] NSSize readCodedNSSize();
  /// Signed 32-bit integers in stored order. A size that is no multiple of 4 leaves its last bytes
  /// unread; a negative size throws as a read past the end does.
  [[nodiscard]] std::vector<std::int32_t> readCodedIntArray();
  /// UTF-16 units, as `readUTF16StringWithCharacterCount` reads them.
  [[nodiscard]] String readCodedUTF16String();
  /// UTF-16 units behind a size word of 16 bits.
  [[nodiscard]] String readCodedUTF16StringShort();
  [[nodiscard]] Data readCodedData();
  /// The root object of a typed-object archive. The position stays right behind the size word;
  /// callers go on by the item's size. Throws what the archive's reading throws, and
  /// "NSInvalidArgumentException" when the bytes are no archive.
  [[nodiscard]] Value readCodedArchive();

  /// A text of `count` UTF-16 units, a slice of the buffer. Units stand in the stream's byte order;
  /// a byte-order mark in front, either way round, makes them stand in the host's order instead and
  /// stays in the text. Zero units stay in the text.
  [[nodiscard]] String readUTF16StringWithCharacterCount(std::uint32_t count);

  /// How the units of such a text lie.
  [[nodiscard]] String::Encoding encodingOf(std::string_view units) const;

  /// Throws the size error for the typed read of that name. To be called right behind the size
  /// word.
  [[noreturn]] void raiseUnexpectedCodeSizeExceptionDuring(std::string_view operation);

  /// "%d bytes offset = %d remaining = %d".
  [[nodiscard]] std::string description() const;

 private:
  void expectSizeOf(CodedRead read);
  [[nodiscard]] std::uint32_t readItemSize();
};

}  // namespace mrziphoto

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "../images/NSSize.h"
#include "../values/Export.h"
#include "../values/String.h"
#include "../values/Value.h"
#include "CodedRead.h"
#include "TVQStreamData.h"

namespace mrziphoto {

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

#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "../../values/KeyedHash.h"
#include "../ArchiveDocument.h"
#include "ArchiveType.h"

namespace mrziphoto::detail {

/// How numbers stand in an archive: a head byte that is the number itself, or one of these, taken
/// as signed bytes.
enum ArchiveHead : std::int8_t {
  kHead2Bytes = -127,  // an integer of that size follows
  kHead4Bytes = -126,
  kHeadReal = -125,
  kHeadNew = -124,  // a string, object, class or C string follows in full
  kHeadNil = -123,
  kHeadEndOfObject = -122,
  kHead8Bytes = -121
};
/// Heads from here on are numbers. References to the entries of a table count from here, too.
inline constexpr std::int8_t kFirstNumber = -110;

inline constexpr std::string_view kBigEndianSignature = "typedstream";
inline constexpr std::string_view kLittleEndianSignature = "streamtyped";

/// Reads the parts that archives are made of, checks every bound, and numbers strings, objects,
/// classes and C strings as the format does. Does not know what the parts mean.
///
/// Every operation throws NSException where the archive is damaged; nothing more can be read then.
class ArchiveReader {
 public:
  struct ClassRecord : ArchiveClass {
    std::uint32_t chainLength = 1;    // the class itself and all above it
    std::uint64_t chainTextSize = 0;  // bytes of their names
    bool isComplete = false;          // the chain has been read to its end
  };

  /// True when the bytes begin with a header that this class reads.
  static bool isArchive(std::string_view bytes);

  /// Begins behind the header. `bytes`, for which `isArchive` must be true, must outlive the
  /// reader.
  explicit ArchiveReader(std::string_view bytes);

  [[nodiscard]] std::endian byteOrder() const { return _byteOrder; }
  [[nodiscard]] std::int32_t systemVersion() const { return _systemVersion; }
  [[nodiscard]] std::size_t position() const { return _position; }
  [[nodiscard]] std::size_t remaining() const { return _bytes.size() - _position; }
  [[nodiscard]] bool isAtEnd() const { return remaining() == 0; }

  [[nodiscard]] const std::vector<ClassRecord>& classes() const { return _classes; }
  [[nodiscard]] const std::vector<ArchiveCString>& cStrings() const { return _cStrings; }
  /// The class of that name that was read last, or nullptr.
  [[nodiscard]] const ClassRecord* classNamed(std::string_view name) const;

  /// The type string of the next group. It stays valid.
  const ArchiveType& readType();
  /// Calls `use` with the values that follow a type string, one after the other. An item that is a
  /// new object must be read to its end before `use` returns.
  template <class Use>
  void forEachItem(const ArchiveType& type, const Use& use) {
    checkRemaining(type.leastBytes());
    type.forEach(
        [&](char code) {
          if (code != kIgnored) {
            use(readItem(code));
          }
        },
        [&](char code, std::uint32_t count) { use(readRawBytes(code, count)); });
  }
  /// One value of a plain type.
  ArchiveItem readItem(char code);
  /// What follows a new object: its class, as a position in classes().
  std::uint32_t readClassOfObject();
  /// True when the object ends here.
  [[nodiscard]] bool isAtEndOfObject() const;
  /// Passes the end of an object; false when it is not here.
  bool takeEndOfObject();

  /// To be called for every repeated reference, with the size of its target. Refuses an archive
  /// that would be out of all proportion if its references were written out, so that what was read
  /// can be printed, compared or copied safely.
  void accountFor(std::uint64_t size, std::uint64_t& account) const;

 private:
  static constexpr char kIgnored = '!';
  enum class EntryKind : std::uint8_t { object, classRecord, cString };
  struct Entry {
    EntryKind kind;
    std::uint32_t position;  // in classes() or cStrings()
  };
  struct SharedString {
    std::string_view text;
    const ArchiveType* type = nullptr;  // once it was used as a type string
  };

  void checkRemaining(std::uint64_t count) const;
  std::string_view take(std::size_t count);
  std::int8_t takeHead();
  template <class Unsigned>
  Unsigned takeUnsigned();
  [[noreturn]] void failAtHead() const;

  std::int64_t integerAfter(std::int8_t head);
  std::int64_t readInteger(char code);
  ArchiveItem readReal(char code);
  std::string_view readLengthAndBytes();
  ArchiveItem readRawBytes(char code, std::uint32_t count);
  /// The position of an entry in a table of `size` entries that the head, a number, refers to.
  std::size_t referenceAfter(std::int8_t head, std::size_t size);
  /// The position of a shared string; nothing for nil.
  std::optional<std::size_t> readShared();
  std::string_view readName();
  std::optional<std::uint32_t> readClass();
  std::uint32_t classAfter(std::int8_t head);
  std::uint32_t addClass(std::string_view name);
  void completeChain(std::size_t first, std::optional<std::uint32_t> above);
  std::uint32_t readCStringAfter(std::int8_t head);
  ArchiveItem readObject();

  std::string_view _bytes;
  std::size_t _position;
  std::endian _byteOrder;
  std::int32_t _systemVersion;
  std::vector<SharedString> _strings;
  std::vector<Entry> _entries;
  std::vector<ClassRecord> _classes;
  std::vector<ArchiveCString> _cStrings;
  std::deque<ArchiveType> _types;
  std::unordered_map<std::string_view, std::uint32_t, KeyedHash> _classesByName;
  std::uint64_t _namedAgain = 0;
};

}  // namespace mrziphoto::detail

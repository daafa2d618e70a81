#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "../values/Data.h"
#include "../values/Export.h"
#include "../values/Object.h"

namespace mrziphoto {

namespace detail {
class OpenFile;
}

/// The file in which a library keeps the small thumbnails of all its photos, in items of one size.
///
/// What the file's header promises but the file does not hold is answered with nothing: items and
/// index entries are there as far as they lie wholly inside the file. No item, and no index, is
/// answered beyond `Limits::fileSize` bytes.
///
/// Such a file takes some 16 KB for each photo of the library, of which most hosts ask few: of a
/// file that was opened by its path, the header and the keys are held in memory, and items are read
/// when they are asked for. The file stays open as long as the cache exists. When another program
/// writes to it meanwhile, answers are those of the file as it is when they are asked for.
class MRZIPHOTO_EXPORT iPhotoSegmentCache final : public Object {
 public:
  static const Class kClass;
  /// No item holds the key.
  static constexpr std::uint32_t kNotFound = 0x7FFFFFFF;

  iPhotoSegmentCache();
  ~iPhotoSegmentCache() override;
  /// Nothing when the file cannot be read or is no segment cache.
  static Ref<iPhotoSegmentCache> initWithContentsOfFile(const std::string& path);
  /// Nothing when the bytes are no segment cache.
  static Ref<iPhotoSegmentCache> initWithData(const Data& data);

  /// The number of items that the header promises; 0 when the file ends before that number.
  [[nodiscard]] std::uint32_t numberOfItems() const;
  /// The bytes of one item, as the header has it; 0 when the file ends before that number.
  [[nodiscard]] std::uint32_t itemSize() const;

  /// The item index as it lies in the file: 16 bytes for each item, in the order of the items.
  [[nodiscard]] Data itemIndex() const;
  /// The position of the first item in use that holds the thumbnail of the photo with that image
  /// key; `kNotFound` when there is none. The first question reads the whole index; from then on
  /// each costs a binary search.
  [[nodiscard]] std::uint32_t itemIndexForKey(std::uint32_t key) const;

  /// The bytes of the item at that position.
  [[nodiscard]] std::optional<Data> itemBytesAtIndex(std::uint32_t index) const;
  /// The bytes of the item that holds the thumbnail of the photo with that image key.
  [[nodiscard]] std::optional<Data> itemBytesForKey(std::uint32_t key) const;
  /// The same, but `count` bytes from the item's start on, whatever the size of an item: for
  /// readers who know how large a thumbnail is.
  [[nodiscard]] std::optional<Data> itemBytesAtIndex(std::uint32_t index,
                                                     std::uint32_t count) const;
  [[nodiscard]] std::optional<Data> itemBytesForKey(std::uint32_t key, std::uint32_t count) const;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }

 private:
  // Image key and position, of every item in use. Sorted, so that neither equal keys nor keys
  // chosen with malice make a search slow.
  using Lookup = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

  [[nodiscard]] bool hasSignature() const;
  [[nodiscard]] const Data& header() const;
  [[nodiscard]] std::uint32_t findItem(std::uint32_t key) const;
  [[nodiscard]] bool isItemOf(std::uint32_t index, std::uint32_t key) const;
  [[nodiscard]] std::uint32_t headerNumberAt(std::size_t offset) const;
  [[nodiscard]] std::uint64_t fileSize() const;
  [[nodiscard]] Data bytesAt(std::uint64_t offset, std::uint64_t count) const;
  [[nodiscard]] std::uint64_t indexOffset() const;
  [[nodiscard]] std::uint64_t indexEntriesInFile() const;
  [[nodiscard]] Lookup readLookup() const;

  // The whole file; of a file that stays open, its header as it was when the file had that stamp.
  mutable Data _data;
  std::unique_ptr<detail::OpenFile> _file;
  mutable std::array<std::int64_t, 5> _stamp{};
  mutable std::optional<Lookup> _lookup;
};

}  // namespace mrziphoto

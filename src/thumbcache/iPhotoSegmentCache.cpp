#include "iPhotoSegmentCache.h"

#include <algorithm>
#include <string_view>

#include "../files/FileManager.h"
#include "../files/detail/OpenFile.h"
#include "../stream/TVQStreamData.h"
#include "../values/Limits.h"

namespace mrziphoto {
namespace {

constexpr std::string_view kSignature = "iPhotoSegmentCache";
constexpr std::size_t kItemSizeOffset = 132;
constexpr std::size_t kNumberOfItemsOffset = 136;
constexpr std::size_t kHeaderSize = 140;
constexpr std::uint64_t kItemsOffset = 4096;
constexpr std::uint64_t kIndexEntrySize = 16;
constexpr std::uint64_t kIndexEntriesAtOnce = 4096;

TVQStreamData littleEndian(Data bytes) {
  TVQStreamData stream(std::move(bytes));
  stream.setShouldSwapMode(TVQStreamData::littleEndian);
  return stream;
}

}  // namespace

const Class iPhotoSegmentCache::kClass{"iPhotoSegmentCache"};

iPhotoSegmentCache::iPhotoSegmentCache() = default;
iPhotoSegmentCache::~iPhotoSegmentCache() = default;

Ref<iPhotoSegmentCache> iPhotoSegmentCache::initWithContentsOfFile(const std::string& path) {
  const std::optional<std::string> place = FileManager::locate(path);
  auto file = place ? detail::OpenFile::atPath(*place) : nullptr;
  if (!file) {
    return {};
  }
  Ref<iPhotoSegmentCache> result = make<iPhotoSegmentCache>();
  result->_file = std::move(file);
  return result->hasSignature() ? result : nullptr;
}

Ref<iPhotoSegmentCache> iPhotoSegmentCache::initWithData(const Data& data) {
  Ref<iPhotoSegmentCache> result = make<iPhotoSegmentCache>();
  result->_data = data;
  return result->hasSignature() ? result : nullptr;
}

bool iPhotoSegmentCache::hasSignature() const { return header().bytes().starts_with(kSignature); }

/// At least the header, as it is now; nothing when it has become that of another file.
const Data& iPhotoSegmentCache::header() const {
  if (_file) {
    const detail::OpenFile::Stamp stamp = _file->stamp();
    if (stamp != _stamp) {
      _stamp = stamp;
      _file->measure();
      _data = _file->read(0, kHeaderSize);
      if (!_data.bytes().starts_with(kSignature)) {
        _data = {};
      }
      _lookup.reset();
    }
  }
  return _data;
}

std::uint32_t iPhotoSegmentCache::numberOfItems() const {
  return headerNumberAt(kNumberOfItemsOffset);
}

std::uint32_t iPhotoSegmentCache::itemSize() const { return headerNumberAt(kItemSizeOffset); }

std::uint32_t iPhotoSegmentCache::headerNumberAt(std::size_t offset) const {
  const Data bytes = header().slice(offset, sizeof(std::uint32_t));
  return bytes.size() < sizeof(std::uint32_t)
             ? 0
             : static_cast<std::uint32_t>(littleEndian(bytes).readInt());
}

std::uint64_t iPhotoSegmentCache::fileSize() const { return _file ? _file->size() : _data.size(); }

/// Cut to what is there.
Data iPhotoSegmentCache::bytesAt(std::uint64_t offset, std::uint64_t count) const {
  return _file ? _file->read(offset, count) : _data.slice(offset, count);
}

std::uint64_t iPhotoSegmentCache::indexOffset() const {
  return kItemsOffset + std::uint64_t{numberOfItems()} * itemSize();
}

std::uint64_t iPhotoSegmentCache::indexEntriesInFile() const {
  const std::uint64_t offset = indexOffset();
  const std::uint64_t room = offset < fileSize() ? (fileSize() - offset) / kIndexEntrySize : 0;
  return std::min(
      {std::uint64_t{numberOfItems()}, room, Limits::current().fileSize / kIndexEntrySize});
}

Data iPhotoSegmentCache::itemIndex() const {
  return bytesAt(indexOffset(), indexEntriesInFile() * kIndexEntrySize);
}

iPhotoSegmentCache::Lookup iPhotoSegmentCache::readLookup() const {
  Lookup result;
  const std::uint64_t count = indexEntriesInFile();
  for (std::uint64_t first = 0; first < count; first += kIndexEntriesAtOnce) {
    const std::uint64_t wanted = std::min(kIndexEntriesAtOnce, count - first);
    TVQStreamData entries =
        littleEndian(bytesAt(indexOffset() + first * kIndexEntrySize, wanted * kIndexEntrySize));
    for (std::uint64_t i = 0; i < wanted && entries.remaining() >= kIndexEntrySize; ++i) {
      const bool isInUse = entries.readInt() != 0;
      (void)entries.readInt();
      const auto key = static_cast<std::uint32_t>(entries.readInt());
      (void)entries.readInt();
      if (isInUse) {
        result.emplace_back(key, static_cast<std::uint32_t>(first + i));
      }
    }
  }
  std::ranges::sort(result);
  return result;
}

std::uint32_t iPhotoSegmentCache::findItem(std::uint32_t key) const {
  (void)header();
  if (!_lookup) {
    _lookup = readLookup();
  }
  const auto found = std::ranges::lower_bound(*_lookup, Lookup::value_type(key, 0));
  return found != _lookup->end() && found->first == key ? found->second : kNotFound;
}

/// What the index says now: not every program that writes to a file changes its time at once.
bool iPhotoSegmentCache::isItemOf(std::uint32_t index, std::uint32_t key) const {
  TVQStreamData entry =
      littleEndian(bytesAt(indexOffset() + index * kIndexEntrySize, kIndexEntrySize));
  if (entry.remaining() < kIndexEntrySize) {
    return false;
  }
  const bool isInUse = entry.readInt() != 0;
  (void)entry.readInt();
  return isInUse && static_cast<std::uint32_t>(entry.readInt()) == key;
}

std::uint32_t iPhotoSegmentCache::itemIndexForKey(std::uint32_t key) const {
  std::uint32_t index = findItem(key);
  if (_file && index != kNotFound && !isItemOf(index, key)) {
    _lookup.reset();
    index = findItem(key);
  }
  return index;
}

std::optional<Data> iPhotoSegmentCache::itemBytesAtIndex(std::uint32_t index) const {
  return itemBytesAtIndex(index, itemSize());
}

std::optional<Data> iPhotoSegmentCache::itemBytesForKey(std::uint32_t key) const {
  return itemBytesForKey(key, itemSize());
}

std::optional<Data> iPhotoSegmentCache::itemBytesAtIndex(std::uint32_t index,
                                                         std::uint32_t count) const {
  const std::uint64_t offset = kItemsOffset + std::uint64_t{index} * itemSize();
  const bool isInside = offset <= fileSize() && count <= fileSize() - offset;
  if (index >= numberOfItems() || !isInside || count > Limits::current().fileSize) {
    return std::nullopt;
  }
  Data bytes = bytesAt(offset, count);
  return bytes.size() == count ? std::optional(std::move(bytes)) : std::nullopt;
}

std::optional<Data> iPhotoSegmentCache::itemBytesForKey(std::uint32_t key,
                                                        std::uint32_t count) const {
  const std::uint32_t index = itemIndexForKey(key);
  std::optional<Data> bytes = index == kNotFound ? std::nullopt : itemBytesAtIndex(index, count);
  // Read after the item, the entry tells whether the item belonged to another photo by then.
  return bytes && isItemOf(index, key) ? bytes : std::nullopt;
}

}  // namespace mrziphoto

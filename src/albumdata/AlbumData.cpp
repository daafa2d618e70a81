#include "detail/AlbumData.h"

#include <algorithm>
#include <array>

#include "../files/detail/OpenFile.h"
#include "../propertylist/PropertyList.h"
#include "../values/Dictionary.h"
#include "detail/AlbumDataEntries.h"

namespace mrziphoto {

AlbumData AlbumData::read(const std::string& path, std::optional<FileFailure>* failure) {
  FileFailure why;
  const auto file = detail::OpenFile::atPath(path, &why);
  if (file && file->mayBeReadWhole()) {
    // Up to the size that the file had when it was opened: it might grow for ever while it is read.
    std::uint64_t offset = 0;
    const auto readNext = [&](std::span<char> room) {
      const std::uint64_t count = std::min<std::uint64_t>(room.size(), file->size() - offset);
      const std::size_t got = file->readInto(room.first(static_cast<std::size_t>(count)), offset);
      offset += got;
      return got;
    };
    if (std::optional<AlbumData> plain = fromPlainMarkup(readNext)) {
      return std::move(*plain);
    }
  }
  const std::optional<Data> bytes = file ? file->contents(&why) : std::nullopt;
  if (!bytes && failure != nullptr) {
    *failure = std::move(why);
  }
  return fromPropertyList(bytes ? propertyListFromData(*bytes) : Value());
}

AlbumData AlbumData::fromPropertyList(const Value& top) {
  AlbumData result;
  PhotoTable::Filler filler;
  if (const Ref<Dictionary> entries = top.dictionary()) {
    for (const AlbumDataEntry& entry : kAlbumDataEntries) {
      if (const Value value = entries->get(entry.name); !value.isNothing()) {
        filler.putValue(value);
        result.*entry.place = filler.finishLone();
      }
    }
    if (const Ref<Dictionary> photos = entries->get(kMasterImageList).dictionary()) {
      for (const Dictionary::Entry& photo : *photos) {
        const std::uint32_t key = Value(String({}, photo.key.text())).unsignedIntValue();
        const Ref<Dictionary> info = photo.value.dictionary();
        if (!info) {
          filler.beginRow(key, {});
          filler.endRow();
          continue;
        }
        filler.beginRow(key, {PhotoStore::imageInfo});
        std::uint32_t field = 0;
        for (const Dictionary::Entry& each : *info) {
          field = filler.fieldNamed(each.key.text(), field);
          filler.addName(field);
          filler.putField(field, each.value);
        }
        filler.endRow();
      }
    }
  }
  result.photos = filler.finish();
  return result;
}

}  // namespace mrziphoto

// Holds the reader for plain markup against the general one: whatever the first reads, the second
// reads alike, through windows of all sizes.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <MRZiPhoto/propertylist/PropertyList.h>

#include "../tests/support/AlbumDataText.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mrziphoto;
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  const std::size_t window = rest.empty() ? 1 : 1 + static_cast<unsigned char>(rest.front());
  rest.remove_prefix(std::min<std::size_t>(rest.size(), 1));
  const Data document = Data::copyOf(rest);
  const auto readNext = [&rest](std::span<char> room) {
    const std::size_t count = rest.copy(room.data(), room.size());
    rest.remove_prefix(count);
    return count;
  };
  const std::optional<AlbumData> plain = AlbumData::fromPlainMarkup(readNext, window);
  try {
    const Value general = propertyListFromData(document);
    const std::string text = textOfAlbumData(general);
    if (text != textOfAlbumData(AlbumData::fromPropertyList(general)) ||
        (plain && text != textOfAlbumData(*plain))) {
      std::abort();
    }
  } catch (const NSException&) {
    if (plain) {
      std::abort();  // the general reader has found a fault that the other one missed
    }
  }
  return 0;
}

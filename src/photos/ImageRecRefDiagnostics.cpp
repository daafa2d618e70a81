// What the photo record tells for the sake of finding faults.

#include <bit>
#include <cstring>

#include "../values/Log.h"
#include "../values/Object.h"
#include "ImageRecRef.h"

namespace mrziphoto {
namespace {

// The first version of the platform that has `valueForUndefinedKey`.
constexpr double kNSFoundationVersionNumber = 500.0;

void logDeprecated(std::string_view selector) {
  log("%@ is deprecated: Use valueForUndefinedKey: in 10.3 and later - current Foundation is vn. "
      "%f",
      selector, kNSFoundationVersionNumber);
}

std::string printable(std::string_view bytes) {
  std::string text(bytes);
  for (char& each : text) {
    each = each >= ' ' && each <= '~' ? each : '.';
  }
  return text;
}

/// The two bytes from `offset` on, in the host's order.
std::uint16_t pair(std::string_view bytes, std::size_t offset) {
  std::uint16_t number = 0;
  std::memcpy(&number, bytes.data() + offset, sizeof number);
  return number;
}

}  // namespace

/// A host that has the handler of faults asks by the old name.
void ImageRecRef::initialize() {
  static const bool isDone = [] {
    if (ClassRegistry::find("EOAccessFaultHandler") != nullptr) {
      log("EOAccessFaultHandler available - implementing -[%@ handleQueryWithUnboundKey:]",
          kClass.name);
    }
    return true;
  }();
  (void)isDone;
}

Value ImageRecRef::handleQueryWithUnboundKey(std::string_view key) const {
  logDeprecated("handleQueryWithUnboundKey:");
  return valueForUndefinedKey(key);
}

Value ImageRecRef::tvq_handleQueryWithUnboundKey(std::string_view key) const {
  logDeprecated("tvq_handleQueryWithUnboundKey:");
  return valueForUndefinedKey(key);
}

void ImageRecRef::_dumpDataLocationCount(const Data& data, std::uint32_t location,
                                         std::uint32_t count) {
  std::string_view rest = data.slice(location, count).bytes();
  std::uint32_t offset = 0;
  const auto take = [&](std::uint32_t size) {
    const std::string_view bytes = rest.substr(0, size);
    rest.remove_prefix(size);
    offset += size;
    return bytes;
  };
  while (rest.size() > 15) {
    const std::string_view line = take(16);
    log("%6x:%4x:  %4x %4x %4x %4x %4x %4x %4x %4x  %s", location + offset - 16, offset - 16,
        pair(line, 0), pair(line, 2), pair(line, 4), pair(line, 6), pair(line, 8), pair(line, 10),
        pair(line, 12), pair(line, 14), printable(line));
  }
  while (rest.size() > 3) {
    const std::string_view line = take(4);
    log("%6x:%4x:  %4x %4x                                %s", location + offset - 4, offset - 4,
        pair(line, 0), pair(line, 2), printable(line));
  }
  while (!rest.empty()) {
    const std::string_view byte = take(1);
    log("%6x:%4x:    %2x                                     %c", location + offset - 1, offset - 1,
        static_cast<std::uint8_t>(byte[0]), printable(byte)[0]);
  }
}

}  // namespace mrziphoto

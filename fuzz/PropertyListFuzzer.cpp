#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <MRZiPhoto/propertylist/PropertyList.h>
#include <MRZiPhoto/values/NSException.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mrziphoto;
  try {
    const Value value = propertyListFromData(Data({}, {reinterpret_cast<const char*>(data), size}));
    const std::string text = propertyListFromValue(value);
    if (propertyListFromValue(propertyListFromData(Data({}, text))) != text) {
      std::abort();
    }
  } catch (const NSException&) {
    return 0;
  }
  return 0;
}

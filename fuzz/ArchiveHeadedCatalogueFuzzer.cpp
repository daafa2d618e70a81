#include <cstddef>
#include <cstdint>

#include "CatalogueInput.h"

// A catalogue whose version and keywords stand in an archive in front of its coded sections.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  mrziphoto::playCatalogue({reinterpret_cast<const char*>(data), size});
  return 0;
}

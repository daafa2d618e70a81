#include <cstddef>
#include <cstdint>
#include <string>

#include "CatalogueInput.h"

// A catalogue of nothing but coded sections. The first byte chooses one of its versions, 51 to 150.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 0) {
    std::string bytes("dbVS\0\0\0\4\0\0\0", 11);
    bytes += static_cast<char>(51 + data[0] % 100);
    bytes.append(reinterpret_cast<const char*>(data) + 1, size - 1);
    mrziphoto::playCatalogue(bytes);
  }
  return 0;
}

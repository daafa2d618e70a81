// What the property-list library of the distribution takes to parse a file.

#include <cstdio>
#include <cstdlib>
#include <plist/plist.h>
#include <string>

int main(int argc, char** argv) {
  std::FILE* file = argc > 1 ? std::fopen(argv[1], "rb") : nullptr;
  if (file == nullptr) {
    return 1;
  }
  std::fseek(file, 0, SEEK_END);
  std::string bytes(static_cast<std::size_t>(std::ftell(file)), '\0');
  std::rewind(file);
  if (std::fread(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
    return 1;
  }
  plist_t root = nullptr;
  plist_from_xml(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
  const plist_t images = root != nullptr ? plist_dict_get_item(root, "Master Image List") : nullptr;
  std::printf("%u images\n", images != nullptr ? plist_dict_get_size(images) : 0);
  std::fflush(stdout);
  std::_Exit(images != nullptr ? 0 : 1);
}

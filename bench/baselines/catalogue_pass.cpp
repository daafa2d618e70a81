// What it takes to walk over a coded catalogue's sections, records and fields by their headers and
// to read nothing else: the file is mapped, and only the headers' bytes are touched.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct Pass {
  const unsigned char* bytes;
  std::uint64_t size;
  std::uint64_t sections = 0, records = 0, fields = 0, blocks = 0;

  std::uint32_t word(std::uint64_t at) const {
    if (at + 4 > size) {
      std::exit(1);
    }
    return static_cast<std::uint32_t>(bytes[at]) << 24 |
           static_cast<std::uint32_t>(bytes[at + 1]) << 16 |
           static_cast<std::uint32_t>(bytes[at + 2]) << 8 | bytes[at + 3];
  }

  /// Image-data blocks, up to the one of that number; answers where they end.
  std::uint64_t passBlocks(std::uint64_t at, std::uint32_t last) {
    while (last != 0) {
      const std::uint32_t number = word(at);
      const std::uint64_t end = at + 8 + word(at + 4);
      ++blocks;
      for (std::uint64_t field = at + 8; field + 8 <= end; field += 8 + word(field + 4)) {
        ++fields;
      }
      at = end;
      if (number >= last) {
        break;
      }
    }
    return at;
  }

  std::uint64_t passRecord(std::uint64_t at) {
    constexpr std::uint32_t kNumberOfBlocks = 0x69644e49;  // "idNI"
    const std::uint64_t end = at + 8 + word(at + 4);
    ++records;
    std::uint64_t field = at + 8;
    while (field < end) {
      const bool beginsBlocks = word(field) == kNumberOfBlocks;
      const std::uint64_t next = field + 8 + word(field + 4);
      ++fields;
      field = beginsBlocks ? passBlocks(next, word(field + 8)) : next;
    }
    return field;
  }

  void passSections() {
    constexpr std::uint32_t kCount = 0x64624354;  // "dbCT"
    constexpr std::uint32_t kTable = 0x64625456;  // "dbTV"
    std::uint32_t count = 0;
    for (std::uint64_t at = 0; at + 8 <= size;) {
      const std::uint32_t code = word(at);
      if (code == kCount) {
        count = word(at + 8);
      }
      at += 8 + word(at + 4);
      ++sections;
      for (std::uint32_t i = 0; code == kTable && i < count; ++i) {
        at = passRecord(at);
      }
    }
  }
};

}  // namespace

int main(int argc, char** argv) {
  const int file = argc > 1 ? open(argv[1], O_RDONLY) : -1;
  struct stat status {};
  if (file < 0 || fstat(file, &status) != 0) {
    return 1;
  }
  const auto size = static_cast<std::uint64_t>(status.st_size);
  void* mapped = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
  if (mapped == MAP_FAILED) {
    return 1;
  }
  Pass pass{static_cast<const unsigned char*>(mapped), size};
  pass.passSections();
  std::printf(
      "%llu sections, %llu records, %llu fields, %llu blocks\n",
      static_cast<unsigned long long>(pass.sections), static_cast<unsigned long long>(pass.records),
      static_cast<unsigned long long>(pass.fields), static_cast<unsigned long long>(pass.blocks));
  std::fflush(stdout);
  std::_Exit(0);
}

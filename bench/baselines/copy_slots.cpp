// What it takes to read a segment cache and copy every slot to memory of its own.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

int main(int argc, char** argv) {
  constexpr std::size_t kSlot = 64 * 64 * 4;
  std::FILE* file = argc > 1 ? std::fopen(argv[1], "rb") : nullptr;
  if (file == nullptr) {
    return 1;
  }
  std::fseek(file, 4096, SEEK_SET);
  std::vector<char> slot(kSlot);
  std::size_t slots = 0;
  unsigned sum = 0;
  while (std::fread(slot.data(), 1, kSlot, file) == kSlot) {
    const std::unique_ptr<char[]> copy(new char[kSlot]);
    std::memcpy(copy.get(), slot.data(), kSlot);
    sum += static_cast<unsigned char>(copy[0]);
    ++slots;
  }
  std::fclose(file);
  std::printf("%zu slots, %u\n", slots, sum);
  return 0;
}

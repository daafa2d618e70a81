// What it takes to read a file through one window.

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

int main(int argc, char** argv) {
  const int file = argc > 1 ? open(argv[1], O_RDONLY | O_CLOEXEC) : -1;
  std::vector<char> window(std::size_t{256} << 10);
  std::size_t bytes = 0;
  ssize_t count = -1;
  while (file >= 0 && (count = read(file, window.data(), window.size())) > 0) {
    bytes += static_cast<std::size_t>(count);
  }
  std::printf("%zu bytes\n", bytes);
  return count == 0 ? 0 : 1;
}

// Stands in for libFuzzer: plays each file named on the command line, and each file of a folder
// named there, through the target once. An empty corpus is a mistake of the build and fails.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

void play(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
  // A copy of the exact size, so that a sanitizer sees the first read beyond the end.
  const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(input.data(), input.size());
}

std::vector<fs::path> filesIn(const fs::path& place) {
  if (!fs::is_directory(place)) {
    return {place};
  }
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(place)) {
    if (entry.is_regular_file()) {
      files.push_back(entry.path());
    }
  }
  return files;
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t played = 0;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path& file : filesIn(argv[i])) {
      std::cerr << file.string() << '\n';
      play(file);
      ++played;
    }
  }
  std::cerr << played << " inputs\n";
  return played == 0 ? 1 : 0;
}

#include "sample/PropertyListFile.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <utility>

namespace mrziphoto::sample {
namespace {

constexpr std::size_t kPiece = std::size_t{1} << 16;

}  // namespace

PropertyListFile::PropertyListFile(std::string path) : _file(std::move(path)) {
  text().reserve(2 * kPiece);
  beginPropertyList();
}

void PropertyListFile::real(std::string_view name, double number) {
  constexpr int kDigits = 6;
  std::array<char, 512> digits;  // NOLINT(cppcoreguidelines-pro-type-member-init)
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                 std::chars_format::fixed, kDigits);
  key(name);
  PropertyListWriter::real({digits.data(), end.ptr});
}

void PropertyListFile::flushIfLarge() {
  if (text().size() >= kPiece) {
    flush();
  }
}

void PropertyListFile::flush() {
  _file.write(text());
  text().clear();
}

void PropertyListFile::finish() {
  endPropertyList();
  flush();
  _file.close();
}

}  // namespace mrziphoto::sample

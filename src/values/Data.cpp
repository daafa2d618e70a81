#include "Data.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include "detail/Description.h"

namespace mrziphoto {
namespace {

/// A block of zeroed memory. Large ones come from the system page by page; huge pages would make it
/// tidy its memory first, which takes longer.
class Buffer final : public Object {
 public:
  explicit Buffer(std::size_t size) : _start(static_cast<char*>(std::calloc(size, 1))) {
    if (_start == nullptr) {
      throw std::bad_alloc();
    }
  }
  ~Buffer() override { std::free(_start); }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  [[nodiscard]] const Class& objectClass() const override {
    static constexpr Class kClass{"NSData"};
    return kClass;
  }
  [[nodiscard]] char* start() const { return _start; }

 private:
  char* _start;
};

}  // namespace

Data Data::copyOf(std::string_view bytes) {
  return filled(bytes.size(), [bytes](char* start) {
    if (!bytes.empty()) {
      std::memcpy(start, bytes.data(), bytes.size());
    }
  });
}

Data Data::zeros(std::size_t size, char*& start) {
  if (size == 0) {
    return {};
  }
  const Ref<Buffer> buffer = make<Buffer>(size);
  start = buffer->start();
  return {buffer, std::string_view(start, size)};
}

std::string Data::description() const {
  constexpr std::string_view kDigits = "0123456789abcdef";
  DescriptionBudget budget;
  const std::size_t shown = std::min<std::uint64_t>(size(), budget.left() * 4 / 9);
  std::string result = "<";
  result.reserve(shown * 9 / 4 + sizeof kDescriptionCut + 1);
  for (std::size_t i = 0; i < shown; ++i) {
    if (i != 0 && i % 4 == 0) {
      result += ' ';
    }
    const auto byte = static_cast<unsigned char>(_bytes[i]);
    result += kDigits[byte >> 4];
    result += kDigits[byte & 0xF];
  }
  result += shown < size() ? kDescriptionCut : "";
  result += '>';
  budget.spend(result.size());
  return result;
}

}  // namespace mrziphoto

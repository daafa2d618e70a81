#include "Data.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sys/mman.h>

namespace mrziphoto {
namespace {

/// A block of zeros. Large ones come from the system, which hands out zeros, in huge pages where it
/// has them: touching fresh memory is most of what opening a large library costs.
class Buffer final : public Object {
 public:
  explicit Buffer(std::size_t size) {
    if (size < kLarge) {
      _start = static_cast<char*>(std::calloc(size, 1));
    } else if (size <= PTRDIFF_MAX - kHugePage) {
      map(size);
    }
    if (_start == nullptr) {
      throw std::bad_alloc();
    }
  }
  ~Buffer() override {
    if (_mapping != nullptr) {
      munmap(_mapping, _mappedSize);
    } else {
      std::free(_start);
    }
  }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  [[nodiscard]] const Class& objectClass() const override {
    static constexpr Class kClass{"NSData"};
    return kClass;
  }
  [[nodiscard]] char* start() const { return _start; }

 private:
  static constexpr std::size_t kHugePage = std::size_t{2} << 20;
  static constexpr std::size_t kLarge = 4 * kHugePage;

  void map(std::size_t size) {
    _mappedSize = size + kHugePage;
    void* mapping =
        mmap(nullptr, _mappedSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) {
      return;
    }
    _mapping = mapping;
    const std::size_t behindPage = reinterpret_cast<std::uintptr_t>(mapping) % kHugePage;
    _start = static_cast<char*>(mapping) + (behindPage == 0 ? 0 : kHugePage - behindPage);
    madvise(_start, size, MADV_HUGEPAGE);
  }

  char* _start = nullptr;
  void* _mapping = nullptr;
  std::size_t _mappedSize = 0;
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
  std::string result = "<";
  result.reserve(size() * 9 / 4 + 2);
  for (std::size_t i = 0; i < size(); ++i) {
    if (i != 0 && i % 4 == 0) {
      result += ' ';
    }
    const auto byte = static_cast<unsigned char>(_bytes[i]);
    result += kDigits[byte >> 4];
    result += kDigits[byte & 0xF];
  }
  return result + '>';
}

}  // namespace mrziphoto

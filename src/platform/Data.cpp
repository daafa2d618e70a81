#include "Data.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <sys/mman.h>

namespace mrziphoto {
namespace {

/// A block of memory. Large ones come in huge pages where the system has them: touching fresh
/// memory is most of what opening a large library costs.
class Buffer final : public Object {
 public:
  explicit Buffer(std::size_t size) : _size(size) {
    if (size < kLarge) {
      _start = static_cast<char*>(std::calloc(size, 1));
    } else {
      _start = static_cast<char*>(std::aligned_alloc(kHugePage, rounded()));
      if (_start != nullptr) {
        madvise(_start, rounded(), MADV_HUGEPAGE);
      }
    }
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
  static constexpr std::size_t kHugePage = std::size_t{2} << 20;
  static constexpr std::size_t kLarge = 4 * kHugePage;
  [[nodiscard]] std::size_t rounded() const {
    return (_size + kHugePage - 1) / kHugePage * kHugePage;
  }

  char* _start = nullptr;
  std::size_t _size;
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

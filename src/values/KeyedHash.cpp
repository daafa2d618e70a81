#include "KeyedHash.h"

#include <bit>
#include <random>

namespace mrziphoto {
namespace {

using Key = std::array<std::uint64_t, 2>;

const Key& processKey() {
  static const Key key = [] {
    std::random_device random;
    const auto word = [&random] { return std::uint64_t{random()} << 32 | random(); };
    return Key{word(), word()};
  }();
  return key;
}

/// The first `count` bytes as a little-endian number.
std::uint64_t wordAt(const char* bytes, std::size_t count) {
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < count; ++i) {
    word |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
  }
  return word;
}

class SipState {
 public:
  explicit SipState(const Key& key)
      : _v0(key[0] ^ 0x736F6D6570736575),
        _v1(key[1] ^ 0x646F72616E646F6D),
        _v2(key[0] ^ 0x6C7967656E657261),
        _v3(key[1] ^ 0x7465646279746573) {}

  void take(std::uint64_t word) {
    _v3 ^= word;
    mix();
    mix();
    _v0 ^= word;
  }

  [[nodiscard]] std::uint64_t finish() {
    _v2 ^= 0xFF;
    for (int round = 0; round < 4; ++round) {
      mix();
    }
    return _v0 ^ _v1 ^ _v2 ^ _v3;
  }

 private:
  void mix() {
    _v0 += _v1;
    _v1 = std::rotl(_v1, 13) ^ _v0;
    _v0 = std::rotl(_v0, 32);
    _v2 += _v3;
    _v3 = std::rotl(_v3, 16) ^ _v2;
    _v0 += _v3;
    _v3 = std::rotl(_v3, 21) ^ _v0;
    _v2 += _v1;
    _v1 = std::rotl(_v1, 17) ^ _v2;
    _v2 = std::rotl(_v2, 32);
  }

  std::uint64_t _v0, _v1, _v2, _v3;
};

}  // namespace

std::uint64_t sipHash(const std::array<std::uint64_t, 2>& key, std::string_view bytes) {
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  SipState state(key);
  const std::uint64_t size = bytes.size();
  for (; bytes.size() >= kWord; bytes.remove_prefix(kWord)) {
    state.take(wordAt(bytes.data(), kWord));
  }
  state.take(size << 56 | wordAt(bytes.data(), bytes.size()));
  return state.finish();
}

std::size_t KeyedHash::operator()(std::string_view text) const {
  return static_cast<std::size_t>(sipHash(processKey(), text));
}

std::size_t KeyedHash::operator()(std::uint64_t number) const {
  SipState state(processKey());
  state.take(number);
  return static_cast<std::size_t>(state.finish());
}

}  // namespace mrziphoto

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "Export.h"

namespace mrziphoto {

/// SipHash-2-4, a hash of bytes that cannot be predicted without its key.
[[nodiscard]] MRZIPHOTO_EXPORT std::uint64_t sipHash(const std::array<std::uint64_t, 2>& key,
                                                     std::string_view bytes);

/// The hash for tables whose keys come from files, with another key in each process, so that no
/// file can hold keys that all collide. Do not store or show hashes.
struct MRZIPHOTO_EXPORT KeyedHash {
  using is_transparent = void;

  [[nodiscard]] std::size_t operator()(std::string_view text) const;
  [[nodiscard]] std::size_t operator()(std::uint64_t number) const;
};

/// A table with texts from files as its keys.
template <class T>
using TextMap = std::unordered_map<std::string, T, KeyedHash, std::equal_to<>>;
using TextSet = std::unordered_set<std::string, KeyedHash, std::equal_to<>>;

}  // namespace mrziphoto

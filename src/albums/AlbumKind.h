#pragma once

#include <span>
#include <string_view>

#include "../values/Export.h"
#include "../values/Object.h"

namespace mrziphoto {

/// A kind of album: its class, and the name of an album of that kind that was given none.
struct AlbumKind : Class {
  std::string_view defaultName;
};

/// All thirteen kinds, the plain album first.
[[nodiscard]] MRZIPHOTO_EXPORT std::span<const AlbumKind* const> albumKinds();

}  // namespace mrziphoto

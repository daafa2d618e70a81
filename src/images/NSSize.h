#pragma once

namespace mrziphoto {

/// A width and a height.
struct NSSize {
  float width = 0;
  float height = 0;
  bool operator==(const NSSize&) const = default;
};

}  // namespace mrziphoto

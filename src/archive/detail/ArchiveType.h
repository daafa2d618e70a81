#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "../../values/NSException.h"

namespace mrziphoto::detail {

/// Throws the exception of damaged archives; `offset` is the byte where the damage was met.
[[noreturn]] inline void failArchive(std::size_t offset, std::string reason) {
  throw NSException(kNSInconsistentArchiveException, std::move(reason), offset);
}

/// A type string of an archive, taken apart: which values follow it, in which order.
///
/// A type string cannot cause more work than its bytes are worth: `Limits` bounds how deep types
/// nest, and few types without bytes are allowed.
class ArchiveType {
 public:
  /// Throws NSException for what is no type string. `text` must outlive the type; it stands at
  /// `offset` of its archive.
  ArchiveType(std::string_view text, std::size_t offset);

  [[nodiscard]] std::string_view text() const { return _text; }
  /// The values take up this many bytes, or more.
  [[nodiscard]] std::uint64_t leastBytes() const { return _leastBytes; }
  /// True for one plain value or one run of bytes, false for arrays, structures and sequences.
  [[nodiscard]] bool isSingle() const {
    return _steps.size() == 1 && _steps[0].kind != Step::Kind::repeat;
  }

  /// Calls `scalar(code)` for each value and `bytes(code, count)` for each array of characters, in
  /// the order of the archive.
  template <class Scalar, class Bytes>
  void forEach(const Scalar& scalar, const Bytes& bytes) const {
    walk(0, _steps.size(), scalar, bytes);
  }

 private:
  struct Step {
    enum class Kind : std::uint8_t { scalar, bytes, repeat };
    Kind kind;
    char code;            // of a scalar, or of the elements of a run of bytes
    std::uint32_t count;  // of bytes or repetitions
    std::uint32_t body;   // how many of the steps behind this one are repeated
  };
  class Parser;

  template <class Scalar, class Bytes>
  void walk(std::size_t first, std::size_t last, const Scalar& scalar, const Bytes& bytes) const {
    for (std::size_t i = first; i < last; ++i) {
      const Step& step = _steps[i];
      if (step.kind == Step::Kind::scalar) {
        scalar(step.code);
      } else if (step.kind == Step::Kind::bytes) {
        bytes(step.code, step.count);
      } else {
        for (std::uint32_t n = 0; n < step.count; ++n) {
          walk(i + 1, i + 1 + step.body, scalar, bytes);
        }
        i += step.body;
      }
    }
  }

  std::string_view _text;
  std::vector<Step> _steps;
  std::uint64_t _leastBytes;
};

}  // namespace mrziphoto::detail

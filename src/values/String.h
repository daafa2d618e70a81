#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Export.h"
#include "Object.h"

namespace mrziphoto {

class Value;

/// An unchangeable text. It may be a slice of a larger buffer (a whole catalogue file), which it
/// keeps alive; copying one copies no characters.
class MRZIPHOTO_EXPORT String {
 public:
  /// How the characters lie in memory.
  enum class Encoding : std::uint8_t { utf8, utf16BigEndian, utf16LittleEndian };

  /// The empty text.
  String() = default;
  /// A copy of the characters; what is not well-formed UTF-8 in them becomes U+FFFD.
  explicit String(std::string_view text);
  /// Takes ownership of `text`, with the same repairs.
  static String holding(std::string text);
  /// The bytes as they lie, kept alive by `owner` (empty for texts that live for ever). UTF-8
  /// bytes must be well-formed. A slice has fewer than 2^32 bytes.
  String(Ref<Object> owner, std::string_view bytes, Encoding encoding = Encoding::utf8)
      : _owner(std::move(owner)), _bytes(bytes), _encoding(encoding) {}

  /// The text as UTF-8; a lone surrogate of a UTF-16 text becomes U+FFFD.
  [[nodiscard]] std::string utf8() const;
  /// Calls `use` with the text as UTF-8, without a copy where it lies so in memory.
  template <class Use>
  decltype(auto) withUtf8(Use&& use) const {
    if (_encoding == Encoding::utf8) {
      return use(_bytes);
    }
    const std::string text = utf8();
    return use(std::string_view(text));
  }

  [[nodiscard]] const Ref<Object>& owner() const { return _owner; }
  [[nodiscard]] std::string_view bytes() const { return _bytes; }
  [[nodiscard]] Encoding encoding() const { return _encoding; }
  [[nodiscard]] bool empty() const { return _bytes.empty(); }

  bool operator==(const String& other) const;
  bool operator==(std::string_view other) const;

 private:
  friend class Value;  // takes the owner over

  Ref<Object> _owner;
  std::string_view _bytes;
  Encoding _encoding = Encoding::utf8;
};

}  // namespace mrziphoto

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "../../propertylist/detail/XmlScanner.h"
#include "../../propertylist/detail/XmlWords.h"

namespace mrziphoto {

/// Walks over the markup of a property list the way such files are really written: plain tags,
/// texts, white space between them, and nothing else. The file passes through a window, so that
/// little of it is in memory at a time.
///
/// Whatever is not so plain, or not as it should be, makes an operation throw `Unusual`; a reader
/// that knows all of XML then decides. What this one accepts, that one reads in the same way.
class PlainMarkup {
 public:
  struct Unusual {};
  /// Reads the next bytes of the file; answers how many there were, 0 at its end.
  using Read = std::function<std::size_t(std::span<char> room)>;

  /// A tag as one number: its name, of seven letters at most, and what kind of tag it is.
  using Tag = std::uint64_t;
  static constexpr Tag start(std::string_view name) { return detail::XmlScanner::wordOf(name); }
  static constexpr Tag end(std::string_view name) { return start(name) | kEnd; }
  static constexpr Tag empty(std::string_view name) { return start(name) | kEmpty; }

  static constexpr std::size_t kWindow = std::size_t{1} << 18;

  explicit PlainMarkup(Read read, std::size_t window = kWindow);

  /// Passes all that stands before the root element, which must be <plist>, and its start tag.
  void prolog();
  /// Passes the next tag.
  Tag next();
  /// Passes the rest of an element that holds nothing but text, with its end tag. The text lasts
  /// until anything else is passed.
  std::string_view textOf(Tag element);
  /// The element that `textOf` has passed, with its tags.
  [[nodiscard]] std::string_view element() const {
    return {_tag, static_cast<std::size_t>(_at - _tag)};
  }
  /// A run of bytes that was passed: tags and what stands between them.
  class Passage {
   public:
    [[nodiscard]] bool empty() const { return _bytes.empty(); }

   private:
    friend class PlainMarkup;
    std::string _bytes;
    std::size_t _tag = 0;  // the last start tag in it
  };
  /// Where something stands in the file.
  struct Place {
    const char* at;
    std::uint64_t moves;
  };
  [[nodiscard]] Place place() const { return {_at, _moves}; }
  /// Stores in `passage` what was passed since `place`, which must end with a tag; the empty
  /// passage when the window has moved since.
  void keepPassedSince(const Place& place, Passage& passage) const;
  /// Passes the very bytes of an earlier passage, if they come next. They need not be looked at
  /// anew: files repeat themselves in what stands between texts.
  bool passAgain(const Passage& passage) {
    const std::size_t size = passage._bytes.size();
    if (static_cast<std::size_t>(_end - _at) < size ||
        std::memcmp(_at, passage._bytes.data(), size) != 0) {
      return false;
    }
    _tag = _at + passage._tag;
    _at += size;
    return true;
  }
  /// Passes what may follow the root element.
  void finish();

 private:
  static constexpr Tag kEnd = Tag{1} << 56;
  static constexpr Tag kEmpty = Tag{2} << 56;
  // Zeros follow the window and end every search, so that a step may look ahead without checking
  // for the window's end.
  static constexpr std::size_t kMargin = 32;

  void passProlog();
  Tag unusualNext(const char* at);
  std::string_view unusualTextOf(Tag element);
  /// Brings more of the file into the window, which then begins at `_tag`. False at the file's end.
  bool readOn();

  Read _read;
  std::unique_ptr<char[]> _window;
  std::size_t _size;
  bool _isAtEnd = false;
  const char* _at = nullptr;
  const char* _end = nullptr;
  const char* _tag = nullptr;  // the tag that was passed last
  std::uint64_t _moves = 0;    // of the window
  std::string _text;           // the last text that had to be decoded
};

inline PlainMarkup::Tag PlainMarkup::next() {
  const char* at = _at;
  while (*at == '\n' || *at == '\t' || *at == ' ' || *at == '\r') {
    ++at;
  }
  const std::uint64_t word = detail::xml::load(at + 1);
  const unsigned length = detail::xml::lettersIn(word);
  if (*at == '<' && length != 0 && length < sizeof word && at[1 + length] == '>') [[likely]] {
    _tag = at;
    _at = at + length + 2;
    return detail::xml::lowest(word, length);
  }
  return unusualNext(at);
}

}  // namespace mrziphoto

#include "ArchiveType.h"

#include <algorithm>
#include <charconv>

#include "../../values/Limits.h"
#include "../../values/detail/Formatted.h"

namespace mrziphoto::detail {
namespace {

constexpr std::string_view kScalars = "cCsSiIlLqQBfd@#*:%+!";
constexpr char kWithoutBytes = '!';

constexpr int kMostWithoutBytes = 8;
constexpr std::uint32_t kMostElements = 0x7FFFFFFF;
// More than any archive holds, and small enough to be multiplied with a count of elements.
constexpr std::uint64_t kFarTooMany = std::uint64_t{1} << 32;

}  // namespace

class ArchiveType::Parser {
 public:
  Parser(std::string_view text, std::size_t offset, std::vector<Step>& steps)
      : _text(text), _offset(offset), _steps(steps) {}

  /// The types up to the closing character, which is taken with them, or up to the end of the text
  /// when that is 0. Answers the fewest bytes that their values take up.
  std::uint64_t sequence(char closer) {
    if (const std::uint32_t deepest = Limits::current().typeNesting; ++_depth > deepest) {
      failArchive(_offset,
                  formatted("type descriptor error: types are nested more than {} deep", deepest));
    }
    std::uint64_t leastBytes = 0;
    while (!isClosed(closer)) {
      const std::uint64_t bytes = one(_text[_at++]);
      if (bytes == 0 && ++_withoutBytes > kMostWithoutBytes) {
        failArchive(_offset, "type descriptor error: too many types without bytes");
      }
      leastBytes = std::min(leastBytes + bytes, kFarTooMany);
    }
    --_depth;
    return leastBytes;
  }

 private:
  bool isClosed(char closer) {
    if (_at == _text.size()) {
      if (closer != '\0') {
        fail(_text, std::string("missing '") + closer + "' in type descriptor");
      }
      return true;
    }
    if (closer != '\0' && _text[_at] == closer) {
      ++_at;
      return true;
    }
    return false;
  }

  std::uint64_t one(char code) {
    if (code == '[') {
      return array();
    }
    if (code == '{') {
      skipName();
      return sequence('}');
    }
    if (code == ']' || code == '}') {
      fail(_text, "excess characters in type descriptor");
    }
    if (kScalars.find(code) == std::string_view::npos) {
      fail({&code, 1}, "unknown type descriptor");
    }
    _steps.push_back({Step::Kind::scalar, code, 1, 0});
    return code == kWithoutBytes ? 0 : 1;
  }

  std::uint64_t array() {
    const std::uint32_t count = elementCount();
    const std::size_t step = _steps.size();
    _steps.push_back({Step::Kind::repeat, '[', count, 0});
    const std::uint64_t elementBytes = sequence(']');
    if (elementBytes == 0 && count != 0) {
      fail(_text, "array elements without bytes");
    }
    _steps[step].body = static_cast<std::uint32_t>(_steps.size() - step - 1);
    const char code = _steps.back().code;
    if (_steps[step].body == 1 && (code == 'c' || code == 'C')) {
      _steps.pop_back();
      _steps[step] = {Step::Kind::bytes, code, count, 0};
    }
    return std::min(elementBytes * count, kFarTooMany);
  }

  std::uint32_t elementCount() {
    std::uint32_t count = 0;
    const char* end = _text.data() + _text.size();
    const auto [stop, error] = std::from_chars(_text.data() + _at, end, count);
    if (error != std::errc() || count > kMostElements) {
      fail(_text, "unusable number of array elements");
    }
    _at = static_cast<std::size_t>(stop - _text.data());
    return count;
  }

  /// A structure may begin with its name, which ends in '='.
  void skipName() {
    const std::size_t stop = _text.find_first_of("={}[]()", _at);
    if (stop != std::string_view::npos && _text[stop] == '=') {
      _at = stop + 1;
    }
  }

  [[noreturn]] void fail(std::string_view part, std::string_view what) const {
    failArchive(_offset, formatted("type descriptor error for '{}': {}", part, what));
  }

  std::string_view _text;
  std::size_t _offset;
  std::vector<Step>& _steps;
  std::size_t _at = 0;
  std::uint32_t _depth = 0;
  int _withoutBytes = 0;
};

ArchiveType::ArchiveType(std::string_view text, std::size_t offset) : _text(text) {
  if (text.empty() || text.size() > Limits::current().typeString) {
    failArchive(offset, formatted("type descriptor error: a type string of {} bytes", text.size()));
  }
  _leastBytes = Parser(text, offset, _steps).sequence('\0');
}

}  // namespace mrziphoto::detail

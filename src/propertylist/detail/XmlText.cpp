#include "XmlText.h"

#include <algorithm>
#include <array>
#include <iconv.h>

#include "XmlScanner.h"

namespace mrziphoto::detail {
namespace {

constexpr std::string_view kUtf8 = "UTF-8";

/// An encoding and the byte order mark of its documents.
struct Signature {
  std::string_view mark;
  std::string_view encoding;
};

constexpr std::array kSignatures{Signature{"\xEF\xBB\xBF", kUtf8},
                                 Signature{"\xFE\xFF", "UTF-16BE"},
                                 Signature{"\xFF\xFE", "UTF-16LE"}};

/// Encodings that the first bytes of a document tell.
Signature signatureOf(std::string_view file) {
  for (const Signature& signature : kSignatures) {
    if (file.starts_with(signature.mark)) {
      return signature;
    }
  }
  // No document holds the character 0, so a zero byte tells the order of UTF-16's bytes.
  if (file.size() >= 2 && file[0] == '\0' && file[1] != '\0') {
    return {{}, "UTF-16BE"};
  }
  if (file.size() >= 2 && file[0] != '\0' && file[1] == '\0') {
    return {{}, "UTF-16LE"};
  }
  return {{}, kUtf8};
}

bool isSameName(std::string_view one, std::string_view other) {
  constexpr auto lower = [](char each) {
    return each >= 'A' && each <= 'Z' ? each + 32 : each + 0;
  };
  return std::ranges::equal(one, other, {}, lower, lower);
}

/// Bytes of one encoding turned into UTF-8.
class Converter {
 public:
  Converter(const std::string& encoding, std::string_view bytes)
      : _handle(iconv_open(kUtf8.data(), encoding.c_str())), _bytes(bytes) {}
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  ~Converter() {
    if (knowsEncoding()) {
      iconv_close(_handle);
    }
  }

  // iconv's way of saying "none".
  [[nodiscard]] bool knowsEncoding() const { return _handle != reinterpret_cast<iconv_t>(-1); }
  /// What has not been converted yet.
  [[nodiscard]] std::string_view rest() const { return _bytes; }

  /// Writes as many whole characters as there are, and as there is room for; answers how many
  /// bytes that gave.
  std::size_t convert(char* out, std::size_t room) {
    const std::size_t before = room;
    auto* in = const_cast<char*>(_bytes.data());  // iconv only reads it
    std::size_t left = _bytes.size();
    if (left != 0) {
      iconv(_handle, &in, &left, &out, &room);
      _bytes.remove_prefix(_bytes.size() - left);
    }
    if (left == 0) {
      iconv(_handle, nullptr, nullptr, &out, &room);  // what some encodings hold back
    }
    return before - room;
  }

 private:
  iconv_t _handle;
  std::string_view _bytes;
};

/// The length of the text that the bytes give, up to its first character 0, which ends a document:
/// a file with a hole of some gigabytes is full of them.
std::size_t convertedLength(Converter& converter) {
  std::array<char, 16384> scratch;
  std::size_t length = 0;
  while (const std::size_t count = converter.convert(scratch.data(), scratch.size())) {
    const auto* const zero = std::find(scratch.data(), scratch.data() + count, '\0');
    if (zero != scratch.data() + count) {
      return length + static_cast<std::size_t>(zero - scratch.data()) + 1;
    }
    length += count;
  }
  return length;
}

}  // namespace

XmlText::XmlText(const Data& file) {
  const Signature signature = signatureOf(file.bytes());
  _marked = signature.mark.size();
  _file = file.slice(_marked, file.size());
  readAs(std::string(signature.encoding));
}

bool XmlText::readAs(const std::string& encoding) {
  _encoding = encoding;
  if (encoding == kUtf8) {
    _utf8 = _file;
    return true;
  }
  // Converts twice: memory for the longest possible text would be a multiple of the file.
  Converter measured(encoding, _file.bytes());
  if (!measured.knowsEncoding()) {
    return false;
  }
  const std::size_t length = convertedLength(measured);
  _isCut = !measured.rest().empty();
  _utf8 = {};
  if (length != 0) {
    _utf8 = Data::filled(
        length, [&](char* start) { Converter(encoding, _file.bytes()).convert(start, length); });
  }
  return true;
}

void XmlText::obeyDeclaration() {
  const Data before = _utf8;
  XmlScanner scanner(before.bytes());
  const std::string declared(scanner.declaration());
  if (declared.empty() || isSameName(declared, _encoding)) {
    return;
  }
  const auto fail = [&](std::string_view what) {
    _encoding = kUtf8;
    _utf8 = before;
    scanner.fail(std::string(what) + " \"" + declared + "\"");
  };
  if (_encoding != kUtf8) {
    if (!isSameName(declared, "UTF-16")) {
      scanner.fail("is written in " + _encoding + " but declares \"" + declared + "\"");
    }
    return;
  }
  if (!readAs(declared)) {
    fail("declares the unknown encoding");
  }
  if (!_utf8.bytes().starts_with(before.bytes().substr(0, scanner.offset()))) {
    fail("is not written in the encoding that it declares,");
  }
}

std::size_t XmlText::lineOf(std::size_t place) const {
  const std::string_view before = _utf8.bytes().substr(0, place);
  std::size_t line = 1;
  for (std::size_t i = 0; i < before.size(); ++i) {
    const bool endsLine = before[i] == '\n' ? i == 0 || before[i - 1] != '\r' : before[i] == '\r';
    line += endsLine ? 1 : 0;
  }
  return line;
}

std::size_t XmlText::byteOf(std::size_t place) const {
  if (_encoding == kUtf8) {
    return _marked + place;
  }
  // Converts the text again up to the place, which happens at most once for a document.
  std::array<char, 16384> scratch;
  Converter converter(_encoding, _file.bytes());
  while (const std::size_t count =
             converter.convert(scratch.data(), std::min(place, scratch.size()))) {
    place -= count;
  }
  return _marked + _file.size() - converter.rest().size();
}

}  // namespace mrziphoto::detail

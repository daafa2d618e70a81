#include "sample/PropertyListStream.h"

#include <array>
#include <charconv>
#include <utility>

namespace mrziphoto::sample {
namespace {

constexpr std::size_t kPiece = std::size_t{1} << 16;

// What a text may not hold as it is. Other control characters do not exist in XML.
std::string_view escaped(char character) {
  switch (character) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '\r':
      return "&#13;";
    case '\n':
    case '\t':
      return {};
    default:
      return static_cast<unsigned char>(character) < ' ' ? "\uFFFD" : std::string_view();
  }
}

void appendEscaped(std::string& to, std::string_view text) {
  for (const char character : text) {
    if (const std::string_view replacement = escaped(character); !replacement.empty()) {
      to += replacement;
    } else {
      to += character;
    }
  }
}

template <class... Number>
std::string_view decimal(std::array<char, 64>& room, Number... number) {
  const auto end = std::to_chars(room.data(), room.data() + room.size(), number...).ptr;
  return {room.data(), end};
}

}  // namespace

PropertyListStream::PropertyListStream(std::string path) : _file(std::move(path)) {
  _text.reserve(2 * kPiece);
  line("<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
  line(
      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
      "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">");
  line("<plist version=\"1.0\">");
}

void PropertyListStream::finish() {
  line("</plist>");
  writeText();
  _file.close();
}

void PropertyListStream::string(std::uint32_t number) {
  std::array<char, 64> room;
  string(decimal(room, number));
}

void PropertyListStream::integer(std::int64_t number) {
  std::array<char, 64> room;
  element("integer", decimal(room, number));
}

void PropertyListStream::real(double number) {
  std::array<char, 64> room;
  element("real", decimal(room, number, std::chars_format::fixed, 6));
}

void PropertyListStream::open(std::string_view tag) {
  indent();
  _text += tag;
  ++_depth;
}

void PropertyListStream::close(std::string_view tag) {
  --_depth;
  indent();
  _text += tag;
}

void PropertyListStream::line(std::string_view text) {
  indent();
  _text += text;
  _text += '\n';
}

void PropertyListStream::element(std::string_view tag, std::string_view text) {
  indent();
  _text.append("<").append(tag).append(">");
  appendEscaped(_text, text);
  _text.append("</").append(tag).append(">\n");
  if (_text.size() >= kPiece) {
    writeText();
  }
}

void PropertyListStream::writeText() {
  _file.write(_text);
  _text.clear();
}

}  // namespace mrziphoto::sample

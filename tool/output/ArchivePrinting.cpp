#include "ArchivePrinting.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include <MRZiPhoto/values/detail/Text.h>

#include "JsonText.h"
#include "TerminalText.h"

namespace mrziphoto::tool {
namespace {

using Kind = ArchiveItem::Kind;

constexpr std::size_t kBytesShown = 24;
// Deeper lines are not indented further, or the blanks would outweigh everything else.
constexpr std::size_t kMostIndented = 64;

std::string hex(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string result;
  result.reserve(2 * bytes.size());
  for (const char each : bytes) {
    const auto byte = static_cast<unsigned char>(each);
    result += kDigits[byte >> 4U];
    result += kDigits[byte & 0xFU];
  }
  return result;
}

template <class Number>
std::string digits(Number number) {
  std::array<char, 64> buffer{};
  return {buffer.data(), std::to_chars(buffer.begin(), buffer.end(), number).ptr};
}

std::string numberText(const ArchiveItem& item) {
  if (item.kind == Kind::real) {
    return item.type == 'f' ? digits(static_cast<float>(item.real())) : digits(item.real());
  }
  return item.isUnsigned() ? digits(item.number) : digits(item.integer());
}

bool isText(const ArchiveItem& item) {
  return item.kind == Kind::sharedString || (item.kind == Kind::bytes && text::isUtf8(item.text()));
}

/// The items of a document, one after the other.
class Items {
 public:
  explicit Items(const ArchiveDocument& document) : _rest(document.items()) {}

  [[nodiscard]] bool isAt(Kind kind) const { return !_rest.empty() && _rest.front().kind == kind; }
  [[nodiscard]] bool isAtValue() const {
    return !_rest.empty() && !isAt(Kind::group) && !isAt(Kind::endOfObject);
  }
  const ArchiveItem& take() {
    const ArchiveItem& item = _rest.front();
    _rest = _rest.subspan(1);
    return item;
  }

 private:
  std::span<const ArchiveItem> _rest;
};

class LinePrinter {
 public:
  LinePrinter(Output& output, const ArchiveDocument& document)
      : _output(output), _document(document), _items(document) {}

  void print() {
    const bool isBigEndian = _document.byteOrder() == std::endian::big;
    _line = "archive: ";
    _line += isBigEndian ? "big-endian" : "little-endian";
    _line += ", streamer version " + digits(static_cast<int>(kStreamerVersion));
    _line += ", system version " + digits(_document.systemVersion());
    _line += ", " + digits(_document.length()) + " bytes";
    endLine();
    while (_items.isAt(Kind::group)) {
      printGroup(0);
    }
    if (!_document.trailingReason().empty()) {
      _line += digits(_document.trailingLength()) + " more bytes from offset " +
               digits(_document.length()) +
               " that are no part of the archive: " + _document.trailingReason();
      endLine();
    }
  }

 private:
  void beginLine(std::size_t level) { _line.append(2 * std::min(level, kMostIndented), ' '); }

  void endLine() {
    _output.text() += terminalText(_line);
    _output.text() += '\n';
    _output.flushIfLarge();
    _line.clear();
  }

  /// The type and the values on one line. Where objects stand among several values, each value has
  /// a line of its own.
  void printGroup(std::size_t level) {
    const std::string_view types = _items.take().text();
    beginLine(level);
    printName(types);
    _line += ':';
    const bool hasLines = types.size() > 1 && types.find('@') != std::string_view::npos;
    if (hasLines) {
      endLine();
      while (_items.isAtValue()) {
        beginLine(level + 1);
        printValue(level + 1);
      }
      return;
    }
    std::string_view separator = " ";
    bool isOpen = true;  // an object ends its last line itself
    while (_items.isAtValue()) {
      _line += separator;
      separator = ", ";
      isOpen = !_items.isAt(Kind::newObject);
      if (isOpen) {
        printPlain(_items.take());
      } else {
        printObject(level);
      }
    }
    if (isOpen) {
      endLine();
    }
  }

  void printValue(std::size_t level) {
    if (_items.isAt(Kind::newObject)) {
      printObject(level);
    } else {
      printPlain(_items.take());
      endLine();
    }
  }

  void printObject(std::size_t level) {
    const std::uint64_t number = _items.take().number;
    const std::uint64_t position = _items.take().number;
    _classes[number] = position;
    _line += "object " + digits(number) + ' ';
    printClass(position);
    endLine();
    while (!_items.isAt(Kind::endOfObject)) {
      printGroup(level + 1);
    }
    _items.take();
  }

  /// Without quotes, and so that no name breaks its line.
  void printName(std::string_view name) { JsonText::appendUnquoted(_line, name); }

  void printText(std::string_view text) {
    _line += '"';
    JsonText::appendUnquoted(_line, text);
    _line += '"';
  }

  /// With its superclasses and their versions where it stands first.
  void printClass(std::uint64_t position) {
    const auto classes = _document.classes();
    printName(classes[position].name);
    if (position < _classesPrinted) {
      return;
    }
    std::optional<std::uint32_t> each = static_cast<std::uint32_t>(position);
    for (;;) {
      _line += " (" + digits(classes[*each].version) + ')';
      _classesPrinted = std::max<std::uint64_t>(_classesPrinted, *each + 1);
      each = classes[*each].superclass;
      if (!each) {
        return;
      }
      _line += " : ";
      printName(classes[*each].name);
    }
  }

  void printPlain(const ArchiveItem& item) {
    switch (item.kind) {
      case Kind::nil:
        _line += "nil";
        return;
      case Kind::integer:
      case Kind::real:
        _line += numberText(item);
        return;
      case Kind::bytes:
      case Kind::rawBytes:
      case Kind::sharedString:
        return isText(item) ? printText(item.text()) : printBytes(item.text());
      case Kind::classReference:
        _line += "class ";
        return printClass(item.number);
      case Kind::cString:
        printText(_document.cStrings()[item.number].text);
        _line += " (C string " + digits(_document.cStrings()[item.number].number) + ')';
        return;
      case Kind::objectReference:
        _line += "see object " + digits(item.number) + ' ';
        printName(_document.classes()[_classes[item.number]].name);
        return;
      case Kind::newObject:
      case Kind::group:
      case Kind::endOfObject:
        return;
    }
  }

  void printBytes(std::string_view bytes) {
    _line += digits(bytes.size()) + (bytes.size() == 1 ? " byte" : " bytes");
    if (!bytes.empty()) {
      _line += " <" + hex(bytes.substr(0, kBytesShown));
      _line += bytes.size() > kBytesShown ? "...>" : ">";
    }
  }

  Output& _output;
  const ArchiveDocument& _document;
  Items _items;
  std::string _line;
  std::uint64_t _classesPrinted = 0;
  std::unordered_map<std::uint64_t, std::uint64_t> _classes;  // of objects, by their numbers
};

class JsonPrinter {
 public:
  JsonPrinter(Output& output, const ArchiveDocument& document)
      : _output(output), _document(document), _items(document) {}

  void print() {
    const bool isBigEndian = _document.byteOrder() == std::endian::big;
    _json.beginObject();
    field("byteOrder", isBigEndian ? "bigEndian" : "littleEndian");
    field("streamerVersion", static_cast<int>(kStreamerVersion));
    field("systemVersion", _document.systemVersion());
    field("length", _document.length());
    printClasses();
    printGroups();
    printTrailing();
    _json.endObject();
    _output.text() += '\n';
  }

 private:
  void field(std::string_view name, std::string_view text) {
    _json.name(name);
    _json.text(text);
  }
  template <class Number>
  requires std::integral<Number>
  void field(std::string_view name, Number number) {
    _json.name(name);
    _json.number(digits(number));
  }

  void printClasses() {
    _json.name("classes");
    _json.beginList();
    for (const ArchiveClass& each : _document.classes()) {
      _json.beginObject();
      field("number", each.number);
      field("name", each.name);
      field("version", each.version);
      if (each.superclass) {
        field("superclass", _document.classes()[*each.superclass].number);
      } else {
        _json.name("superclass");
        _json.null();
      }
      _json.endObject();
    }
    _json.endList();
  }

  void printTrailing() {
    _json.name("trailing");
    if (_document.trailingReason().empty()) {
      return _json.null();
    }
    _json.beginObject();
    field("offset", _document.length());
    field("length", _document.trailingLength());
    field("reason", _document.trailingReason());
    _json.endObject();
  }

  void printGroups() {
    _json.name("groups");
    _json.beginList();
    while (_items.isAt(Kind::group)) {
      _json.beginObject();
      field("types", _items.take().text());
      _json.name("values");
      _json.beginList();
      while (_items.isAtValue()) {
        printValue(_items.take());
      }
      _json.endList();
      _json.endObject();
      _output.flushIfLarge();
    }
    _json.endList();
  }

  void printValue(const ArchiveItem& item) {
    switch (item.kind) {
      case Kind::nil:
        return _json.null();
      case Kind::integer:
        return _json.number(numberText(item));
      case Kind::real:
        return std::isfinite(item.real()) ? _json.number(numberText(item))
                                          : _json.text(numberText(item));
      case Kind::bytes:
      case Kind::rawBytes:
      case Kind::sharedString:
        if (isText(item)) {
          return _json.text(item.text());
        }
        break;
      case Kind::classReference:
      case Kind::cString:
      case Kind::newObject:
      case Kind::objectReference:
        break;
      case Kind::group:
      case Kind::endOfObject:
        return;
    }
    _json.beginObject();
    printFields(item);
    _json.endObject();
  }

  /// Of a value that is written as an object.
  void printFields(const ArchiveItem& item) {
    if (item.kind == Kind::newObject) {
      field("object", item.number);
      field("class", _document.classes()[_items.take().number].name);
      printGroups();
      _items.take();  // its end
    } else if (item.kind == Kind::objectReference) {
      field("reference", item.number);
    } else if (item.kind == Kind::classReference) {
      field("class", _document.classes()[item.number].name);
      field("number", _document.classes()[item.number].number);
    } else if (item.kind == Kind::cString) {
      field("cString", _document.cStrings()[item.number].number);
      field("text", _document.cStrings()[item.number].text);
    } else {
      field("bytes", item.text().size());
      field("hex", hex(item.text()));
    }
  }

  Output& _output;
  const ArchiveDocument& _document;
  Items _items;
  JsonText _json{_output.text(), JsonText::ControlCharacters::numbered};
};

}  // namespace

void writeArchiveLines(Output& output, const ArchiveDocument& document) {
  LinePrinter(output, document).print();
}

void writeArchiveJson(Output& output, const ArchiveDocument& document) {
  JsonPrinter(output, document).print();
}

}  // namespace mrziphoto::tool

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "../values/Text.h"
#include "../values/detail/NumberTypes.h"
#include "ArchiveDocument.h"
#include "detail/ArchiveContents.h"

namespace mrziphoto {
namespace {

using detail::ArchiveItem;
using Kind = ArchiveItem::Kind;

constexpr std::size_t kBytesShown = 24;
// Deeper lines are not indented further, or the blanks would outweigh everything else.
constexpr std::size_t kMostIndented = 64;
constexpr std::string_view kHexDigits = "0123456789abcdef";

void appendHex(std::string& out, std::string_view bytes) {
  for (const char each : bytes) {
    const auto byte = static_cast<unsigned char>(each);
    out += kHexDigits[byte >> 4];
    out += kHexDigits[byte & 0xF];
  }
}

/// With escapes, as JSON has them between its quotes; ill-formed parts become U+FFFD.
void appendEscaped(std::string& out, std::string_view bytes) {
  const std::string repaired = text::isUtf8(bytes) ? std::string() : text::repairedUtf8(bytes);
  for (const char each : repaired.empty() ? bytes : std::string_view(repaired)) {
    if (each == '"' || each == '\\') {
      out += '\\';
      out += each;
    } else if (each == '\n') {
      out += "\\n";
    } else if (static_cast<unsigned char>(each) < 0x20 || each == '\x7F') {
      out += "\\u00";
      appendHex(out, {&each, 1});
    } else {
      out += each;
    }
  }
}

void appendJsonText(std::string& out, std::string_view bytes) {
  out += '"';
  appendEscaped(out, bytes);
  out += '"';
}

template <class Number>
void appendNumber(std::string& out, Number number) {
  std::array<char, 64> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  out.append(digits.data(), end.ptr);
}

void appendReal(std::string& out, const ArchiveItem& item) {
  if (item.type == 'f') {
    appendNumber(out, static_cast<float>(item.real()));
  } else {
    appendNumber(out, item.real());
  }
}

void appendInteger(std::string& out, const ArchiveItem& item) {
  const detail::IntegerType* type = detail::integerType(item.type);
  if (type != nullptr && !type->isSigned) {
    appendNumber(out, item.number);
  } else {
    appendNumber(out, item.integer());
  }
}

std::string_view byteOrderName(std::endian byteOrder, std::string_view big,
                               std::string_view little) {
  return byteOrder == std::endian::big ? big : little;
}

}  // namespace

class ArchiveDocument::TextPrinter {
 public:
  explicit TextPrinter(const Contents& contents) : _contents(contents) {}

  std::string print() {
    _out = "archive: ";
    _out += byteOrderName(_contents.byteOrder, "big-endian", "little-endian");
    _out += ", streamer version " + std::to_string(detail::kStreamerVersion);
    _out += ", system version " + std::to_string(_contents.systemVersion);
    _out += ", " + std::to_string(_contents.length) + " bytes\n";
    while (hasMore()) {
      printGroup(0);
    }
    if (!_contents.trailingReason.empty()) {
      _out += std::to_string(_contents.data.size() - _contents.length) +
              " more bytes from offset " + std::to_string(_contents.length) +
              " that are no part of the archive: " + _contents.trailingReason + "\n";
    }
    return std::move(_out);
  }

 private:
  [[nodiscard]] bool hasMore() const { return _at < _contents.items.size(); }
  [[nodiscard]] Kind nextKind() const { return _contents.items[_at].kind; }
  [[nodiscard]] bool isAtValue() const {
    return hasMore() && nextKind() != Kind::group && nextKind() != Kind::endOfObject;
  }
  const ArchiveItem& take() { return _contents.items[_at++]; }

  void beginLine(std::size_t level) { _out.append(2 * std::min(level, kMostIndented), ' '); }

  /// The type and the values on one line. Where objects stand among several values, each value has
  /// a line of its own.
  void printGroup(std::size_t level) {
    const std::string_view types = take().text();
    beginLine(level);
    printName(types);
    _out += ':';
    const bool hasLines = types.size() > 1 && types.find('@') != std::string_view::npos;
    if (hasLines) {
      _out += '\n';
      while (isAtValue()) {
        beginLine(level + 1);
        printValue(level + 1);
      }
      return;
    }
    std::string_view separator = " ";
    bool isOpen = true;  // an object ends its last line itself
    while (isAtValue()) {
      _out += separator;
      separator = ", ";
      isOpen = nextKind() != Kind::newObject;
      if (isOpen) {
        printPlain(take());
      } else {
        printObject(level);
      }
    }
    if (isOpen) {
      _out += '\n';
    }
  }

  void printValue(std::size_t level) {
    if (nextKind() == Kind::newObject) {
      printObject(level);
    } else {
      printPlain(take());
      _out += '\n';
    }
  }

  void printObject(std::size_t level) {
    const std::uint64_t number = take().number;
    _out += "object " + std::to_string(number) + ' ';
    _classes[number] = static_cast<std::uint32_t>(_contents.items[_at].number);
    printClass(take().number);
    _out += '\n';
    while (nextKind() != Kind::endOfObject) {
      printGroup(level + 1);
    }
    take();
  }

  /// Without quotes, and so that no name breaks its line.
  void printName(std::string_view name) { appendEscaped(_out, name); }

  /// With its superclasses and their versions where it stands first.
  void printClass(std::uint64_t position) {
    const auto& classes = _contents.classes;
    printName(classes[position].name);
    if (position < _classesPrinted) {
      return;
    }
    std::optional<std::uint32_t> each = static_cast<std::uint32_t>(position);
    for (;;) {
      _out += " (" + std::to_string(classes[*each].version) + ')';
      _classesPrinted = std::max<std::uint64_t>(_classesPrinted, *each + 1);
      each = classes[*each].superclass;
      if (!each) {
        return;
      }
      _out += " : ";
      printName(classes[*each].name);
    }
  }

  void printPlain(const ArchiveItem& item) {
    switch (item.kind) {
      case Kind::nil:
        _out += "nil";
        return;
      case Kind::integer:
        return appendInteger(_out, item);
      case Kind::real:
        return appendReal(_out, item);
      case Kind::bytes:
        return text::isUtf8(item.text()) ? appendJsonText(_out, item.text())
                                         : printBytes(item.text());
      case Kind::rawBytes:
        return printBytes(item.text());
      case Kind::sharedString:
        return appendJsonText(_out, item.text());
      case Kind::classReference:
        _out += "class ";
        return printClass(item.number);
      case Kind::cString:
        appendJsonText(_out, _contents.cStrings[item.number].text);
        _out += " (C string " + std::to_string(_contents.cStrings[item.number].number) + ')';
        return;
      case Kind::objectReference:
        _out += "see object " + std::to_string(item.number) + ' ';
        printName(_contents.classes[_classes[item.number]].name);
        return;
      case Kind::newObject:
      case Kind::group:
      case Kind::endOfObject:
        return;
    }
  }

  void printBytes(std::string_view bytes) {
    _out += std::to_string(bytes.size()) + (bytes.size() == 1 ? " byte" : " bytes");
    if (bytes.empty()) {
      return;
    }
    _out += " <";
    appendHex(_out, bytes.substr(0, kBytesShown));
    _out += bytes.size() > kBytesShown ? "...>" : ">";
  }

  const Contents& _contents;
  std::string _out;
  std::size_t _at = 0;
  std::uint64_t _classesPrinted = 0;
  std::unordered_map<std::uint64_t, std::uint32_t> _classes;  // of objects, by their numbers
};

class ArchiveDocument::JsonPrinter {
 public:
  explicit JsonPrinter(const Contents& contents) : _contents(contents) {}

  std::string print() {
    _out = R"({"byteOrder":")";
    _out += byteOrderName(_contents.byteOrder, "bigEndian", "littleEndian");
    _out += R"(","streamerVersion":)" + std::to_string(detail::kStreamerVersion);
    _out += R"(,"systemVersion":)" + std::to_string(_contents.systemVersion);
    _out += R"(,"length":)" + std::to_string(_contents.length);
    printClasses();
    _out += ',';
    printGroups();
    _out += R"(,"trailing":)";
    printTrailing();
    _out += '}';
    return std::move(_out);
  }

 private:
  [[nodiscard]] bool isAt(Kind kind) const {
    return _at < _contents.items.size() && _contents.items[_at].kind == kind;
  }
  [[nodiscard]] bool isAtValue() const {
    return _at < _contents.items.size() && !isAt(Kind::group) && !isAt(Kind::endOfObject);
  }
  const ArchiveItem& take() { return _contents.items[_at++]; }

  void separate() {
    if (_out.back() != '[') {
      _out += ',';
    }
  }

  void printClasses() {
    _out += R"(,"classes":[)";
    for (const auto& record : _contents.classes) {
      separate();
      _out += R"({"number":)" + std::to_string(record.number) + R"(,"name":)";
      appendJsonText(_out, record.name);
      _out += R"(,"version":)" + std::to_string(record.version) + R"(,"superclass":)";
      _out += record.superclass ? std::to_string(_contents.classes[*record.superclass].number)
                                : std::string("null");
      _out += '}';
    }
    _out += ']';
  }

  void printTrailing() {
    if (_contents.trailingReason.empty()) {
      _out += "null";
      return;
    }
    _out += R"({"offset":)" + std::to_string(_contents.length) + R"(,"length":)" +
            std::to_string(_contents.data.size() - _contents.length) + R"(,"reason":)";
    appendJsonText(_out, _contents.trailingReason);
    _out += '}';
  }

  void printGroups() {
    _out += R"("groups":[)";
    while (isAt(Kind::group)) {
      separate();
      _out += R"({"types":)";
      appendJsonText(_out, take().text());
      _out += R"(,"values":[)";
      while (isAtValue()) {
        separate();
        printValue(take());
      }
      _out += "]}";
    }
    _out += ']';
  }

  void printClass(const ArchiveItem& item) {
    _out += R"("class":)";
    appendJsonText(_out, _contents.classes[item.number].name);
  }

  void printValue(const ArchiveItem& item) {
    switch (item.kind) {
      case Kind::nil:
        _out += "null";
        return;
      case Kind::integer:
        return appendInteger(_out, item);
      case Kind::real:
        return printReal(item);
      case Kind::bytes:
        return text::isUtf8(item.text()) ? appendJsonText(_out, item.text())
                                         : printBytes(item.text());
      case Kind::rawBytes:
        return printBytes(item.text());
      case Kind::sharedString:
        return appendJsonText(_out, item.text());
      case Kind::classReference:
        _out += '{';
        printClass(item);
        _out += R"(,"number":)" + std::to_string(_contents.classes[item.number].number) + '}';
        return;
      case Kind::cString:
        _out += R"({"cString":)" + std::to_string(_contents.cStrings[item.number].number) +
                R"(,"text":)";
        appendJsonText(_out, _contents.cStrings[item.number].text);
        _out += '}';
        return;
      case Kind::newObject:
        _out += R"({"object":)" + std::to_string(item.number) + ',';
        printClass(take());
        _out += ',';
        printGroups();
        take();  // its end
        _out += '}';
        return;
      case Kind::objectReference:
        _out += R"({"reference":)" + std::to_string(item.number) + '}';
        return;
      case Kind::group:
      case Kind::endOfObject:
        return;
    }
  }

  void printReal(const ArchiveItem& item) {
    if (std::isfinite(item.real())) {
      return appendReal(_out, item);
    }
    _out += '"';
    appendReal(_out, item);
    _out += '"';
  }

  void printBytes(std::string_view bytes) {
    _out += R"({"bytes":)" + std::to_string(bytes.size()) + R"(,"hex":")";
    appendHex(_out, bytes);
    _out += "\"}";
  }

  const Contents& _contents;
  std::string _out;
  std::size_t _at = 0;
};

std::string ArchiveDocument::text() const { return TextPrinter(*_contents).print(); }

std::string ArchiveDocument::json() const { return JsonPrinter(*_contents).print(); }

}  // namespace mrziphoto

#include "PropertyListWriter.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>

#include "../values/Array.h"
#include "../values/Dictionary.h"
#include "../values/Limits.h"
#include "../values/NSException.h"
#include "../values/Text.h"
#include "detail/Base64.h"
#include "detail/XmlCharacters.h"

namespace mrziphoto {
namespace {

constexpr std::size_t kBase64BytesALine = 51;

[[noreturn]] void refuse(std::string_view what) {
  NSException::raise(kNSInvalidArgumentException, "a property list cannot hold %@", what);
}

std::string_view referenceFor(char character) {
  switch (character) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '\r':
      return "&#13;";
    default:
      return {};
  }
}

void appendEscaped(std::string& out, std::string_view text) {
  std::string_view rest = text;
  std::size_t taken = 0;
  while (!rest.empty()) {
    const std::size_t at = text.size() - rest.size();
    if (text::characterLength(rest) == 0 || !detail::xml::isAllowed(text::nextCharacter(rest))) {
      refuse("a character that XML does not allow");
    }
    const std::string_view reference = referenceFor(text[at]);
    if (!reference.empty()) {
      out.append(text.substr(taken, at - taken)).append(reference);
      taken = at + 1;
    }
  }
  out.append(text.substr(taken));
}

std::string realText(double value) {
  if (!std::isfinite(value)) {
    return std::isnan(value) ? "nan" : value > 0 ? "+infinity" : "-infinity";
  }
  std::array<char, 32> text{};
  const auto written = std::to_chars(text.data(), text.data() + text.size(), value);
  return {text.data(), written.ptr};
}

class Writer {
 public:
  Writer(std::string& out, std::size_t level) : _out(out), _margin(level) {}

  void value(const Value& value) {
    if (value.isWeak()) {
      refuse("a reference that may lead back to a value around it");
    }
    switch (value.kind()) {
      case Value::Kind::integer:
        integer(value);
        return;
      case Value::Kind::floating:
        element("real", realText(value.doubleValue()));
        return;
      case Value::Kind::decimal:
        element("real", value.description());
        return;
      case Value::Kind::string:
        element("string", *value.text());
        return;
      case Value::Kind::date:
        date(*value.date());
        return;
      case Value::Kind::data:
        data(value.data()->bytes());
        return;
      case Value::Kind::array:
        array(*value.array());
        return;
      case Value::Kind::dictionary:
        dictionary(*value.dictionary());
        return;
      case Value::Kind::nothing:
      case Value::Kind::object:
        break;
    }
    refuse(value.className());
  }

  void element(std::string_view name, std::string_view text) {
    indent();
    _out.append("<").append(name).append(">");
    appendEscaped(_out, text);
    _out.append("</").append(name).append(">\n");
  }

 private:
  void line(std::string_view text) {
    indent();
    _out.append(text).append("\n");
  }
  void indent() { _out.append(_margin + _nesting, '\t'); }

  void integer(const Value& value) {
    if (value.numberType() == 'B') {
      line(value.intValue() != 0 ? "<true/>" : "<false/>");
    } else {
      element("integer", value.description());
    }
  }

  void date(Date date) {
    const auto text = Date{std::floor(date.secondsSinceReferenceDate)}.iso8601();
    if (!text) {
      refuse("a date outside the years 1 to 9999");
    }
    element("date", *text);
  }

  void data(std::string_view bytes) {
    line("<data>");
    while (!bytes.empty()) {
      const std::string_view part = bytes.substr(0, kBase64BytesALine);
      indent();
      detail::appendBase64(_out, part);
      _out += '\n';
      bytes.remove_prefix(part.size());
    }
    line("</data>");
  }

  void array(const Array& array) {
    container("array", array.empty(), [&] {
      for (const Value& item : array) {
        value(item);
      }
    });
  }

  void dictionary(const Dictionary& dictionary) {
    container("dict", dictionary.empty(), [&] {
      for (const auto& [key, item] : dictionary) {
        element("key", key.text());
        value(item);
      }
    });
  }

  template <class Content>
  void container(const std::string& name, bool isEmpty, Content content) {
    if (_nesting >= Limits::current().nesting) {
      refuse("values that are nested so deeply");
    }
    if (isEmpty) {
      line("<" + name + "/>");
      return;
    }
    line("<" + name + ">");
    ++_nesting;
    content();
    --_nesting;
    line("</" + name + ">");
  }

  std::string& _out;
  std::size_t _margin;
  std::uint32_t _nesting = 0;
};

}  // namespace

std::string propertyListFromValue(const Value& value) {
  std::string result(kPropertyListBegin);
  appendPropertyListValue(result, value, 0);
  result += kPropertyListEnd;
  return result;
}

void appendPropertyListValue(std::string& out, const Value& value, std::size_t level) {
  Writer(out, level).value(value);
}

void appendPropertyListKey(std::string& out, std::string_view key, std::size_t level) {
  Writer(out, level).element("key", key);
}

}  // namespace mrziphoto

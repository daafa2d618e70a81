#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <utility>

#include "../values/Array.h"
#include "../values/Dictionary.h"
#include "../values/Limits.h"
#include "../values/NSException.h"
#include "../values/detail/Formatted.h"
#include "../values/detail/Text.h"
#include "PropertyList.h"
#include "detail/Base64.h"
#include "detail/XmlCharacters.h"

namespace mrziphoto {
namespace {

constexpr std::size_t kBase64BytesALine = 51;

[[noreturn]] void refuse(std::string_view what) {
  NSException::raise(kNSInvalidArgumentException,
                     detail::formatted("a property list cannot hold {}", what));
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

bool isPlain(char character) {
  return character >= ' ' && character < '\x7F' && referenceFor(character).empty();
}

void appendEscaped(std::string& out, std::string_view text) {
  std::size_t taken = 0;
  for (std::size_t at = 0; at < text.size();) {
    if (isPlain(text[at])) {
      ++at;
      continue;
    }
    std::string_view rest = text.substr(at);
    if (text::characterLength(rest) == 0 || !detail::xml::isAllowed(text::nextCharacter(rest))) {
      refuse("a character that XML does not allow");
    }
    const std::string_view reference = referenceFor(text[at]);
    if (!reference.empty()) {
      out.append(text.substr(taken, at - taken)).append(reference);
      taken = at + 1;
    }
    at = text.size() - rest.size();
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

std::string dateText(Date date) {
  auto text = Date{std::floor(date.secondsSinceReferenceDate)}.iso8601();
  if (!text) {
    refuse("a date outside the years 1 to 9999");
  }
  return *std::move(text);
}

}  // namespace

void PropertyListWriter::beginPropertyList() {
  _text +=
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
      "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
      "<plist version=\"1.0\">\n";
}

void PropertyListWriter::endPropertyList() { _text += "</plist>\n"; }

void PropertyListWriter::begin(std::string_view tag) {
  if (_nesting >= Limits::current().nesting) {
    refuse("values that are nested so deeply");
  }
  line(tag);
  ++_nesting;
}

void PropertyListWriter::end(std::string_view tag) {
  --_nesting;
  line(tag);
}

void PropertyListWriter::line(std::string_view text) {
  _text.append(_nesting, '\t').append(text) += '\n';
}

void PropertyListWriter::element(std::string_view name, std::string_view text) {
  _text.append(_nesting, '\t').append("<").append(name).append(">");
  appendEscaped(_text, text);
  _text.append("</").append(name).append(">\n");
}

void PropertyListWriter::integer(std::int64_t number) {
  std::array<char, 32> digits{};
  const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  element("integer", {digits.data(), written.ptr});
}

void PropertyListWriter::data(std::string_view bytes) {
  line("<data>");
  while (!bytes.empty()) {
    const std::string_view part = bytes.substr(0, kBase64BytesALine);
    _text.append(_nesting, '\t');
    detail::appendBase64(_text, part);
    _text += '\n';
    bytes.remove_prefix(part.size());
  }
  line("</data>");
}

void PropertyListWriter::value(const Value& value) {
  if (value.isWeak()) {
    refuse("a reference that may lead back to a value around it");
  }
  switch (value.kind()) {
    case Value::Kind::integer:
      return value.numberType() == 'B' ? boolean(value.intValue() != 0)
                                       : element("integer", value.description());
    case Value::Kind::floating:
      return real(realText(value.doubleValue()));
    case Value::Kind::decimal:
      return real(value.description());
    case Value::Kind::string:
      return string(*value.text());
    case Value::Kind::date:
      return element("date", dateText(*value.date()));
    case Value::Kind::data:
      return data(value.data()->bytes());
    case Value::Kind::array:
      beginArray();
      for (const Value& item : *value.array()) {
        this->value(item);
      }
      return endArray();
    case Value::Kind::dictionary:
      beginDictionary();
      for (const auto& [name, item] : *value.dictionary()) {
        key(name.text());
        this->value(item);
      }
      return endDictionary();
    case Value::Kind::nothing:
    case Value::Kind::object:
      break;
  }
  refuse(value.className());
}

std::string propertyListFromValue(const Value& value) {
  PropertyListWriter writer;
  writer.beginPropertyList();
  writer.value(value);
  writer.endPropertyList();
  return std::move(writer.text());
}

}  // namespace mrziphoto

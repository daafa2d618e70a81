#include "PropertyList.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "../values/Array.h"
#include "../values/Dictionary.h"
#include "../values/Limits.h"
#include "../values/NSException.h"
#include "../values/detail/KeyCache.h"
#include "../values/detail/ReferenceStock.h"
#include "../values/detail/Text.h"
#include "../values/detail/TextPool.h"
#include "detail/Base64.h"
#include "detail/XmlScanner.h"
#include "detail/XmlText.h"

namespace mrziphoto {
namespace {

using detail::XmlFailure;
using detail::XmlScanner;
using detail::XmlText;
using Tag = XmlScanner::Tag;

enum class Element : std::uint8_t {
  key,
  string,
  integer,
  real,
  dictionary,
  array,
  trueValue,
  falseValue,
  date,
  data,
  propertyList,
  unknown
};

struct ElementName {
  std::uint64_t word;
  Element element;
};

constexpr ElementName row(std::string_view name, Element element) {
  return {XmlScanner::wordOf(name), element};
}

// The frequent ones first.
constexpr std::array kElements{
    row("key", Element::key),           row("string", Element::string),
    row("integer", Element::integer),   row("real", Element::real),
    row("dict", Element::dictionary),   row("array", Element::array),
    row("true", Element::trueValue),    row("false", Element::falseValue),
    row("date", Element::date),         row("data", Element::data),
    row("plist", Element::propertyList)};

Element elementOf(const Tag& tag) {
  for (const ElementName& each : kElements) {
    if (each.word == tag.word) {
      return each.element;
    }
  }
  return Element::unknown;
}

constexpr bool isSpace(char character) {
  return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

std::string_view withoutSpaceAround(std::string_view text) {
  while (!text.empty() && isSpace(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && isSpace(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

/// Takes a sign off the front; true for a minus.
bool takeSign(std::string_view& text) {
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+')) {
    text.remove_prefix(1);
  }
  return isNegative;
}

template <class Number, class... Form>
std::optional<Number> wholeNumber(std::string_view text, Form... form) {
  Number number{};
  const char* end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number, form...);
  return read.ec == std::errc() && read.ptr == end ? std::optional(number) : std::nullopt;
}

std::optional<Value> integerFrom(std::string_view text) {
  const bool isNegative = takeSign(text);
  const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
  text.remove_prefix(isHexadecimal ? 2 : 0);
  const auto magnitude = wholeNumber<std::uint64_t>(text, isHexadecimal ? 16 : 10);
  constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
  if (!magnitude || (isNegative && *magnitude > kMost + 1)) {
    return std::nullopt;
  }
  return Value::integerOfType(
      static_cast<std::int64_t>(isNegative ? std::uint64_t{0} - *magnitude : *magnitude),
      !isNegative && *magnitude > kMost ? 'Q' : 'q');
}

struct NamedReal {
  std::string_view name;
  double value;
};

constexpr std::array kNamedReals{NamedReal{"nan", std::numeric_limits<double>::quiet_NaN()},
                                 NamedReal{"inf", std::numeric_limits<double>::infinity()},
                                 NamedReal{"infinity", std::numeric_limits<double>::infinity()}};

std::optional<Value> realFrom(std::string_view text) {
  const bool isNegative = takeSign(text);
  std::optional<double> magnitude;
  if (!text.empty() && (text::isDigit(text[0]) || text[0] == '.')) {
    magnitude = wholeNumber<double>(text);
  } else {
    for (const NamedReal& named : kNamedReals) {
      const auto isSame = [](char one, char lower) { return (one | 0x20) == lower; };
      if (std::ranges::equal(text, named.name, isSame)) {
        magnitude = named.value;
      }
    }
  }
  return magnitude ? std::optional<Value>(isNegative ? -*magnitude : *magnitude) : std::nullopt;
}

std::optional<Value> dateFrom(std::string_view text) {
  const std::optional<Date> date = Date::fromIso8601(text);
  return date ? std::optional<Value>(*date) : std::nullopt;
}

/// Moves the last values of a stack into a list of just their number.
template <class Item>
std::vector<Item> takeFrom(std::vector<Item>& stack, std::size_t first) {
  // A large list that fills the stack takes it over instead of a copy.
  constexpr std::size_t kLarge = 4096;
  if (first == 0 && stack.size() >= kLarge) {
    return std::exchange(stack, {});
  }
  const auto begin = stack.begin() + static_cast<std::ptrdiff_t>(first);
  std::vector<Item> items(std::make_move_iterator(begin), std::make_move_iterator(stack.end()));
  stack.erase(begin, stack.end());
  return items;
}

/// Builds the values of one document.
class Reader {
 public:
  explicit Reader(const Data& utf8) : _scanner(utf8.bytes()), _document(utf8.owner()) {}

  Value read() {
    _scanner.declaration();
    const Tag root = _scanner.rootTag();
    Value result = elementOf(root) == Element::propertyList ? onlyValue(root) : value(root);
    _scanner.finish();
    return result;
  }

 private:
  Value onlyValue(const Tag& propertyList) {
    const std::optional<Tag> first = nextChild(propertyList);
    if (!first) {
      _scanner.fail(propertyList, "holds no value");
    }
    Value result = value(*first);
    if (const std::optional<Tag> second = nextChild(propertyList)) {
      _scanner.fail(*second, "holds a second value");
    }
    return result;
  }

  /// Nothing at the end of the parent.
  std::optional<Tag> nextChild(const Tag& parent) {
    if (parent.kind == Tag::Kind::empty) {
      return std::nullopt;
    }
    const Tag tag = _scanner.nextTag(parent);
    return tag.kind == Tag::Kind::end ? std::nullopt : std::optional(tag);
  }

  Value value(const Tag& tag) {
    switch (const Element element = elementOf(tag)) {
      case Element::string:
        return text(tag);
      case Element::dictionary:
        return nested(tag, &Reader::dictionary);
      case Element::array:
        return nested(tag, &Reader::array);
      case Element::integer:
        return scalar(tag, integerFrom);
      case Element::real:
        return scalar(tag, realFrom);
      case Element::date:
        return scalar(tag, dateFrom);
      case Element::data:
        return data(tag);
      case Element::trueValue:
      case Element::falseValue:
        if (!textOf(tag).characters.empty()) {
          failMalformed(tag);
        }
        return element == Element::trueValue;
      case Element::key:
      case Element::propertyList:
      case Element::unknown:
        break;
    }
    _scanner.fail(tag, "has " + detail::inBrackets(tag.name) + " in the place of a value");
  }

  Value nested(const Tag& tag, Ref<Object> (Reader::*read)(const Tag&)) {
    if (++_nesting > Limits::current().nesting) {
      _scanner.fail(tag, "is nested too deeply");
    }
    Value result((this->*read)(tag));
    --_nesting;
    return result;
  }

  Ref<Object> dictionary(const Tag& tag) {
    const std::size_t first = _entries.size();
    while (const std::optional<Tag> keyTag = nextChild(tag)) {
      if (elementOf(*keyTag) != Element::key) {
        _scanner.fail(*keyTag, "has a value without a key");
      }
      DictionaryKey key = _keys.key(textOf(*keyTag).characters);
      const std::optional<Tag> valueTag = nextChild(tag);
      if (!valueTag || elementOf(*valueTag) == Element::key) {
        _scanner.fail(*keyTag, "has no value for the key " + detail::inQuotes(key.text()));
      }
      Value item = value(*valueTag);
      _entries.push_back({std::move(key), std::move(item)});
    }
    return _entries.size() == first ? _emptyDictionary.take()
                                    : make<Dictionary>(takeFrom(_entries, first));
  }

  Ref<Object> array(const Tag& tag) {
    const std::size_t first = _values.size();
    while (const std::optional<Tag> itemTag = nextChild(tag)) {
      Value item = value(*itemTag);
      _values.push_back(std::move(item));
    }
    return _values.size() == first ? _emptyArray.take() : make<Array>(takeFrom(_values, first));
  }

  XmlScanner::Text textOf(const Tag& tag) {
    return tag.kind == Tag::Kind::start ? _scanner.textOf(tag) : XmlScanner::Text{{}, false};
  }

  Value text(const Tag& tag) {
    const XmlScanner::Text text = textOf(tag);
    checkSize(tag, text.characters);
    if (text.isVerbatim) {
      return String(text.characters.empty() ? Ref<Object>() : _document.take(), text.characters);
    }
    detail::TextPool::Kept kept = _pool.keep(text.characters);
    return String(std::move(kept.owner), kept.text);
  }

  Value data(const Tag& tag) {
    const auto bytes = detail::bytesFromBase64(textOf(tag).characters);
    if (!bytes) {
      failMalformed(tag);
    }
    checkSize(tag, *bytes);
    detail::TextPool::Kept kept = _pool.keep(*bytes);
    return Data(std::move(kept.owner), kept.text);
  }

  void checkSize(const Tag& tag, std::string_view bytes) {
    if (bytes.size() > std::numeric_limits<std::uint32_t>::max()) {
      _scanner.fail(tag, "has a value of 4 GiB or more");
    }
  }

  [[noreturn]] void failMalformed(const Tag& tag) {
    _scanner.fail(tag, "has a malformed " + detail::inBrackets(tag.name));
  }

  template <class Read>
  Value scalar(const Tag& tag, Read read) {
    std::optional<Value> result = read(withoutSpaceAround(textOf(tag).characters));
    if (!result) {
      failMalformed(tag);
    }
    return std::move(*result);
  }

  XmlScanner _scanner;
  detail::ReferenceStock _document;
  detail::TextPool _pool;
  detail::KeyCache _keys;
  // Shared by all empty ones, which take seven bytes in the file.
  detail::ReferenceStock _emptyDictionary{make<Dictionary>()};
  detail::ReferenceStock _emptyArray{make<Array>()};
  std::uint32_t _nesting = 0;
  // The complete items of the open dictionaries and arrays, the innermost last.
  std::vector<Dictionary::Entry> _entries;
  std::vector<Value> _values;
};

[[noreturn]] void raise(const XmlText& text, const XmlFailure& failure) {
  const bool isCutHere = text.isCut() && failure.offset == text.utf8().size();
  const std::size_t byte = text.byteOf(failure.offset);
  throw NSException(kNSParseErrorException,
                    "the property list " +
                        (isCutHere ? "has bytes that are not " + text.encoding() : failure.what) +
                        " at line " + std::to_string(text.lineOf(failure.offset)) + ", byte " +
                        std::to_string(byte),
                    byte);
}

}  // namespace

Value propertyListFromData(const Data& bytes) {
  XmlText text(bytes);
  try {
    text.obeyDeclaration();
    Value result = Reader(text.utf8()).read();
    if (text.isCut()) {
      throw XmlFailure{{}, text.utf8().size()};
    }
    return result;
  } catch (const XmlFailure& failure) {
    raise(text, failure);
  }
}

}  // namespace mrziphoto

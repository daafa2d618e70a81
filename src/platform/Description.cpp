#include "Description.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

#include "Array.h"
#include "Dictionary.h"
#include "Text.h"

namespace mrziphoto {
namespace {

constexpr std::size_t kIndent = 4;

std::string indentation(std::size_t level) { return std::string(level * kIndent, ' '); }

bool isPlainWord(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || text::isDigit(c) || c == '_';
  });
}

void appendUnit(std::string& out, std::uint32_t unit) {
  std::array<char, 16> escape{};
  std::snprintf(escape.data(), escape.size(), "\\U%04x", unit);
  out += escape.data();
}

void appendEscaped(std::string& out, std::uint32_t character) {
  switch (character) {
    case '"':
      out += "\\\"";
      return;
    case '\\':
      out += "\\\\";
      return;
    case '\n':
      out += "\\n";
      return;
    case '\t':
      out += "\\t";
      return;
    case '\r':
      out += "\\r";
      return;
    default:
      break;
  }
  if (character >= 0x20 && character < 0x7F) {
    out += static_cast<char>(character);
  } else if (character < 0x10000) {
    appendUnit(out, character);
  } else {
    appendUnit(out, 0xD800 + ((character - 0x10000) >> 10));
    appendUnit(out, 0xDC00 + ((character - 0x10000) & 0x3FF));
  }
}

}  // namespace

void appendQuoted(std::string& out, std::string_view text) {
  if (isPlainWord(text)) {
    out += text;
    return;
  }
  out += '"';
  while (!text.empty()) {
    appendEscaped(out, text::nextCharacter(text));
  }
  out += '"';
}

void appendNestedDescription(std::string& out, const Value& value, std::size_t level) {
  if (const Ref<Array> array = value.array()) {
    out += describe(*array, level);
  } else if (const Ref<Dictionary> dictionary = value.dictionary()) {
    out += describe(*dictionary, level);
  } else if (value.isNumber() || value.kind() == Value::Kind::data) {
    out += value.description();
  } else {
    appendQuoted(out, value.description());
  }
}

std::string describe(const Array& array, std::size_t level) {
  const std::string indent = indentation(level);
  std::string out = indent + "(\n";
  for (std::size_t i = 0; i < array.size(); ++i) {
    out += indent + indentation(1);
    appendNestedDescription(out, array[i], level + 1);
    out += i + 1 < array.size() ? ",\n" : "\n";
  }
  return out + indent + ")";
}

std::string describe(const Dictionary& dictionary, std::size_t level) {
  std::vector<const Dictionary::Entry*> sorted;
  sorted.reserve(dictionary.size());
  for (const Dictionary::Entry& entry : dictionary) {
    sorted.push_back(&entry);
  }
  std::ranges::sort(sorted, {}, [](const auto* entry) { return entry->key.text(); });

  const std::string indent = indentation(level);
  std::string out = indent + "{\n";
  for (const Dictionary::Entry* entry : sorted) {
    out += indent + indentation(1);
    appendQuoted(out, entry->key.text());
    out += " = ";
    appendNestedDescription(out, entry->value, level + 1);
    out += ";\n";
  }
  return out + indent + "}";
}

}  // namespace mrziphoto

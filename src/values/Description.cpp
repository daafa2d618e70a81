#include "detail/Description.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "Array.h"
#include "Dictionary.h"
#include "Limits.h"
#include "detail/Text.h"

namespace mrziphoto {
namespace {

constexpr std::size_t kIndent = 4;
constexpr std::size_t kLongestInMessage = 1024;
thread_local DescriptionBudget* outermostBudget = nullptr;

bool isPlainWord(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || text::isDigit(c);
  });
}

void appendUnit(std::string& out, std::uint32_t unit) {
  std::array<char, 16> escape{};
  std::snprintf(escape.data(), escape.size(), "\\U%04x", unit);
  out += escape.data();
}

void appendEscaped(std::string& out, std::uint32_t character) {
  constexpr std::string_view kEscaped = "\"\\\n\t\r";
  constexpr std::string_view kLetters = "\"\\ntr";
  const std::size_t found =
      character < 0x80 ? kEscaped.find(static_cast<char>(character)) : std::string_view::npos;
  if (found != std::string_view::npos) {
    out += '\\';
    out += kLetters[found];
  } else if (character >= 0x20 && character < 0x7F) {
    out += static_cast<char>(character);
  } else if (character < 0x10000) {
    appendUnit(out, character);
  } else {
    appendUnit(out, 0xD800 + ((character - 0x10000) >> 10));
    appendUnit(out, 0xDC00 + ((character - 0x10000) & 0x3FF));
  }
}

/// Describes one container and what stands inside it.
class Writer {
 public:
  std::string take() { return std::move(_out); }

  void append(const Array& array) {
    open('(');
    for (std::size_t i = 0; i < array.size() && startElement(); ++i) {
      append(array[i]);
      _out += i + 1 < array.size() ? ",\n" : "\n";
    }
    close(')');
  }

  void append(const Dictionary& dictionary) {
    std::vector<const Dictionary::Entry*> sorted;
    sorted.reserve(dictionary.size());
    for (const Dictionary::Entry& entry : dictionary) {
      sorted.push_back(&entry);
    }
    std::ranges::sort(sorted, {}, [](const auto* entry) { return entry->key.text(); });

    open('{');
    for (const Dictionary::Entry* entry : sorted) {
      if (!startElement()) {
        break;
      }
      appendText(entry->key.text());
      _out += " = ";
      append(entry->value);
      _out += ";\n";
    }
    close('}');
  }

 private:
  void append(const Value& value) {
    const Ref<Array> array = value.isWeak() ? nullptr : value.array();
    const Ref<Dictionary> dictionary = value.isWeak() ? nullptr : value.dictionary();
    if (array) {
      append(*array);
    } else if (dictionary) {
      append(*dictionary);
    } else if (value.kind() == Value::Kind::data) {
      _out += value.description();
    } else {
      appendText(value.description());
    }
  }

  void appendText(std::string_view text) {
    if (isPlainWord(text)) {
      _out += text;
      return;
    }
    _out += '"';
    while (!text.empty() && !isFull()) {
      appendEscaped(_out, text::nextCharacter(text));
    }
    _out += text.empty() ? "" : kDescriptionCut;
    _out += '"';
  }

  void open(char bracket) {
    indent();
    _out += bracket;
    _out += '\n';
    ++_level;
  }
  void close(char bracket) {
    --_level;
    indent();
    _out += bracket;
  }
  void indent() { _out.append(_level * kIndent, ' '); }

  /// Indents the next element; false, and marks the cut, when there is no room for it.
  bool startElement() {
    indent();
    if (isFull()) {
      _out.append(kDescriptionCut).append("\n");
      return false;
    }
    return true;
  }
  [[nodiscard]] bool isFull() {
    _budget.spend(_out.size() - _spent);
    _spent = _out.size();
    return _budget.left() == 0;
  }

  DescriptionBudget _budget;
  std::string _out;
  std::size_t _spent = 0;  // of the budget, for the text so far
  std::size_t _level = 0;
};

template <class Container>
std::string described(const Container& container) {
  Writer writer;
  writer.append(container);
  return writer.take();
}

}  // namespace

DescriptionBudget::DescriptionBudget()
    : _account(outermostBudget != nullptr ? *outermostBudget : *this),
      _left(Limits::current().description) {
  outermostBudget = &_account;
}

DescriptionBudget::~DescriptionBudget() {
  if (&_account == this) {
    outermostBudget = nullptr;
  }
}

std::string describe(const Array& array) { return described(array); }

std::string describe(const Dictionary& dictionary) { return described(dictionary); }

std::string describeBriefly(const Value& value) {
  Limits limits = Limits::current();
  limits.description = std::min<std::uint64_t>(limits.description, kLongestInMessage);
  const Limits::Scope scope(limits);
  const DescriptionBudget budget;
  std::string text = value.description();
  return text.size() < limits.description ? text : "<" + std::string(value.className()) + ">";
}

}  // namespace mrziphoto

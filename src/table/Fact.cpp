#include "detail/Fact.h"

#include "../values/Array.h"
#include "../values/Dictionary.h"
#include "detail/PhotoTable.h"

namespace mrziphoto {
namespace {

Value arrayOf(const Fact& fact) {
  std::vector<Value> values;
  fact.forEachElement([&values](const Fact& element) { values.push_back(element.value()); });
  return make<Array>(std::move(values));
}

Value dictionaryOf(const Fact& fact) {
  std::vector<Dictionary::Entry> entries;
  fact.forEachEntry([&](std::uint32_t name, const Fact& value) {
    entries.push_back({fact.table().name(name), value.value()});
  });
  return make<Dictionary>(std::move(entries));
}

Value objectsOf(const Fact& fact) {
  std::vector<Value> objects;
  fact.forEachObjectNumber(
      [&](std::uint32_t number) { objects.emplace_back(fact.table().object(number)); });
  return make<Array>(std::move(objects));
}

Value keyTextsOf(const Fact& fact) {
  std::vector<Value> texts;
  fact.forEachKeyNumber([&texts](std::uint32_t key) { texts.emplace_back(std::to_string(key)); });
  return make<Array>(std::move(texts));
}

}  // namespace

const char* facts::behindMany(FactKind kind, const char* at) {
  switch (kind) {
    case FactKind::keyNumbers:
    case FactKind::objects:
      for (std::uint64_t left = readNumber(at); left != 0; --left) {
        static_cast<void>(readNumber(at));
      }
      return at;
    case FactKind::array:
      while (const char nested = *at++) {
        at = behind(static_cast<FactKind>(nested), at);
      }
      return at;
    case FactKind::dictionary:
      while (readNumber(at) != 0) {
        const auto nested = static_cast<FactKind>(*at++);
        at = behind(nested, at);
      }
      return at;
    default:
      return at;
  }
}

bool Fact::holdsAny() const {
  // Their payload begins with a count, or with what tells of the first element.
  return (_kind == FactKind::keyNumbers || _kind == FactKind::objects || _kind == FactKind::array ||
          _kind == FactKind::dictionary) &&
         *_payload != 0;
}

std::optional<FactText> Fact::text() const {
  const char* at = _payload;
  if (_kind == FactKind::text) {
    return FactText{{}, {}, facts::readText(at)};
  }
  if (_kind == FactKind::path) {
    const std::string_view folder = _table->folder(facts::readNumber(at));
    return FactText{{}, folder, facts::readText(at)};
  }
  if (_kind == FactKind::pathInRoot) {
    const std::uint64_t number = facts::readNumber(at);
    const std::string_view folder = number != 0 ? _table->folder(number - 1) : std::string_view();
    return FactText{_table->root(), folder, facts::readText(at)};
  }
  return std::nullopt;
}

std::optional<std::int64_t> Fact::integer() const {
  const char* at = _payload;
  if (_kind == FactKind::integer) {
    return facts::unzigzag(facts::readNumber(at));
  }
  return _kind == FactKind::otherInteger ? value().integer() : std::nullopt;
}

std::optional<double> Fact::number() const {
  switch (_kind) {
    case FactKind::real:
      return facts::readPlain<double>(_payload);
    case FactKind::single:
      return static_cast<double>(facts::readPlain<float>(_payload));
    case FactKind::integer:
    case FactKind::otherInteger:
      return value().doubleValue();
    default:
      return std::nullopt;
  }
}

Value Fact::value() const {
  const char* at = _payload;
  switch (_kind) {
    case FactKind::text: {
      const std::string_view text = facts::readText(at);
      return String(text.empty() ? Ref<Object>() : Ref<Object>(const_cast<PhotoTable*>(_table)),
                    text);
    }
    case FactKind::path:
    case FactKind::pathInRoot:
      return String::holding(text()->text());
    case FactKind::integer:
      return *integer();
    case FactKind::otherInteger:
      return Value::integerOfType(facts::readPlain<std::int64_t>(at + 1), *at);
    case FactKind::real:
      return facts::readPlain<double>(at);
    case FactKind::single:
      return facts::readPlain<float>(at);
    case FactKind::date:
      return *date();
    case FactKind::bytes:
      return Data(Ref<Object>(const_cast<PhotoTable*>(_table)), facts::readText(at));
    case FactKind::keyNumbers:
      return keyTextsOf(*this);
    case FactKind::objects:
      return objectsOf(*this);
    case FactKind::array:
      return arrayOf(*this);
    case FactKind::dictionary:
      return dictionaryOf(*this);
    case FactKind::nothing:
      break;
  }
  return {};
}

}  // namespace mrziphoto

#include "NSArchiver.h"

#include <charconv>

#include "../values/NSException.h"
#include "../values/detail/Description.h"
#include "../values/detail/Formatted.h"
#include "../values/detail/NumberTypes.h"
#include "detail/ArchiveWriter.h"
#include "detail/FoundationClasses.h"

namespace mrziphoto {
namespace {

constexpr std::int32_t kSystemVersion = 1000;
constexpr Class kRootClass{"NSObject"};

/// The 64 bits of an integer, whatever its type.
std::uint64_t bitsOf(const Value& integer) {
  if (const std::optional<std::int64_t> value = integer.integer()) {
    return static_cast<std::uint64_t>(*value);
  }
  // Above the signed range only the digits tell the whole number.
  const std::string digits = integer.description();
  std::uint64_t result = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), result);
  return result;
}

bool fits(const Value& integer, const detail::IntegerType& type) {
  const std::optional<std::int64_t> value = integer.integer();
  if (type.bits == 64) {
    return type.isSigned ? value.has_value() : !value || *value >= 0;
  }
  const std::int64_t end = std::int64_t{1} << (type.isSigned ? type.bits - 1 : type.bits);
  return value && *value < end && *value >= (type.isSigned ? -end : 0);
}

}  // namespace

NSArchiver::NSArchiver(std::endian byteOrder)
    : _writer(std::make_unique<detail::ArchiveWriter>(byteOrder, kSystemVersion)) {}

NSArchiver::~NSArchiver() = default;

Data NSArchiver::archivedData() const { return Data::copyOf(_writer->bytes()); }

void NSArchiver::setVersionForClassName(std::uint32_t version, std::string_view name) {
  _versions.insert_or_assign(std::string(name), version);
}

void NSArchiver::encodeObject(const Value& value) {
  _writer->writeShared("@");
  writeObject(value);
}

std::optional<NSArchiver::Identity> NSArchiver::identityOf(const Value& value) {
  const std::optional<String> text = value.string();
  const std::optional<Data> data = value.data();
  if (const std::string_view bytes = text   ? text->bytes()
                                     : data ? data->bytes()
                                            : "";
      !bytes.empty()) {
    return Identity{bytes.data(), bytes.size(), value.kind()};
  }
  if (const Ref<Object> object = value.object()) {
    return Identity{object.get(), 0, Value::Kind::object};
  }
  return std::nullopt;
}

void NSArchiver::writeObject(const Value& value) {
  const Class* foundationClass = detail::archivedClassOf(value.kind());
  const Ref<Object> object = value.object();
  if (foundationClass == nullptr && !object) {
    _writer->writeNil();
    return;
  }
  const std::optional<Identity> identity = identityOf(value);
  if (const auto found = identity ? _objects.find(*identity) : _objects.end();
      found != _objects.end()) {
    _writer->writeReference(found->second);
    return;
  }
  const std::size_t number = _writer->writeNew();
  if (identity) {
    _objects.emplace(*identity, number);
    _kept.push_back(value);
  }
  writeClass(foundationClass != nullptr ? foundationClass : &object->objectClass());
  if (foundationClass != nullptr) {
    detail::encodeContents(value, *this);
  } else {
    object->encodeWithCoder(*this);
  }
  _writer->writeEndOfObject();
}

void NSArchiver::encodeKey(std::string_view key) {
  auto found = _keys.find(key);
  if (found == _keys.end()) {
    found = _keys.emplace(key, key).first;
  }
  encodeObject(found->second);
}

void NSArchiver::writeClass(const Class* written) {
  for (;;) {
    if (const auto found = _classes.find(written->name); found != _classes.end()) {
      _writer->writeReference(found->second);
      return;
    }
    _classes.emplace(written->name, _writer->writeNew());
    _writer->writeShared(written->name);
    const auto version = _versions.find(written->name);
    _writer->writeInteger(version != _versions.end() ? version->second : written->highestVersion,
                          'i');
    if (written == &kRootClass) {
      _writer->writeNil();
      return;
    }
    written = written->superclass != nullptr ? written->superclass : &kRootClass;
  }
}

void NSArchiver::writeCString(std::string_view text) {
  if (const auto found = _cStrings.find(text); found != _cStrings.end()) {
    _writer->writeReference(found->second);
    return;
  }
  _cStrings.emplace(text, _writer->writeNew());
  _writer->writeShared(text);
}

void NSArchiver::writeNumber(const Value& value, char code) {
  const detail::IntegerType* type = detail::integerType(code);
  if (value.isNumber() && (code == 'f' || code == 'd')) {
    _writer->writeReal(value.doubleValue(), code);
  } else if (value.kind() == Value::Kind::integer && type != nullptr && fits(value, *type)) {
    _writer->writeInteger(static_cast<std::int64_t>(bitsOf(value)), code);
  } else {
    NSException::raise(kNSInvalidArgumentException,
                       detail::formatted("{} cannot be archived as type '{}'",
                                         describeBriefly(value), std::string_view(&code, 1)));
  }
}

void NSArchiver::encodeValueOfObjCType(std::string_view type, const Value& value) {
  constexpr std::string_view kNumbers = "cCsSiIlLqQBfd";
  const char code = type.size() == 1 ? type[0] : '\0';
  const std::optional<std::string> text = value.text();
  const std::optional<Data> bytes = value.data();
  if (code == '@') {
    encodeObject(value);
  } else if (kNumbers.find(code) != std::string_view::npos) {
    _writer->writeShared(type);
    writeNumber(value, code);
  } else if (code == '*' && text) {
    _writer->writeShared(type);
    writeCString(*text);
  } else if ((code == ':' || code == '%') && text) {
    _writer->writeShared(type);
    _writer->writeShared(*text);
  } else if (code == '+' && bytes) {
    encodeBytes(bytes->bytes());
  } else {
    NSException::raise(
        kNSInvalidArgumentException,
        detail::formatted("{} cannot be archived as type '{}'", describeBriefly(value), type));
  }
}

void NSArchiver::encodeBytes(std::string_view bytes) {
  _writer->writeShared("+");
  _writer->writeBytes(bytes);
}

void NSArchiver::encodeDataObject(std::string_view bytes) {
  encodeInt(static_cast<std::int32_t>(bytes.size()));
  _writer->writeShared('[' + std::to_string(bytes.size()) + "c]");
  _writer->writeRawBytes(bytes);
}

}  // namespace mrziphoto

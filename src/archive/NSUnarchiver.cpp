#include "NSUnarchiver.h"

#include <algorithm>
#include <string>
#include <utility>

#include "../values/Array.h"
#include "../values/Limits.h"
#include "../values/Object.h"
#include "../values/detail/Formatted.h"
#include "../values/detail/Text.h"
#include "detail/ArchiveReader.h"
#include "detail/FoundationClasses.h"

namespace mrziphoto {
namespace {

using detail::failArchive;

/// Stands for an object that was skipped inside a skipped collection.
class UnknownObject final : public Object {
 public:
  explicit UnknownObject(std::string_view className) : _name(className), _class{_name} {}
  [[nodiscard]] const Class& objectClass() const override { return _class; }

 private:
  std::string _name;
  Class _class;
};

}  // namespace

std::unique_ptr<NSUnarchiver> NSUnarchiver::initForReadingWithData(const Data& data) {
  return detail::ArchiveReader::isArchive(data.bytes())
             ? std::unique_ptr<NSUnarchiver>(new NSUnarchiver(data))
             : nullptr;
}

NSUnarchiver::NSUnarchiver(const Data& data)
    : _data(data), _reader(std::make_unique<detail::ArchiveReader>(data.bytes())) {}

NSUnarchiver::~NSUnarchiver() = default;

std::uint32_t NSUnarchiver::versionForClassName(std::string_view name) const {
  const auto* record = _reader->classNamed(name);
  return record != nullptr ? static_cast<std::uint32_t>(record->version) : kNotFound;
}

std::size_t NSUnarchiver::cursor() const { return _reader->position(); }

bool NSUnarchiver::isAtEnd() const { return _reader->isAtEnd(); }

std::endian NSUnarchiver::byteOrder() const { return _reader->byteOrder(); }

std::uint32_t NSUnarchiver::systemVersion() const {
  return static_cast<std::uint32_t>(_reader->systemVersion());
}

void NSUnarchiver::fail(std::string_view reason) const {
  failArchive(cursor(), detail::formatted("{}", reason));
}

const detail::ArchiveType& NSUnarchiver::expectType(std::string_view type) {
  const std::size_t at = cursor();
  const detail::ArchiveType& stored = _reader->readType();
  if (stored.text() != type) {
    failArchive(at, detail::formatted("file inconsistency: read '{}', expecting '{}'",
                                      stored.text(), type));
  }
  return stored;
}

Value NSUnarchiver::decodeObject() {
  expectType("@");
  return valueOf(_reader->readItem('@'));
}

Value NSUnarchiver::decodeElement() {
  expectType("@");
  const std::size_t at = cursor();
  const ArchiveItem item = _reader->readItem('@');
  if (item.kind == ArchiveItem::Kind::nil) {
    failArchive(at, "*** Incorrect archive: a collection with nil in it");
  }
  return valueOf(item);
}

DictionaryKey NSUnarchiver::decodeKey() {
  const Value key = decodeElement();
  if (const std::optional<String> text = key.string()) {
    return text->withUtf8([this](std::string_view characters) { return sharedKey(characters); });
  }
  // A longer description is an attempt to fill the memory.
  const std::uint32_t longest = Limits::current().describedKey;
  const std::string text = _lastExpandedSize <= longest ? key.description() : std::string();
  if (text.empty() || text.size() > longest) {
    fail("*** Incorrect archive: a dictionary key that is no text");
  }
  return sharedKey(text);
}

DictionaryKey NSUnarchiver::sharedKey(std::string_view text) {
  const auto found = _keys.find(text);
  if (found != _keys.end()) {
    return found->second;
  }
  DictionaryKey key(text);
  _keys.emplace(key.text(), key);
  return key;
}

Value NSUnarchiver::decodeValueOfObjCType(std::string_view type) {
  return valuesOf(expectType(type));
}

Value NSUnarchiver::decodeArrayOfObjCType(std::string_view type, std::size_t count) {
  return decodeValueOfObjCType('[' + std::to_string(count) + std::string(type) + ']');
}

Value NSUnarchiver::decodeDataObject() {
  constexpr std::size_t kLeastBytesPerByte = 1;
  return decodeArrayOfObjCType("c", decodeCount(kLeastBytesPerByte));
}

std::size_t NSUnarchiver::decodeCount(std::size_t leastBytes) {
  const std::size_t at = cursor();
  const detail::ArchiveType& type = _reader->readType();
  if (type.text() != "i" && type.text() != "I") {
    failArchive(at, detail::formatted("file inconsistency: read '{}', expecting 'i'", type.text()));
  }
  const std::int64_t count = _reader->readItem(type.text()[0]).integer();
  if (count < 0 || static_cast<std::uint64_t>(count) * leastBytes > _reader->remaining()) {
    failArchive(at, detail::formatted("*** Incorrect archive: {} elements in {} bytes", count,
                                      _reader->remaining()));
  }
  return static_cast<std::size_t>(count);
}

Value NSUnarchiver::decodeGroup() { return valuesOf(_reader->readType()); }

void NSUnarchiver::skipGroups() {
  ++_skipping;
  while (!_reader->isAtEndOfObject()) {
    decodeGroup();
  }
  --_skipping;
}

Value NSUnarchiver::valuesOf(const detail::ArchiveType& type) {
  if (type.isSingle()) {
    Value value;
    _reader->forEachItem(type, [&](const ArchiveItem& item) { value = valueOf(item); });
    return value;
  }
  const Ref<Array> values = make<Array>();
  _reader->forEachItem(type, [&](const ArchiveItem& item) { values->append(valueOf(item)); });
  return values;
}

Value NSUnarchiver::valueOf(const ArchiveItem& item) {
  switch (item.kind) {
    case ArchiveItem::Kind::integer:
    case ArchiveItem::Kind::real:
      if (item.type == 'd') {
        return item.real();
      }
      return item.type == 'f' ? Value(static_cast<float>(item.real()))
                              : Value::integerOfType(item.integer(), item.type);
    case ArchiveItem::Kind::bytes:
    case ArchiveItem::Kind::rawBytes:
      return Data(_data.owner(), item.text());
    case ArchiveItem::Kind::sharedString:
      return borrowedText(item.text());
    case ArchiveItem::Kind::classReference:
      return borrowedText(_reader->classes()[item.number].name);
    case ArchiveItem::Kind::cString:
      return borrowedText(_reader->cStrings()[item.number].text);
    case ArchiveItem::Kind::newObject:
      return newObject(item.number);
    case ArchiveItem::Kind::objectReference:
      return objectReferredTo(item.number);
    case ArchiveItem::Kind::nil:
    case ArchiveItem::Kind::group:
    case ArchiveItem::Kind::endOfObject:
      break;
  }
  return {};
}

Value NSUnarchiver::borrowedText(std::string_view text) {
  _reader->accountFor(text.size(), _borrowed);
  return text::isUtf8(text) ? String(_data.owner(), text) : String(text);
}

Value NSUnarchiver::newObject(std::size_t number) {
  const std::size_t start = cursor();
  const std::uint32_t deepest = Limits::current().nesting;
  if (++_openObjects > deepest) {
    failArchive(start, detail::formatted(
                           "*** Incorrect archive: objects are nested more than {} deep", deepest));
  }
  _objects.resize(std::max(_objects.size(), number + 1));
  _objects[number].classPosition = _reader->readClassOfObject();
  _objects[number].state = DecodedObject::State::reading;
  const std::uint64_t borrowedBefore = _borrowed;
  const std::uint32_t heightBeside = std::exchange(_heightInside, 0U);

  Value value = contentsOf(number);
  if (!_reader->takeEndOfObject()) {
    failArchive(cursor(),
                detail::formatted(
                    "*** NSUnarchiver: inconsistency between written and read data for object of "
                    "class {}",
                    _reader->classes()[_objects[number].classPosition].name));
  }
  if (_heightInside >= deepest) {
    failArchive(
        start, detail::formatted("*** Incorrect archive: references lead more than {} objects deep",
                                 deepest));
  }
  DecodedObject& object = _objects[number];
  object.value = value;
  object.state = DecodedObject::State::read;
  object.expandedSize = cursor() - start + (_borrowed - borrowedBefore);
  object.height = _heightInside + 1;
  _lastExpandedSize = object.expandedSize;
  _heightInside = std::max(heightBeside, object.height);
  --_openObjects;
  return value;
}

Value NSUnarchiver::contentsOf(std::size_t number) {
  const std::uint32_t classPosition = _objects[number].classPosition;
  const Loader loader = loaderFor(classPosition);
  const detail::FoundationClass* foundation = loader.foundation;
  if (foundation != nullptr && foundation->decode != nullptr) {
    return foundation->decode(*this);
  }
  if (const Class* kind = foundation != nullptr ? foundation->container : loader.registered) {
    const Ref<Object> object = Ref<Object>::adopt(kind->make());
    _objects[number].value = object;  // for references from inside
    if (foundation != nullptr) {
      foundation->fill(*object, *this);
    } else {
      object->initWithCoder(*this);
    }
    return object;
  }
  if (_skipping == 0) {
    failUnknownClass(classPosition);
  }
  skipGroups();
  return make<UnknownObject>(_reader->classes()[classPosition].name);
}

Value NSUnarchiver::objectReferredTo(std::size_t number) {
  using State = DecodedObject::State;
  const State state = number < _objects.size() ? _objects[number].state : State::none;
  if (state == State::none || (state == State::reading && !_objects[number].value.object())) {
    fail("*** Incorrect archive: reference to an object that has not been read yet");
  }
  const DecodedObject& object = _objects[number];
  if (state == State::reading) {
    return Value::weak(*object.value.object());
  }
  const Loader& loader = loaderFor(object.classPosition);
  if (_skipping == 0 && loader.registered == nullptr && loader.foundation == nullptr) {
    failUnknownClass(object.classPosition);
  }
  _reader->accountFor(object.expandedSize, _borrowed);
  _lastExpandedSize = object.expandedSize;
  _heightInside = std::max(_heightInside, object.height);
  return object.value;
}

const NSUnarchiver::Loader& NSUnarchiver::loaderFor(std::uint32_t classPosition) {
  while (_loaders.size() <= classPosition) {
    const std::string_view name = _reader->classes()[_loaders.size()].name;
    Loader& loader = _loaders.emplace_back();
    loader.registered = ClassRegistry::find(name);
    if (loader.registered == nullptr || loader.registered->make == nullptr) {
      loader = {nullptr, detail::foundationClass(name)};
    }
  }
  return _loaders[classPosition];
}

void NSUnarchiver::failUnknownClass(std::uint32_t classPosition) const {
  fail("*** class error for '" + std::string(_reader->classes()[classPosition].name) +
       "': class not loaded");
}

}  // namespace mrziphoto

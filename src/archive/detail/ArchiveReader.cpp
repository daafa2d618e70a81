#include "ArchiveReader.h"

#include <algorithm>

#include "../../values/Limits.h"
#include "../../values/detail/Formatted.h"
#include "../../values/detail/NumberTypes.h"

namespace mrziphoto::detail {
namespace {

constexpr std::size_t kSignatureAt = 2;

/// The number of bytes behind a head that says that an integer follows; 0 for all other heads.
constexpr std::size_t integerSize(std::int8_t head) {
  switch (head) {
    case kHead2Bytes:
      return 2;
    case kHead4Bytes:
      return 4;
    case kHead8Bytes:
      return 8;
    default:
      return 0;
  }
}

}  // namespace

bool ArchiveReader::isArchive(std::string_view bytes) {
  constexpr std::size_t kSystemVersionAt = kSignatureAt + kBigEndianSignature.size();
  if (bytes.size() <= kSystemVersionAt || bytes[0] != kStreamerVersion ||
      static_cast<std::size_t>(bytes[1]) != kBigEndianSignature.size()) {
    return false;
  }
  const std::string_view signature = bytes.substr(kSignatureAt, kBigEndianSignature.size());
  const auto head = static_cast<std::int8_t>(bytes[kSystemVersionAt]);
  return (signature == kBigEndianSignature || signature == kLittleEndianSignature) &&
         (head >= kFirstNumber || head == kHead2Bytes || head == kHead4Bytes) &&
         bytes.size() - kSystemVersionAt > integerSize(head);
}

ArchiveReader::ArchiveReader(std::string_view bytes)
    : _bytes(bytes),
      _position(kSignatureAt + kBigEndianSignature.size()),
      _byteOrder(bytes.substr(kSignatureAt).starts_with(kBigEndianSignature) ? std::endian::big
                                                                             : std::endian::little),
      _systemVersion(static_cast<std::int32_t>(readInteger('i'))) {}

const ArchiveReader::ClassRecord* ArchiveReader::classNamed(std::string_view name) const {
  const auto found = _classesByName.find(name);
  return found != _classesByName.end() ? &_classes[found->second] : nullptr;
}

void ArchiveReader::checkRemaining(std::uint64_t count) const {
  if (count > remaining()) {
    failArchive(_position,
                formatted("*** End of archive encountered prematurely at {}", _bytes.size()));
  }
}

std::string_view ArchiveReader::take(std::size_t count) {
  checkRemaining(count);
  const std::string_view taken = _bytes.substr(_position, count);
  _position += count;
  return taken;
}

std::int8_t ArchiveReader::takeHead() { return static_cast<std::int8_t>(take(1)[0]); }

void ArchiveReader::failAtHead() const {
  failArchive(_position - 1, "*** Incorrect archive: unexpected byte");
}

template <class Unsigned>
Unsigned ArchiveReader::takeUnsigned() {
  const std::string_view bytes = take(sizeof(Unsigned));
  Unsigned result = 0;
  for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
    const std::size_t at = _byteOrder == std::endian::big ? i : sizeof(Unsigned) - 1 - i;
    result = static_cast<Unsigned>(result << 8 | static_cast<unsigned char>(bytes[at]));
  }
  return result;
}

std::int64_t ArchiveReader::integerAfter(std::int8_t head) {
  switch (integerSize(head)) {
    case 2:
      return static_cast<std::int16_t>(takeUnsigned<std::uint16_t>());
    case 4:
      return static_cast<std::int32_t>(takeUnsigned<std::uint32_t>());
    case 8:
      return static_cast<std::int64_t>(takeUnsigned<std::uint64_t>());
    default:
      break;
  }
  if (head < kFirstNumber) {
    failAtHead();
  }
  return head;
}

std::int64_t ArchiveReader::readInteger(char code) {
  const std::size_t at = _position;
  const std::int64_t value = integerAfter(takeHead());
  const IntegerType& type = *integerType(code);
  if (type.bits == 64) {
    return value;
  }
  // The writer takes numbers of unsigned types as signed ones of the same size.
  const std::int64_t half = std::int64_t{1} << (type.bits - 1);
  const std::int64_t end = type.isSigned ? half : 2 * half;
  if (value < -half || value >= end) {
    failArchive(at, formatted("*** Incorrect archive: number {} does not fit type '{}'", value,
                              std::string_view(&code, 1)));
  }
  return value < 0 && !type.isSigned ? value + 2 * half : value;
}

ArchiveItem ArchiveReader::readReal(char code) {
  const std::int8_t head = takeHead();
  if (head != kHeadReal) {
    const std::int64_t value = integerAfter(head);
    return {ArchiveItem::Kind::integer, code, static_cast<std::uint64_t>(value)};
  }
  const std::uint64_t bits =
      code == 'f' ? takeUnsigned<std::uint32_t>() : takeUnsigned<std::uint64_t>();
  return {ArchiveItem::Kind::real, code, bits};
}

std::string_view ArchiveReader::readLengthAndBytes() {
  const std::size_t at = _position;
  const std::int64_t length = readInteger('i');
  if (length < 0) {
    failArchive(at, formatted("*** Incorrect archive: length {}", length));
  }
  return take(static_cast<std::size_t>(length));
}

std::size_t ArchiveReader::referenceAfter(std::int8_t head, std::size_t size) {
  const std::size_t at = _position - 1;
  const std::int64_t number = integerAfter(head);
  if (number < kFirstNumber ||
      static_cast<std::uint64_t>(number) - static_cast<std::uint64_t>(kFirstNumber) >= size) {
    failArchive(at, "*** Incorrect archive: reference to what has not been read");
  }
  return static_cast<std::size_t>(number - kFirstNumber);
}

std::optional<std::size_t> ArchiveReader::readShared() {
  const std::int8_t head = takeHead();
  if (head == kHeadNil) {
    return std::nullopt;
  }
  if (head == kHeadNew) {
    _strings.push_back({readLengthAndBytes()});
    return _strings.size() - 1;
  }
  const std::size_t position = referenceAfter(head, _strings.size());
  accountFor(_strings[position].text.size(), _namedAgain);
  return position;
}

const ArchiveType& ArchiveReader::readType() {
  const std::size_t at = _position;
  const std::optional<std::size_t> position = readShared();
  if (!position) {
    failAtHead();
  }
  SharedString& string = _strings[*position];
  if (string.type == nullptr) {
    string.type = &_types.emplace_back(string.text, at);
  }
  return *string.type;
}

/// A class name or the body of a C string.
std::string_view ArchiveReader::readName() {
  const std::size_t at = _position;
  const std::optional<std::size_t> position = readShared();
  if (!position || _strings[*position].text.find('\0') != std::string_view::npos) {
    failArchive(at, "*** Incorrect archive: no name");
  }
  return _strings[*position].text;
}

ArchiveItem ArchiveReader::readItem(char code) {
  using Kind = ArchiveItem::Kind;
  const auto textItem = [code](Kind kind, std::string_view text) {
    return ArchiveItem{kind, code, text.size(), text.data()};
  };
  switch (code) {
    case 'c':
      return {Kind::integer, code, static_cast<std::uint64_t>(takeHead())};
    case 'C':
    case 'B':
      return {Kind::integer, code, takeUnsigned<std::uint8_t>()};
    case 'f':
    case 'd':
      return readReal(code);
    case '@':
      return readObject();
    case ':':
    case '%': {
      const std::optional<std::size_t> position = readShared();
      return position ? textItem(Kind::sharedString, _strings[*position].text)
                      : ArchiveItem{Kind::nil, code};
    }
    case '#': {
      const std::optional<std::uint32_t> position = readClass();
      return position ? ArchiveItem{Kind::classReference, code, *position}
                      : ArchiveItem{Kind::nil, code};
    }
    default:
      break;
  }
  if (code != '*' && code != '+') {
    return {Kind::integer, code, static_cast<std::uint64_t>(readInteger(code))};
  }
  checkRemaining(1);
  if (static_cast<std::int8_t>(_bytes[_position]) == kHeadNil) {
    ++_position;
    return {Kind::nil, code};
  }
  return code == '+' ? textItem(Kind::bytes, readLengthAndBytes())
                     : ArchiveItem{Kind::cString, code, readCStringAfter(takeHead())};
}

ArchiveItem ArchiveReader::readRawBytes(char code, std::uint32_t count) {
  const std::string_view bytes = take(count);
  return {ArchiveItem::Kind::rawBytes, code, bytes.size(), bytes.data()};
}

std::uint32_t ArchiveReader::readCStringAfter(std::int8_t head) {
  const std::size_t at = _position - 1;
  if (head == kHeadNew) {
    // It takes its number before its text is read; nothing inside the text takes one.
    _cStrings.push_back({readName(), _entries.size()});
    _entries.push_back({EntryKind::cString, static_cast<std::uint32_t>(_cStrings.size() - 1)});
    return _entries.back().position;
  }
  const Entry& entry = _entries[referenceAfter(head, _entries.size())];
  if (entry.kind != EntryKind::cString) {
    failArchive(at, "*** Incorrect archive: reference to what is no C string");
  }
  accountFor(_cStrings[entry.position].text.size(), _namedAgain);
  return entry.position;
}

ArchiveItem ArchiveReader::readObject() {
  const std::size_t at = _position;
  const std::int8_t head = takeHead();
  if (head == kHeadNil) {
    return {ArchiveItem::Kind::nil, '@'};
  }
  if (head == kHeadNew) {
    _entries.push_back({EntryKind::object, 0});
    return {ArchiveItem::Kind::newObject, '@', _entries.size() - 1};
  }
  const std::size_t number = referenceAfter(head, _entries.size());
  if (_entries[number].kind != EntryKind::object) {
    failArchive(at, "*** Incorrect archive: reference to what is no object");
  }
  return {ArchiveItem::Kind::objectReference, '@', number};
}

std::uint32_t ArchiveReader::readClassOfObject() {
  const std::size_t at = _position;
  const std::optional<std::uint32_t> position = readClass();
  if (!position) {
    failArchive(at, "class error for 'NULL': found null class");
  }
  return *position;
}

/// Reads the chain of superclasses in a loop, since its length is not bounded yet.
std::optional<std::uint32_t> ArchiveReader::readClass() {
  const std::size_t first = _classes.size();
  std::int8_t head = takeHead();
  while (head == kHeadNew) {
    const std::string_view name = readName();
    _classes[addClass(name)].version = static_cast<std::int32_t>(readInteger('i'));
    head = takeHead();
  }
  std::optional<std::uint32_t> above;
  if (head != kHeadNil) {
    above = classAfter(head);
  }
  if (first == _classes.size()) {
    return above;
  }
  completeChain(first, above);
  return static_cast<std::uint32_t>(first);
}

std::uint32_t ArchiveReader::addClass(std::string_view name) {
  const auto position = static_cast<std::uint32_t>(_classes.size());
  ClassRecord& record = _classes.emplace_back();
  record.name = name;
  record.number = _entries.size();
  _entries.push_back({EntryKind::classRecord, position});
  _classesByName[name] = position;
  return position;
}

std::uint32_t ArchiveReader::classAfter(std::int8_t head) {
  const std::size_t at = _position - 1;
  const Entry& entry = _entries[referenceAfter(head, _entries.size())];
  if (entry.kind != EntryKind::classRecord || !_classes[entry.position].isComplete) {
    failArchive(at, "*** Incorrect archive: reference to what is no class");
  }
  accountFor(_classes[entry.position].chainTextSize, _namedAgain);
  return entry.position;
}

/// Links the classes from `first` on, each to the next and the last to `above`.
void ArchiveReader::completeChain(std::size_t first, std::optional<std::uint32_t> above) {
  const std::uint32_t longest = Limits::current().classChain;
  for (std::size_t i = _classes.size(); i-- > first;) {
    ClassRecord& record = _classes[i];
    record.superclass = above;
    record.chainTextSize = record.name.size();
    if (above) {
      record.chainLength += _classes[*above].chainLength;
      record.chainTextSize += _classes[*above].chainTextSize;
    }
    if (record.chainLength > longest) {
      failArchive(_position, formatted("*** Incorrect archive: a class with more than {} above it",
                                       longest - 1));
    }
    record.isComplete = true;
    above = static_cast<std::uint32_t>(i);
  }
}

bool ArchiveReader::isAtEndOfObject() const {
  checkRemaining(1);
  return static_cast<std::int8_t>(_bytes[_position]) == kHeadEndOfObject;
}

bool ArchiveReader::takeEndOfObject() {
  const bool isHere = isAtEndOfObject();
  _position += isHere ? 1 : 0;
  return isHere;
}

void ArchiveReader::accountFor(std::uint64_t size, std::uint64_t& account) const {
  account += size;
  const Limits& limits = Limits::current();
  if (account > limits.leastExpansion &&
      (account - 1) / std::max<std::uint64_t>(1, limits.expansion) >= _bytes.size()) {
    failArchive(_position, "*** Incorrect archive: it repeats itself out of all proportion");
  }
}

}  // namespace mrziphoto::detail

#include "detail/PhotoTable.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string>

#include "../values/Array.h"
#include "detail/PhotoFacts.h"

namespace mrziphoto {
namespace {

// How a path is cut is learned from that many paths, and how many levels it may leave to a photo.
constexpr std::uint32_t kPathsToLearnFrom = 8;
constexpr std::uint32_t kMostLevels = 3;
// A row of more bytes notes where its known facts lie.
constexpr std::size_t kLongRow = 4096;

/// The numbers of an array that holds their texts and nothing else.
std::optional<std::vector<std::uint32_t>> keyNumbers(const Array& array) {
  std::vector<std::uint32_t> keys;
  for (const Value& element : array) {
    const std::optional<std::string> text = element.text();
    const std::optional<std::uint32_t> key = text ? facts::keyNumber(*text) : std::nullopt;
    if (!key) {
      return std::nullopt;
    }
    keys.push_back(*key);
  }
  return keys.empty() ? std::nullopt : std::optional(std::move(keys));
}

/// Bytes of a path up to the slash that leaves that many levels behind it; 0 without one.
std::size_t folderSize(std::string_view path, std::uint32_t levels) {
  std::size_t slash = path.rfind('/');
  while (--levels != 0 && slash != std::string_view::npos && slash != 0) {
    slash = path.rfind('/', slash - 1);
  }
  return slash == std::string_view::npos ? 0 : slash + 1;
}

}  // namespace

PhotoTable::PhotoTable() = default;

const Class& PhotoTable::objectClass() const {
  static constexpr Class kClass{"PhotoTable"};
  return kClass;
}

PhotoFacts PhotoTable::operator[](std::size_t row) const {
  return {*this, static_cast<std::uint32_t>(row)};
}

const RowIndex& PhotoTable::index() const {
  if (!_index) {
    _index = std::make_unique<RowIndex>(_keys);
  }
  return *_index;
}

PhotoTable::Filler::Filler()
    : _table(Ref<PhotoTable>::adopt(new PhotoTable)), _blocks(_table->_blocks) {
  for (const PhotoFieldRow& field : kPhotoFields) {
    const auto number = static_cast<std::uint32_t>(_nameTexts.size());
    _table->_names.emplace_back(field.name);
    _nameTexts.push_back(field.name);
    if (field.store == PhotoStore::imageInfo) {
      _nameIndex.add(field.name, number);
    }
  }
  // No name is equal to this one, which is not UTF-8.
  _nameTexts[indexOf(PhotoField::nothing)] = "\xFF";
  _followers.resize(_nameTexts.size());
}

void PhotoTable::Filler::beginRow(std::uint32_t key, std::initializer_list<PhotoStore> stores) {
  unsigned bits = 0;
  for (const PhotoStore store : stores) {
    bits |= 1U << static_cast<unsigned>(store);
  }
  _table->_keys.push_back(key);
  char* to = _blocks.room(1);
  *to = static_cast<char>(bits);
  _blocks.wroteTo(to + 1);
}

void PhotoTable::Filler::endRow() {
  char* to = _blocks.room(1);
  *to = 0;
  _blocks.wroteTo(to + 1);
  if (_blocks.size() > kLongRow) {
    *_blocks.begin() = static_cast<char>(*_blocks.begin() | kIsLong);
    _table->_facts.push_back(_blocks.finish());
    noteFacts(_table->_facts.back() + 1);
  } else {
    _table->_facts.push_back(_blocks.finish());
  }
}

void PhotoTable::Filler::noteFacts(const char* facts) {
  LongRow noted{static_cast<std::uint32_t>(_table->_facts.size() - 1), {}};
  while (const std::uint64_t field = facts::readNumber(facts)) {
    if (field < noted.facts.size() && noted.facts[field] == nullptr) {
      noted.facts[field] = facts;
    }
    const auto kind = static_cast<FactKind>(*facts++);
    facts = facts::behind(kind, facts);
  }
  _table->_longRows.push_back(noted);
}

std::uint32_t PhotoTable::Filler::addObject(Ref<Object> object) {
  _table->_objects.push_back(std::move(object));
  return static_cast<std::uint32_t>(_table->_objects.size() - 1);
}

Ref<PhotoTable> PhotoTable::Filler::finish() { return _table; }

std::uint32_t PhotoTable::Filler::fieldNamed(std::string_view name, std::uint32_t before) {
  std::uint32_t& follower = _followers[before];
  if (_nameTexts[follower] != name) {
    const std::uint32_t number = fieldNamed(name);
    _followers[before] = number;  // the list may have grown
    return number;
  }
  return follower;
}

std::uint32_t PhotoTable::Filler::fieldNamed(std::string_view name) {
  if (const auto known = _nameIndex.find(name)) {
    return *known;
  }
  const auto number = static_cast<std::uint32_t>(_nameTexts.size());
  _table->_names.emplace_back(name);
  _nameTexts.push_back(_table->_names.back().text());
  _nameIndex.add(_nameTexts.back(), number);
  _followers.push_back(0);
  return number;
}

inline char* PhotoTable::Filler::begin(FactKind kind, std::size_t room) {
  char* to = _blocks.room(1 + room);
  *to++ = static_cast<char>(kind);
  return to;
}

void PhotoTable::Filler::put(FactKind kind, std::string_view bytes) {
  char* to = begin(kind, facts::kLongestNumber + bytes.size());
  to = facts::writeNumber(to, bytes.size());
  _blocks.wroteTo(std::copy(bytes.begin(), bytes.end(), to));
}

void PhotoTable::Filler::putText(std::string_view utf8) { put(FactKind::text, utf8); }

void PhotoTable::Filler::putBytes(std::string_view bytes) { put(FactKind::bytes, bytes); }

std::string_view PhotoTable::Filler::cutPath(PathCut& cut, std::string_view path) {
  ++cut.paths;
  const bool liesInLast = !cut.folderText.empty() && path.starts_with(cut.folderText) &&
                          folderSize(path, cut.levels) == cut.folderText.size();
  if (!liesInLast) {
    takeFolder(cut, path);
  }
  return path.substr(cut.folderText.size());
}

void PhotoTable::Filler::putCut(FactKind kind, std::uint64_t folder, std::string_view rest) {
  char* to = begin(kind, 2 * facts::kLongestNumber + rest.size());
  to = facts::writeNumber(to, folder);
  to = facts::writeNumber(to, rest.size());
  _blocks.wroteTo(std::copy(rest.begin(), rest.end(), to));
}

void PhotoTable::Filler::putPath(std::uint32_t field, std::string_view utf8) {
  PathCut& cut = _cuts[field];
  const std::string_view rest = cutPath(cut, utf8);
  if (cut.folderText.empty()) {
    putText(utf8);
  } else {
    putCut(FactKind::path, cut.folder, rest);
  }
}

void PhotoTable::Filler::putPathInRoot(std::uint32_t field, std::string_view utf8) {
  PathCut& cut = _cuts[field];
  const std::string_view rest = cutPath(cut, utf8);
  putCut(FactKind::pathInRoot, cut.folderText.empty() ? 0 : std::uint64_t{cut.folder} + 1, rest);
}

void PhotoTable::Filler::takeFolder(PathCut& cut, std::string_view path) {
  // Where nearly each photo has a folder of its own, it is not worth sharing.
  if (cut.folders >= kPathsToLearnFrom && cut.folders * 2 > cut.paths && cut.levels < kMostLevels) {
    cut = {cut.folder, cut.folderText, 0, 0, cut.levels + 1};
  }
  const std::string_view folder = path.substr(0, folderSize(path, cut.levels));
  cut.folderText = {};
  if (folder.empty()) {
    return;
  }
  std::vector<std::string_view>& folders = _table->_folders;
  if (const auto known = _folderIndex.find(folder)) {
    cut.folder = *known;
  } else {
    ++cut.folders;
    cut.folder = static_cast<std::uint32_t>(folders.size());
    FactBlocks& texts = _table->_folderTexts;
    char* to = texts.room(folder.size());
    texts.wroteTo(std::copy(folder.begin(), folder.end(), to));
    const char* text = texts.finish();
    folders.emplace_back(text, folder.size());
    _folderIndex.add(folders.back(), cut.folder);
  }
  cut.folderText = folders[cut.folder];
}

void PhotoTable::Filler::putKind(FactKind kind) { _blocks.wroteTo(begin(kind, 0)); }

void PhotoTable::Filler::putNumber(std::uint64_t number) {
  _blocks.wroteTo(facts::writeNumber(_blocks.room(facts::kLongestNumber), number));
}

void PhotoTable::Filler::putField(std::uint32_t field, const Value& value) {
  if (isPath(field) && value.isString()) {
    value.string()->withUtf8([&](auto text) { putPath(field, text); });
  } else {
    putValue(value);
  }
}

void PhotoTable::Filler::putInteger(std::int64_t number) {
  char* to = begin(FactKind::integer, facts::kLongestNumber);
  _blocks.wroteTo(facts::writeNumber(to, facts::zigzag(number)));
}

void PhotoTable::Filler::putReal(double number) {
  _blocks.wroteTo(facts::writePlain(begin(FactKind::real, sizeof number), number));
}

void PhotoTable::Filler::putDate(Date date) {
  const double seconds = date.secondsSinceReferenceDate;
  _blocks.wroteTo(facts::writePlain(begin(FactKind::date, sizeof seconds), seconds));
}

void PhotoTable::Filler::putBoolean(bool value) { putValue(value); }

void PhotoTable::Filler::putKeyNumbers(std::span<const std::uint32_t> keys) {
  putNumbers(FactKind::keyNumbers, keys);
}

void PhotoTable::Filler::putObjects(std::span<const std::uint32_t> numbers) {
  putNumbers(FactKind::objects, numbers);
}

void PhotoTable::Filler::putNumbers(FactKind kind, std::span<const std::uint32_t> numbers) {
  char* to = begin(kind, facts::kLongestNumber * (std::size_t{1} + numbers.size()));
  to = facts::writeNumber(to, numbers.size());
  for (const std::uint32_t number : numbers) {
    to = facts::writeNumber(to, number);
  }
  _blocks.wroteTo(to);
}

void PhotoTable::Filler::putValue(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::string:
      value.string()->withUtf8([this](auto text) { putText(text); });
      return;
    case Value::Kind::integer:
      putIntegerOfType(value);
      return;
    case Value::Kind::floating:
      if (value.numberType() == 'f') {
        const auto single = static_cast<float>(value.doubleValue());
        _blocks.wroteTo(facts::writePlain(begin(FactKind::single, sizeof single), single));
      } else {
        putReal(value.doubleValue());
      }
      return;
    case Value::Kind::date:
      putDate(*value.date());
      return;
    case Value::Kind::data:
      putBytes(value.data()->bytes());
      return;
    case Value::Kind::array:
      putArray(*value.array());
      return;
    case Value::Kind::dictionary:
      beginDictionary();
      for (const Dictionary::Entry& entry : *value.dictionary()) {
        addName(fieldNamed(entry.key.text()));
        putValue(entry.value);
      }
      endCollection();
      return;
    default:
      throw std::logic_error("a photo table holds no such value");
  }
}

void PhotoTable::Filler::putIntegerOfType(const Value& value) {
  std::int64_t bits = 0;
  if (const std::optional<std::int64_t> integer = value.integer()) {
    bits = *integer;
  } else {
    const std::string text = value.description();
    std::uint64_t large = 0;
    std::from_chars(text.data(), text.data() + text.size(), large);
    bits = static_cast<std::int64_t>(large);
  }
  if (value.numberType() == 'q') {
    putInteger(bits);
  } else {
    char* to = begin(FactKind::otherInteger, 1 + sizeof bits);
    *to++ = value.numberType();
    _blocks.wroteTo(facts::writePlain(to, bits));
  }
}

void PhotoTable::Filler::putArray(const Array& array) {
  if (const auto keys = keyNumbers(array)) {
    putKeyNumbers(*keys);
    return;
  }
  beginArray();
  for (const Value& element : array) {
    putValue(element);
  }
  endCollection();
}

Fact PhotoTable::Filler::finishLone() {
  const char* at = _blocks.finish();
  return {*_table, static_cast<FactKind>(*at), at + 1};
}

}  // namespace mrziphoto

#include "ArchiveDocument.h"

#include <vector>

#include "../values/Limits.h"
#include "../values/NSException.h"
#include "../values/detail/Formatted.h"
#include "detail/ArchiveReader.h"
#include "detail/ArchiveWriter.h"

namespace mrziphoto {
namespace {

using detail::ArchiveReader;
using detail::ArchiveWriter;
using Kind = ArchiveItem::Kind;

}  // namespace

struct ArchiveDocument::Contents {
  Data data;
  std::endian byteOrder;
  std::int32_t systemVersion;
  std::vector<ArchiveItem> items;
  std::vector<ArchiveClass> classes;
  std::vector<ArchiveCString> cStrings;
  std::size_t length;
  std::string trailingReason;
};

/// Reads an archive into a run of items.
class ArchiveDocument::Builder {
 public:
  Builder(ArchiveReader& reader, Contents& contents) : _reader(reader), _contents(contents) {}

  void readGroups() {
    keepTables();
    while (!_reader.isAtEnd()) {
      const std::size_t itemCount = _contents.items.size();
      try {
        readGroup();
      } catch (const NSException& exception) {
        if (itemCount == 0) {
          throw;
        }
        _contents.items.resize(itemCount);
        _contents.trailingReason = exception.reason();
        return;
      }
      keepTables();
    }
  }

 private:
  /// What the groups up to here need of the reader's tables.
  void keepTables() {
    const auto& classes = _reader.classes();
    const auto& cStrings = _reader.cStrings();
    const auto from = [](const auto& all, const auto& kept) {
      return all.begin() + static_cast<std::ptrdiff_t>(kept.size());
    };
    _contents.classes.insert(_contents.classes.end(), from(classes, _contents.classes),
                             classes.end());
    _contents.cStrings.insert(_contents.cStrings.end(), from(cStrings, _contents.cStrings),
                              cStrings.end());
    _contents.length = _reader.position();
  }

  void add(const ArchiveItem& item) { _contents.items.push_back(item); }

  void readGroup() {
    const detail::ArchiveType& type = _reader.readType();
    add({Kind::group, '\0', type.text().size(), type.text().data()});
    _reader.forEachItem(type, [this](const ArchiveItem& item) {
      add(item);
      if (item.kind == Kind::newObject) {
        readObject();
      }
    });
  }

  void readObject() {
    if (const std::uint32_t deepest = Limits::current().nesting; ++_openObjects > deepest) {
      detail::failArchive(
          _reader.position(),
          detail::formatted("*** Incorrect archive: objects are nested more than {} deep",
                            deepest));
    }
    add({Kind::classReference, '#', _reader.readClassOfObject()});
    while (!_reader.takeEndOfObject()) {
      readGroup();
    }
    add({Kind::endOfObject});
    --_openObjects;
  }

  ArchiveReader& _reader;
  Contents& _contents;
  std::uint32_t _openObjects = 0;
};

namespace {

/// Writes items. What has a number is written in full where it stands first.
class ItemWriter {
 public:
  ItemWriter(ArchiveWriter& writer, const std::vector<ArchiveClass>& classes,
             const std::vector<ArchiveCString>& cStrings)
      : _writer(writer), _classes(classes), _cStrings(cStrings) {}

  void write(const ArchiveItem& item) {
    switch (item.kind) {
      case Kind::nil:
        return _writer.writeNil();
      case Kind::integer:
        return _writer.writeInteger(item.integer(), item.type);
      case Kind::real:
        return _writer.writeRealBits(item.number, item.type);
      case Kind::bytes:
        return _writer.writeBytes(item.text());
      case Kind::rawBytes:
        return _writer.writeRawBytes(item.text());
      case Kind::sharedString:
      case Kind::group:
        return _writer.writeShared(item.text());
      case Kind::classReference:
        return writeClass(static_cast<std::uint32_t>(item.number));
      case Kind::cString:
        return writeCString(item.number);
      case Kind::newObject:
        _writer.writeNew();
        return;
      case Kind::objectReference:
        return _writer.writeReference(item.number);
      case Kind::endOfObject:
        return _writer.writeEndOfObject();
    }
  }

 private:
  void writeClass(std::optional<std::uint32_t> position) {
    while (position && *position >= _classesWritten) {
      const ArchiveClass& record = _classes[*position];
      _writer.writeNew();
      _writer.writeShared(record.name);
      _writer.writeInteger(record.version, 'i');
      ++_classesWritten;  // classes stand in their list as they stand in the archive
      position = record.superclass;
    }
    if (position) {
      _writer.writeReference(_classes[*position].number);
    } else {
      _writer.writeNil();
    }
  }

  void writeCString(std::size_t position) {
    if (position < _cStringsWritten) {
      return _writer.writeReference(_cStrings[position].number);
    }
    _writer.writeNew();
    _writer.writeShared(_cStrings[position].text);
    ++_cStringsWritten;
  }

  ArchiveWriter& _writer;
  const std::vector<ArchiveClass>& _classes;
  const std::vector<ArchiveCString>& _cStrings;
  std::size_t _classesWritten = 0;
  std::size_t _cStringsWritten = 0;
};

}  // namespace

ArchiveDocument::ArchiveDocument(std::shared_ptr<const Contents> contents)
    : _contents(std::move(contents)) {}

std::optional<ArchiveDocument> ArchiveDocument::initWithData(const Data& data) {
  if (!ArchiveReader::isArchive(data.bytes())) {
    return std::nullopt;
  }
  ArchiveReader reader(data.bytes());
  auto contents = std::make_shared<Contents>();
  contents->data = data;
  contents->byteOrder = reader.byteOrder();
  contents->systemVersion = reader.systemVersion();
  Builder(reader, *contents).readGroups();
  return ArchiveDocument(std::move(contents));
}

std::endian ArchiveDocument::byteOrder() const { return _contents->byteOrder; }

std::int32_t ArchiveDocument::systemVersion() const { return _contents->systemVersion; }

std::size_t ArchiveDocument::length() const { return _contents->length; }

std::size_t ArchiveDocument::trailingLength() const {
  return _contents->data.size() - _contents->length;
}

const std::string& ArchiveDocument::trailingReason() const { return _contents->trailingReason; }

std::span<const ArchiveItem> ArchiveDocument::items() const { return _contents->items; }

std::span<const ArchiveClass> ArchiveDocument::classes() const { return _contents->classes; }

std::span<const ArchiveCString> ArchiveDocument::cStrings() const { return _contents->cStrings; }

Data ArchiveDocument::write() const {
  ArchiveWriter writer(_contents->byteOrder, _contents->systemVersion);
  ItemWriter items(writer, _contents->classes, _contents->cStrings);
  for (const ArchiveItem& item : _contents->items) {
    items.write(item);
  }
  return Data::copyOf(writer.bytes());
}

}  // namespace mrziphoto

// The commands about a library as a whole, its rolls, albums and keywords.

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_set>

#include <MRZiPhoto/albums/Album.h>
#include <MRZiPhoto/albums/AlbumKinds.h>
#include <MRZiPhoto/albums/Keyword.h>
#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/files/FileManager.h>
#include <MRZiPhoto/thumbcache/iPhotoSegmentCache.h>

#include "../output/FieldTable.h"
#include "../output/TerminalText.h"
#include "../output/Values.h"
#include "Commands.h"
#include "Library.h"

namespace mrziphoto::tool {
namespace {

template <class T>
void writeSize(RecordWriter& out, const List<T>& list) {
  out.unsignedInteger(list.size());
}

/// `null` for a library without one, which needs no line in the log.
void writeThumbnailCache(RecordWriter& out, const TVQiPhotoDatabase& database) {
  const std::string file = database.thumbnailCacheFilename();
  const auto cache = FileManager::exists(file) ? database.thumbnailSegmentCache() : nullptr;
  if (!cache) {
    out.null();
    return;
  }
  out.beginObject();
  out.name("file");
  out.text(file);
  out.name("numberOfItems");
  out.unsignedInteger(cache->numberOfItems());
  out.name("itemSize");
  out.unsignedInteger(cache->itemSize());
  out.endObject();
}

using Database = TVQiPhotoDatabase;
constexpr std::array<FieldRow<Database>, 12> kInfoFields{{
    {"directory", [](RecordWriter& out, const Database& it) { out.text(it.directory()); }},
    {"catalogueFile",
     [](RecordWriter& out, const Database& it) { out.text(it.currentLibraryDataFilename()); }},
    {"libraryVersion",
     [](RecordWriter& out, const Database& it) { out.integer(it.iPhotoLibraryVersion()); }},
    {"iPhotoDataVersion",
     [](RecordWriter& out, const Database& it) { out.text(it.iPhotoDataVersion()); }},
    {"iPhotoVersion", [](RecordWriter& out, const Database& it) { out.text(it.iPhotoVersion()); }},
    {"archivePath", [](RecordWriter& out, const Database& it) { out.text(it.archivePath()); }},
    {"photos", [](RecordWriter& out, const Database& it) { writeSize(out, it.photos()); }},
    {"rollRecords",
     [](RecordWriter& out, const Database& it) { writeSize(out, it.rollRecRefs()); }},
    {"rolls", [](RecordWriter& out, const Database& it) { writeSize(out, it.rolls()); }},
    {"albums", [](RecordWriter& out, const Database& it) { writeSize(out, it.albums()); }},
    {"keywords", [](RecordWriter& out, const Database& it) { writeSize(out, it.keywords()); }},
    {"thumbnailCache", writeThumbnailCache},
}};

constexpr std::array<FieldRow<RollAlbum>, 7> kRollFields{{
    {"key", [](RecordWriter& out, const RollAlbum& it) { writeKey(out, it.key()); }},
    {"name", [](RecordWriter& out, const RollAlbum& it) { out.text(it.albumName()); }},
    {"comments", [](RecordWriter& out, const RollAlbum& it) { out.text(it.comments()); }},
    {"date", [](RecordWriter& out, const RollAlbum& it) { out.date(it.date()); }},
    {"archiveDate", [](RecordWriter& out, const RollAlbum& it) { out.date(it.archiveDate()); }},
    {"modificationDate",
     [](RecordWriter& out, const RollAlbum& it) { out.date(it.modificationDate()); }},
    {"photos", [](RecordWriter& out, const RollAlbum& it) { writeImageKeys(out, it.photoKeys()); }},
}};

constexpr std::array<FieldRow<Keyword>, 3> kKeywordFields{{
    {"key", [](RecordWriter& out, const Keyword& it) { writeKey(out, it.key()); }},
    {"string", [](RecordWriter& out, const Keyword& it) { out.text(it.string()); }},
    {"keyword", [](RecordWriter& out, const Keyword& it) { out.text(it.keyword()); }},
}};

/// An album that is being written, with the albums that the record around it holds already: one
/// that stands in several folders, or in itself, is written once.
struct ListedAlbum {
  const Album& album;
  std::unordered_set<const Album*>& written;
  std::size_t depth = 0;
};

void writeChildren(RecordWriter& out, const ListedAlbum& parent);

constexpr std::array<FieldRow<ListedAlbum>, 6> kAlbumFields{{
    {"key", [](RecordWriter& out, const ListedAlbum& it) { writeKey(out, it.album.key()); }},
    {"kind", [](RecordWriter& out, const ListedAlbum& it) { out.text(it.album.className()); }},
    {"name", [](RecordWriter& out, const ListedAlbum& it) { out.text(it.album.albumName()); }},
    {"comments", [](RecordWriter& out, const ListedAlbum& it) { out.text(it.album.comments()); }},
    {"photos",
     [](RecordWriter& out, const ListedAlbum& it) { writeImageKeys(out, it.album.photoKeys()); }},
    {"children", writeChildren},
}};

/// In tables the albums inside others are rows of their own, below.
constexpr std::array<FieldRow<ListedAlbum>, 5> kAlbumRowFields{{
    kAlbumFields[0],
    kAlbumFields[1],
    {"name",
     [](RecordWriter& out, const ListedAlbum& it) {
       out.text(std::string(2 * it.depth, ' ') + it.album.albumName().value_or(""));
     }},
    kAlbumFields[3],
    kAlbumFields[4],
}};

void writeRows(RecordWriter& out, const ListedAlbum& item) {
  if (!item.written.insert(&item.album).second) {
    return;
  }
  writeRecord<ListedAlbum>(out, kAlbumRowFields, item);
  for (const Ref<Album>& child : item.album.children()) {
    writeRows(out, {*child, item.written, item.depth + 1});
  }
}

void writeChildren(RecordWriter& out, const ListedAlbum& parent) {
  out.beginList();
  for (const Ref<Album>& child : parent.album.children()) {
    if (!parent.written.insert(child.get()).second) {
      continue;
    }
    out.beginObject();
    for (const FieldRow<ListedAlbum>& field : kAlbumFields) {
      out.name(field.name);
      field.write(out, {*child, parent.written, parent.depth + 1});
    }
    out.endObject();
  }
  out.endList();
}

template <class T>
std::unique_ptr<RecordWriter> writerFor(Session& session, Shape shape,
                                        std::span<const FieldRow<T>> fields) {
  return RecordWriter::to(session.output, session.arguments.format, shape, fieldNames(fields));
}

template <class T>
void list(Session& session, std::span<const FieldRow<T>> fields, const List<T>& items) {
  const auto out = writerFor(session, Shape::list, fields);
  for (const Ref<T>& item : items) {
    writeRecord(*out, fields, *item);
  }
  out->finish();
}

}  // namespace

void info(Session& session) {
  const TVQiPhotoDatabase& database = openLibrary(session);
  const std::span<const FieldRow<TVQiPhotoDatabase>> fields = kInfoFields;
  const auto out = writerFor(session, Shape::single, fields);
  writeRecord(*out, fields, database);
  out->finish();
}

void rolls(Session& session) {
  list<RollAlbum>(session, kRollFields, openLibrary(session).rolls());
}

void albums(Session& session) {
  const TVQiPhotoDatabase& database = openLibrary(session);
  const bool isTable = session.arguments.format == Format::table;
  const std::span<const FieldRow<ListedAlbum>> rows = kAlbumRowFields;
  const std::span<const FieldRow<ListedAlbum>> fields = kAlbumFields;
  const auto out = writerFor(session, Shape::list, isTable ? rows : fields);
  for (const Ref<Album>& album : database.albums()) {
    std::unordered_set<const Album*> written;
    if (isTable) {
      writeRows(*out, {*album, written});
    } else {
      written.insert(album.get());
      writeRecord(*out, fields, {*album, written});
    }
  }
  out->finish();
}

void keywords(Session& session) {
  list<Keyword>(session, kKeywordFields, openLibrary(session).keywords());
}

void dump(Session& session) {
  if (const std::optional<std::string> text = openLibrary(session).catalogueDescription()) {
    session.output.text() += session.arguments.strict ? *text : terminalLines(*text);
    session.output.text() += '\n';
  }
}

}  // namespace mrziphoto::tool

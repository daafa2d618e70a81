#include "sample/ArchivedFiles.h"

#include <string_view>

#include <MRZiPhoto/albums/Album.h>
#include <MRZiPhoto/albums/AlbumKinds.h>
#include <MRZiPhoto/albums/Keyword.h>
#include <MRZiPhoto/archive/NSArchiver.h>
#include <MRZiPhoto/directories/TVQiPhotoDirectories.h>
#include <MRZiPhoto/photos/ImageRec.h>
#include <MRZiPhoto/photos/Key.h>
#include <MRZiPhoto/values/Array.h>
#include <MRZiPhoto/values/Dictionary.h>

#include "sample/Bytes.h"
#include "sample/Generations.h"
#include "sample/OutputFile.h"
#include "sample/SampleAlbums.h"
#include "sample/SampleRecord.h"

namespace mrziphoto::sample {
namespace {

Value packedKeys(const SampleSelection& photos) {
  std::string bytes;
  bytes.reserve((photos.most + 1) * sizeof(std::uint32_t));
  appendBigEndian(bytes, photos.most);
  for (std::uint32_t i = 0; i < photos.most; ++i) {
    appendBigEndian(bytes, SampleModel::photoKey(photos.first + i * photos.step));
  }
  return record(KeyMgr::kClass, {{KeyMgr::kKeyList, Data::copyOf(bytes)}});
}

Value listedKeys(const SampleSelection& photos) {
  const Ref<Array> keys = make<Array>();
  for (std::uint32_t i = 0; i < photos.most; ++i) {
    keys->append(
        archivedKey(SampleModel::photoKey(photos.first + i * photos.step), ImageRefKey::kClass));
  }
  return record(KeyMgr::kClass, {{KeyMgr::kKeys, keys}});
}

Value archivedRoll(const SampleRoll& roll) {
  const Ref<Dictionary> entries = make<Dictionary>();
  entries->set(Album::kName, roll.name);
  entries->set(Album::kKey, archivedKey(roll.key));
  entries->set(Album::kKeys, packedKeys({roll.firstPhoto, 1, roll.photoCount}));
  if (roll.comment) {
    entries->set(Album::kAnnotation, *roll.comment);
  }
  return record(RollAlbum::kClass, entries);
}

Value archivedRolls(const SampleModel& model) {
  const Ref<Array> rolls = make<Array>();
  for (std::uint32_t i = 0; i < model.rollCount(); ++i) {
    rolls->append(archivedRoll(model.roll(i)));
  }
  return rolls;
}

// The comment, where there is one, wins over the album's entry of its own for comments.
Value archivedAttributes(std::string_view comment) {
  const Ref<Dictionary> attributes = make<Dictionary>();
  if (!comment.empty()) {
    attributes->set(AttributeMgr::kAlbumAnnotation, comment);
  }
  constexpr Date kModified{120'000'000};
  return record(AttributeMgr::kClass, {{AttributeMgr::kAttributes, attributes},
                                       {AttributeMgr::kModificationDate, kModified}});
}

Value onePage() { return make<Array>(std::vector{record(Page::kClass, {{"Title", "Été"}})}); }

Value oneFilter() {
  return make<Array>(
      std::vector{record(Filter::kClass, {{"Type", "Rating"}, {"Operation", "Is"}, {"Count", 5}})});
}

Value archivedAlbum(const SampleModel& model, const SampleAlbum& album) {
  const SampleSelection photos = photosOfAlbum(album, model);
  const Ref<Dictionary> entries = make<Dictionary>();
  entries->set(Album::kName, album.name);
  entries->set(Album::kKey, archivedKey(album.key));
  entries->set(Album::kKeys,
               album.keys == SampleKeys::packed ? packedKeys(photos) : listedKeys(photos));
  entries->set(Album::kAttributes, archivedAttributes(album.comment));
  if (album.kind == &FilterAlbum::kClass) {
    entries->set("Filters", oneFilter());
  }
  if (album.kind == &BookAlbum::kClass) {
    entries->set("Book", record(Book::kClass, {{"Pages", onePage()}}));
  }
  // Later catalogues have a section of their own for rolls.
  if (album.kind == &ArchiveAlbum::kClass && model.version() <= kLastWithAlbumFiles) {
    entries->set(Album::kChildren, archivedRolls(model));
  }
  const Ref<Array> children = make<Array>();
  for (const SampleAlbum& other : sampleAlbums()) {
    if (other.parent == album.key) {
      children->append(archivedAlbum(model, other));
    }
  }
  if (!children->empty()) {
    entries->set(Album::kChildren, children);
  }
  return record(*album.kind, entries);
}

}  // namespace

std::string archiveOf(const std::vector<Value>& objects, std::endian byteOrder) {
  NSArchiver archiver(byteOrder);
  for (const Value& object : objects) {
    archiver.encodeObject(object);
  }
  return std::string(archiver.archivedData().bytes());
}

std::string archiveOfVersion(std::int32_t version, std::endian byteOrder) {
  NSArchiver archiver(byteOrder);
  archiver.encodeInt(version);
  return std::string(archiver.archivedData().bytes());
}

// Keywords of photos are looked up among the used ones, by bare numbers.
Value archivedKeywords() {
  const Ref<Array> all = make<Array>();
  const Ref<Array> used = make<Array>();
  for (const SampleKeyword& keyword : SampleModel::keywords()) {
    const Value archived =
        record(Keyword::kClass, {{Keyword::kKey, keyword.key}, {Keyword::kString, keyword.text}});
    all->append(archived);
    if (keyword.isUsed) {
      used->append(archived);
    }
  }
  return record(KeywordMgr::kClass,
                {{KeywordMgr::kKeywordList, all}, {KeywordMgr::kUsedKeywords, used}});
}

std::vector<Value> archivedAlbums(const SampleModel& model) {
  std::vector<Value> albums;
  for (const SampleAlbum& album : sampleAlbums()) {
    if (album.parent == 0) {
      albums.push_back(archivedAlbum(model, album));
    }
  }
  return albums;
}

void writeDirectoryTable(const SampleModel& model, const std::string& folder,
                         std::endian byteOrder) {
  const Ref<Array> directories = make<Array>();
  for (std::uint32_t i = 0; i < model.rollCount(); ++i) {
    const SampleRoll roll = model.roll(i);
    directories->append(
        record(DirectoryRec::kClass, {{DirectoryRec::kKey, archivedKey(roll.directoryKey)},
                                      {DirectoryRec::kPath, roll.dataFolder}}));
  }
  // What the file begins with is the key that the next folder is to get.
  writeFile(folder + "/Dir.data",
            archiveOf({archivedKey(model.rollCount() + 1), directories}, byteOrder));
}

void writeAlbumFiles(const SampleModel& model, const std::string& folder, std::endian byteOrder) {
  const std::string prefix = folder + "/Albums/";
  makeFolder(prefix);
  for (const SampleAlbum& album : sampleAlbums()) {
    if (album.parent == 0) {
      writeFile(prefix + std::string(album.name),
                archiveOf({archivedAlbum(model, album)}, byteOrder));
    }
  }
}

}  // namespace mrziphoto::sample

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "../../values/Dictionary.h"
#include "../../values/Object.h"
#include "Fact.h"
#include "FactBlocks.h"
#include "FirstIndex.h"
#include "PhotoField.h"
#include "RowIndex.h"

namespace mrziphoto {

class Array;
class PhotoFacts;

/// What all photo and roll records of a library say, one row for each, in load order.
///
/// A row is its key and the place of its facts: one after another, each a byte or so of name and
/// kind and then no more bytes than it takes. Folders of paths and the names of entries are shared.
/// A row never changes once it was filled, nor does it move; texts that are handed out keep the
/// table alive.
class PhotoTable final : public Object {
 public:
  class Filler;

  [[nodiscard]] std::size_t size() const { return _keys.size(); }
  [[nodiscard]] PhotoFacts operator[](std::size_t row) const;
  [[nodiscard]] const std::vector<std::uint32_t>& keys() const { return _keys; }
  /// The first row with that key. The index is made by the first call.
  [[nodiscard]] std::optional<std::uint32_t> rowForKey(std::uint32_t key) const {
    return index().find(key);
  }
  [[nodiscard]] const RowIndex& index() const;

  /// The name under which a field stands in its store.
  [[nodiscard]] const DictionaryKey& name(std::uint32_t field) const { return _names[field]; }
  /// Folders of paths, each with the slash at its end.
  [[nodiscard]] std::string_view folder(std::uint64_t number) const { return _folders[number]; }
  [[nodiscard]] std::size_t folderCount() const { return _folders.size(); }
  /// The folder in which the paths lie that were filled in without it, with the slash at its end.
  [[nodiscard]] std::string_view root() const { return _root; }
  /// An object that rows refer to by this number.
  [[nodiscard]] const Ref<Object>& object(std::uint64_t number) const { return _objects[number]; }

  [[nodiscard]] const Class& objectClass() const override;

 private:
  friend class PhotoFacts;
  friend class Filler;

  PhotoTable();

  // Stands beside the bits of a row's stores when the row is one of `_longRows`.
  static constexpr unsigned char kIsLong = 0x80;
  static_assert(static_cast<unsigned>(PhotoStore::count) < 7);

  std::vector<std::uint32_t> _keys;
  std::vector<const char*> _facts;  // of each row: a bit for each of its stores, then the facts
  FactBlocks _blocks;
  std::vector<std::string_view> _folders;
  FactBlocks _folderTexts;
  std::string _root;
  std::vector<Ref<Object>> _objects;
  std::vector<DictionaryKey> _names;
  // The known facts of rows that are too long to be walked for each question, by row.
  struct LongRow {
    std::uint32_t row;
    std::array<const char*, kKnownFields> facts;  // each at its kind; nullptr for none
  };
  std::vector<LongRow> _longRows;
  mutable std::unique_ptr<RowIndex> _index;
};

/// Fills a table, row by row.
class PhotoTable::Filler {
 public:
  Filler();

  /// Begins a row with those stores; there may be nothing in a store.
  void beginRow(std::uint32_t key, std::initializer_list<PhotoStore> stores);
  void endRow();
  /// The number of the entry of that name in the image info. Entries tend to come in one order, so
  /// the name that followed `before` the last time is tried first.
  std::uint32_t fieldNamed(std::string_view name, std::uint32_t before);
  std::uint32_t fieldNamed(std::string_view name);
  /// Begins a fact: its value comes next. Nobody checks that the row has none of that name yet.
  void addName(std::uint32_t field) { putNumber(field); }
  /// Each puts a value: behind a name, or into the array that is open.
  void putText(std::string_view utf8);
  void putPath(std::uint32_t field, std::string_view utf8);
  void putInteger(std::int64_t number);
  void putReal(double number);
  void putDate(Date date);
  void putBoolean(bool value);
  void putBytes(std::string_view bytes);
  void putKeyNumbers(std::span<const std::uint32_t> keys);
  /// A path in `root`, without that.
  void putPathInRoot(std::uint32_t field, std::string_view utf8);
  /// Objects of the table, by number.
  void putObjects(std::span<const std::uint32_t> numbers);
  /// Of any kind of a property list; nothing else may stand in it.
  void putValue(const Value& value);
  /// The same for what stands right in the row under that name.
  void putField(std::uint32_t field, const Value& value);
  void beginArray() { putKind(FactKind::array); }
  void beginDictionary() { putKind(FactKind::dictionary); }
  void endCollection() { putNumber(0); }

  /// To be set before any path in it.
  void setRoot(std::string root) { _table->_root = std::move(root); }
  /// Keeps an object that rows may refer to, and answers its number.
  std::uint32_t addObject(Ref<Object> object);

  /// Ends a value that stands in no row, and answers it.
  Fact finishLone();
  /// Ends a value that nobody needs.
  void discardLone() { _blocks.discard(); }

  /// The table, with the rows that were ended so far.
  [[nodiscard]] const Ref<PhotoTable>& table() const { return _table; }
  /// The table. Afterwards the filler is of no use.
  Ref<PhotoTable> finish();

 private:
  /// How the paths of one field have been cut so far.
  struct PathCut {
    std::uint32_t folder = 0;
    std::string_view folderText;
    std::uint32_t paths = 0;
    std::uint32_t folders = 0;
    std::uint32_t levels = 1;  // that are left to each photo: its name, and folders of its own
  };

  /// Cuts the path of a field; answers what is left behind the folder that `cut` has then.
  std::string_view cutPath(PathCut& cut, std::string_view path);
  void takeFolder(PathCut& cut, std::string_view path);
  void putCut(FactKind kind, std::uint64_t folder, std::string_view rest);
  void putNumbers(FactKind kind, std::span<const std::uint32_t> numbers);
  void noteFacts(const char* facts);
  void putKind(FactKind kind);
  void putNumber(std::uint64_t number);
  void putIntegerOfType(const Value& value);
  void putArray(const Array& array);
  /// Writes a kind; answers where its payload begins, with that much room for it.
  char* begin(FactKind kind, std::size_t room);
  void put(FactKind kind, std::string_view bytes);

  Ref<PhotoTable> _table;
  FactBlocks& _blocks;
  std::array<PathCut, kKnownFields> _cuts;
  FirstIndex<std::string_view> _folderIndex;
  FirstIndex<std::string_view> _nameIndex;
  std::vector<std::string_view> _nameTexts;  // by field, as in the table
  std::vector<std::uint32_t> _followers;     // by field: the one that came after it last
};

}  // namespace mrziphoto

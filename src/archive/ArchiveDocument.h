#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "../values/Data.h"
#include "../values/Export.h"

namespace mrziphoto {

/// The structure of any typed-object archive: its groups with their types and values, and its
/// objects with their classes and contents, whether or not anybody knows these classes.
///
/// A file may go on behind its archive, and nothing in an archive says where it ends. So the
/// archive part ends before the first top-level group that cannot be read, once at least one has
/// been read: what is left is either something else or damaged, and `trailingReason` says why it is
/// no group.
class MRZIPHOTO_EXPORT ArchiveDocument {
 public:
  /// Nothing when the data is no archive. Throws NSException kNSInconsistentArchiveException, with
  /// the byte offset, when its first group is damaged. Data without an owner must live for ever.
  static std::optional<ArchiveDocument> initWithData(const Data& data);

  [[nodiscard]] std::endian byteOrder() const;
  /// The version of the system that wrote the archive; 1000 for Mac OS X.
  [[nodiscard]] std::int32_t systemVersion() const;
  /// How many bytes the archive part has.
  [[nodiscard]] std::size_t length() const;
  /// How many bytes follow the archive part.
  [[nodiscard]] std::size_t trailingLength() const;
  /// Why the bytes behind the archive part are no group; empty when there are none.
  [[nodiscard]] const std::string& trailingReason() const;

  /// The archive part, written anew: the same bytes for every archive that the format's original
  /// writer wrote.
  [[nodiscard]] Data write() const;
  /// Indented lines for people to read, each group with its type and its values. Objects, classes
  /// and C strings bear the numbers that references name, classes their superclasses and versions
  /// where they stand first. Bytes are shortened.
  [[nodiscard]] std::string text() const;
  /// The same as one line of JSON, nothing shortened:
  ///
  ///     {"byteOrder", "streamerVersion", "systemVersion", "length",
  ///      "classes": [{"number", "name", "version", "superclass": number or null}],
  ///      "groups": [{"types", "values": [...]}],
  ///      "trailing": null or {"offset", "length", "reason"}}
  ///
  /// A value is a number; a text; null for nil; "nan", "inf" or "-inf"; or an object that says
  /// more:
  /// {"object": number, "class": name, "groups"}, {"reference": number}, {"class": name, "number"},
  /// {"cString": number, "text"}, {"bytes": length, "hex"}.
  [[nodiscard]] std::string json() const;

 private:
  struct Contents;
  class Builder;
  class TextPrinter;
  class JsonPrinter;

  explicit ArchiveDocument(std::shared_ptr<const Contents> contents);

  std::shared_ptr<const Contents> _contents;
};

}  // namespace mrziphoto

#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "../values/Data.h"
#include "../values/Export.h"
#include "ArchiveItem.h"

namespace mrziphoto {

/// The structure of any typed-object archive: its groups with their types and values, and its
/// objects with their classes and contents. The classes need not be registered.
///
/// A file may go on behind its archive, and an archive does not say where it ends. The archive part
/// therefore ends before the first top-level group that cannot be read, unless it is the very
/// first; `trailingReason` says why the rest is no group.
class MRZIPHOTO_EXPORT ArchiveDocument {
 public:
  /// Answers nothing when the data is no archive. Throws NSException
  /// kNSInconsistentArchiveException, with the byte offset, when its first group is damaged. Data
  /// without an owner must live for ever.
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

  /// The archive part as one run of items in the order of the file, valid as long as a copy of this
  /// document lives: a group is followed by its values; a new object by its class, its groups and
  /// its end. Every class and C string that an item names by its position is there.
  [[nodiscard]] std::span<const ArchiveItem> items() const;
  /// Classes in the order of the file, superclasses behind the class that needs them first.
  [[nodiscard]] std::span<const ArchiveClass> classes() const;
  [[nodiscard]] std::span<const ArchiveCString> cStrings() const;

  /// The archive part, written anew: the same bytes for every archive that the format's original
  /// writer wrote.
  [[nodiscard]] Data write() const;

 private:
  struct Contents;
  class Builder;

  explicit ArchiveDocument(std::shared_ptr<const Contents> contents);

  std::shared_ptr<const Contents> _contents;
};

}  // namespace mrziphoto

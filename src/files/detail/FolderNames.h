#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mrziphoto::detail {

/// The names of one folder's entries, for finding one by a name that differs from it in case or
/// Unicode normal form.
class FolderNames {
 public:
  /// The names in that folder, shared by all who ask until the folder changes; nullptr when there
  /// is no such folder.
  static std::shared_ptr<const FolderNames> of(const std::string& folder);

  /// Reads the folder.
  explicit FolderNames(const std::string& folder);

  /// The entry whose name differs from `name` in case and normal form at most; of several the first
  /// in the order of their bytes.
  [[nodiscard]] std::optional<std::string> nameLike(std::string_view name) const;
  /// False when the folder, or a part of it, could not be read.
  [[nodiscard]] bool isWhole() const { return _isWhole; }
  /// Bytes of memory taken, roughly.
  [[nodiscard]] std::size_t cost() const {
    return sizeof *this + _rows.capacity() * sizeof(Row) + _names.capacity();
  }

 private:
  struct Row {
    std::size_t hash;  // of the folded name
    std::size_t start;
    std::size_t size;
  };
  [[nodiscard]] std::string_view nameOf(const Row& row) const {
    return std::string_view(_names).substr(row.start, row.size);
  }

  bool _isWhole = false;
  std::string _names;
  std::vector<Row> _rows;  // by hash, then by name
};

/// The text that all names share which differ only in case and normal form; nothing for bytes that
/// are no UTF-8.
[[nodiscard]] std::optional<std::string> foldedName(std::string_view name);

}  // namespace mrziphoto::detail

#pragma once

#include <optional>
#include <string>

#include "../photos/ArchivedRecord.h"

namespace mrziphoto {

/// One entry of the directory table.
class MRZIPHOTO_EXPORT DirectoryRec final : public ArchivedRecord {
 public:
  static const Class kClass;

  /// The directory key as stored: a number or a `Key`.
  [[nodiscard]] Value directoryKey() const { return entry(kKey); }
  /// The directory key as a number. Throws what `Key::value` throws.
  [[nodiscard]] Value directoryKeyValue() const;
  /// The folder, relative to the library folder.
  [[nodiscard]] std::optional<std::string> directory() const { return entry(kPath).text(); }

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

  static constexpr std::string_view kKey = "Key";
  static constexpr std::string_view kPath = "Path";
};

}  // namespace mrziphoto

#pragma once

#include <optional>
#include <string>

#include "ArchivedRecord.h"

namespace mrziphoto {

/// Where an image file lies: the key of its folder and its name.
class MRZIPHOTO_EXPORT ImageSource : public ArchivedRecord {
 public:
  static const Class kClass;

  [[nodiscard]] Value objectForKey(std::string_view name) const { return entry(name); }
  /// The directory key, as the archive stored it.
  [[nodiscard]] Value directoryKey() const { return entry(kDirectory); }
  [[nodiscard]] std::optional<std::string> filename() const { return entry(kFilename).text(); }

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

  static constexpr std::string_view kDirectory = "Directory";
  // The info store spells its own entry "FileName".
  static constexpr std::string_view kFilename = "Filename";
};

}  // namespace mrziphoto

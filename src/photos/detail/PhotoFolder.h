#pragma once

#include <string>
#include <string_view>

#include "../../values/Export.h"
#include "../../values/KeyedHash.h"
#include "../../values/Object.h"

namespace mrziphoto {

/// A folder of photos, shared by the records whose files lie in it, so that what is learnt about it
/// from the file system is learnt once and not once a photo.
class MRZIPHOTO_EXPORT PhotoFolder final : public Object {
 public:
  /// The folder at that path. The folder around it, where it is given, spares most questions to the
  /// file system.
  explicit PhotoFolder(const std::string& path, const PhotoFolder* around = nullptr);

  /// The path with its symbolic links resolved; the path as it is when there is no such folder.
  [[nodiscard]] const std::string& path() const { return _path; }
  /// The folder in which the photos' stores lie: the sub-folder "Data", or the folder itself.
  [[nodiscard]] std::string storeFolder(bool inDataFolder) const;
  /// True when the store folder has an entry of that name. The folder is read once, on first
  /// request.
  [[nodiscard]] bool holdsStore(bool inDataFolder, std::string_view name) const;

  [[nodiscard]] const Class& objectClass() const override;

 private:
  struct Listing {
    bool wasRead = false;
    TextSet names;
  };

  std::string _path;
  bool _exists = false;
  mutable Listing _listings[2];
};

}  // namespace mrziphoto

#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "../values/Dictionary.h"
#include "../values/Export.h"
#include "../values/KeyedHash.h"
#include "../values/Object.h"
#include "../values/Value.h"

namespace mrziphoto {

/// A folder of resources: an application, or the system's own texts. What is read from it is kept
/// for the bundle's life. Thread-safe.
class MRZIPHOTO_EXPORT Bundle final : public Object {
 public:
  static const Class kClass;

  /// The bundle in that folder; nothing when there is no such folder.
  static Ref<Bundle> withPath(const std::string& folder);
  /// The bundle in that folder, which need not exist: it is empty then.
  explicit Bundle(std::string folder) : _folder(std::move(folder)) {}

  [[nodiscard]] const std::string& path() const { return _folder; }
  /// The entry of that name of the property list "Contents/Info.plist", else "Info.plist"; nothing
  /// when there is no such entry, or no list that can be read.
  [[nodiscard]] Value infoDictionaryValue(std::string_view key) const;
  /// The text for a key in the user's language: that of the string table
  /// "<language>.lproj/<table>.strings", else the English table's, else the key itself. The
  /// language comes from the environment (LC_ALL, LC_MESSAGES, LANG) when the table is first asked.
  [[nodiscard]] std::string localizedStringForKey(std::string_view key,
                                                  std::string_view table) const;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  /// "Bundle <folder>".
  [[nodiscard]] std::string description() const override;

 private:
  using Texts = TextMap<std::string>;
  [[nodiscard]] Ref<Dictionary> readInfoDictionary() const;
  [[nodiscard]] Texts readTable(const std::string& name) const;

  std::string _folder;
  mutable std::mutex _mutex;
  mutable bool _infoAttempted = false;
  mutable Ref<Dictionary> _info;
  mutable std::map<std::string, Texts, std::less<>> _tables;
};

}  // namespace mrziphoto

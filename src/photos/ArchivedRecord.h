#pragma once

#include <string>
#include <string_view>

#include "../values/Dictionary.h"
#include "../values/Export.h"
#include "../values/Object.h"
#include "../values/Value.h"

namespace mrziphoto {

/// A thin wrapper around one string-keyed dictionary, which is all that an archive holds of it.
class MRZIPHOTO_EXPORT ArchivedRecord : public Object {
 public:
  /// The dictionary; nothing when an archive held something else in its place.
  [[nodiscard]] virtual Ref<Dictionary> storedDictionary() const { return _dictionary; }

  /// "class name: dictionary".
  [[nodiscard]] std::string description() const override;
  /// Logs "%@ version %u" for every class of the object's chain that the archive stored in a newer
  /// version than the class knows, then reads the dictionary all the same.
  void initWithCoder(NSUnarchiver& coder) override;
  void encodeWithCoder(NSArchiver& coder) const override;

 protected:
  ArchivedRecord() = default;
  explicit ArchivedRecord(Ref<Dictionary> dictionary) : _dictionary(std::move(dictionary)) {}

  /// The entry of that name; nothing when it is missing.
  [[nodiscard]] Value entry(std::string_view name) const;
  void setEntry(std::string_view name, Value value);
  /// What is logged for a class whose stored version is above the known one.
  virtual void logNewerVersion(const Class& olderClass, const NSUnarchiver& coder,
                               std::uint32_t version) const;

  // Records that exist by the hundred thousand make it on first request.
  mutable Ref<Dictionary> _dictionary;
};

}  // namespace mrziphoto

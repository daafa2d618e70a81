#pragma once

#include <optional>
#include <string_view>

#include "ArchivedRecord.h"

namespace mrziphoto {

/// The attributes store of one photo, or of one album.
class MRZIPHOTO_EXPORT AttributeMgr final : public ArchivedRecord {
 public:
  static const Class kClass;

  AttributeMgr() = default;
  /// A store with an empty dictionary, not even "Attributes" in it.
  static Ref<AttributeMgr> init();
  /// A store over this dictionary itself.
  static Ref<AttributeMgr> initWithDictionary(Ref<Dictionary> dictionary);

  void setAttributes(const Ref<Dictionary>& attributes) { setEntry(kAttributes, attributes); }
  /// The attributes by name; nothing when none was ever set.
  [[nodiscard]] Ref<Dictionary> attributes() const { return entry(kAttributes).dictionary(); }
  /// Setting nothing changes no attribute, but there is an "Attributes" dictionary afterwards.
  void setAttributeForKey(const Value& attribute, std::string_view name);
  [[nodiscard]] Value attributeForKey(std::string_view name) const;

  void setModificationDate(const Value& date) { setEntry(kModificationDate, date); }
  [[nodiscard]] std::optional<Date> modificationDate() const;

  /// The photo's camera block, as bytes.
  void setImageUserData(const Value& block) { setAttributeForKey(block, kImageUserData); }
  [[nodiscard]] Value imageUserData() const { return attributeForKey(kImageUserData); }

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

  static constexpr std::string_view kAttributes = "Attributes";
  static constexpr std::string_view kModificationDate = "Modification_Date";
  // Some stored libraries spell it so.
  static constexpr std::string_view kModicationDate = "Modication_Date";

  // The attributes' names.
  static constexpr std::string_view kAlbumAnnotation = "AAnnotation";
  static constexpr std::string_view kAnnotation = "Annotation";
  static constexpr std::string_view kArchiveDate = "ArchiveDate";
  static constexpr std::string_view kModDate = "ModDate";
  static constexpr std::string_view kMetaDate = "MetaDate";
  static constexpr std::string_view kCaption = "Caption";
  static constexpr std::string_view kExt = "Ext";
  static constexpr std::string_view kOrigExt = "OrigExt";
  static constexpr std::string_view kFileSize = "FileSize";
  static constexpr std::string_view kKeyWords = "KeyWords";
  static constexpr std::string_view kOrigFileName = "OrigFileName";
  static constexpr std::string_view kImageUserData = "ImageUserData";
};

}  // namespace mrziphoto

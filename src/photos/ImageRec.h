#pragma once

#include <optional>
#include <string>
#include <string_view>

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

/// An image source under another class name; it differs in nothing else.
class MRZIPHOTO_EXPORT DBSource final : public ImageSource {
 public:
  static const Class kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

/// An image source under another class name; it differs in nothing else.
class MRZIPHOTO_EXPORT DBCopySource final : public ImageSource {
 public:
  static const Class kClass;
  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

/// The info store of one photo.
class MRZIPHOTO_EXPORT ImageRec final : public ArchivedRecord {
 public:
  static const Class kClass;

  ImageRec() = default;
  /// A store with an empty dictionary.
  static Ref<ImageRec> init();
  /// A store over this dictionary itself.
  static Ref<ImageRec> initWithDictionary(Ref<Dictionary> dictionary);

  void setObjectForKey(Value object, std::string_view name) { setEntry(name, std::move(object)); }
  [[nodiscard]] Value objectForKey(std::string_view name) const { return entry(name); }

  /// Setting nothing changes nothing.
  void setFileName(const Value& name) { setIfPresent(kFileName, name); }
  void setImageHeight(const Value& pixels) { setIfPresent(kImageHeight, pixels); }
  void setImageWidth(const Value& pixels) { setIfPresent(kImageWidth, pixels); }
  void setRotation(const Value& rotation) { setIfPresent(kRotation, rotation); }
  void setDate(const Value& date) { setIfPresent(kDate, date); }

  /// The image source's name where there is an image source (even when that has none), else the
  /// store's own; nothing when it is missing.
  [[nodiscard]] std::optional<std::string> fileName() const;
  /// Pixels, and the rotation of the photo; 0.0 when missing.
  [[nodiscard]] Value imageHeight() const { return numberOrZero(kImageHeight); }
  [[nodiscard]] Value imageWidth() const { return numberOrZero(kImageWidth); }
  [[nodiscard]] Value rotation() const { return numberOrZero(kRotation); }
  [[nodiscard]] Ref<ImageSource> imageSource() const;
  [[nodiscard]] Value key() const { return entry(kKey); }
  [[nodiscard]] Value rollKey() const { return entry(kRoll); }
  [[nodiscard]] std::optional<Date> date() const { return entry(kDate).date(); }
  /// The image source's directory key; nothing without an image source.
  [[nodiscard]] Value directoryKey() const;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

  static constexpr std::string_view kFileName = "FileName";
  static constexpr std::string_view kImageHeight = "Image_Height";
  static constexpr std::string_view kImageWidth = "Image_Width";
  static constexpr std::string_view kRotation = "Rotation";
  static constexpr std::string_view kImageSource = "ImageSource";
  static constexpr std::string_view kKey = "Key";
  static constexpr std::string_view kRoll = "Roll";
  static constexpr std::string_view kDate = "Date";

 private:
  void setIfPresent(std::string_view name, const Value& value);
  [[nodiscard]] Value numberOrZero(std::string_view name) const;
};

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
  static constexpr std::string_view kCaption = "Caption";
  static constexpr std::string_view kExt = "Ext";
  static constexpr std::string_view kOrigExt = "OrigExt";
  static constexpr std::string_view kFileSize = "FileSize";
  static constexpr std::string_view kKeyWords = "KeyWords";
  static constexpr std::string_view kOrigFileName = "OrigFileName";
  static constexpr std::string_view kImageUserData = "ImageUserData";
};

}  // namespace mrziphoto

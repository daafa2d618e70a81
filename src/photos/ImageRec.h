#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ArchivedRecord.h"
#include "ImageSource.h"

namespace mrziphoto {

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

}  // namespace mrziphoto

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "../values/Data.h"
#include "../values/Decimal.h"
#include "../values/Export.h"
#include "../values/Object.h"
#include "../values/Value.h"

namespace mrziphoto {

/// How exposure times are calculated: whole numbers, rounded plainly, and 0 where that fails.
class MRZIPHOTO_EXPORT TVQExposureBehaviour final : public Object, public NSDecimalNumberBehaviors {
 public:
  static const Class kClass;

  /// The shared instance, which is never freed.
  static Ref<TVQExposureBehaviour> exposureBehaviour();

  [[nodiscard]] NSRoundingMode roundingMode() const override { return NSRoundingMode::plain; }
  [[nodiscard]] std::int16_t scale() const override { return 0; }
  /// 0, whatever went wrong.
  [[nodiscard]] Decimal exceptionDuringOperationErrorLeftOperandRightOperand(
      std::string_view operation, NSCalculationError error, const Decimal& leftOperand,
      const Decimal& rightOperand) const override;

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
};

class TVQStreamData;

/// What the camera recorded with a photo, decoded from the block that the photo's attributes keep.
///
/// Every accessor answers nothing when the block has no such record. Key-value access answers all
/// of them by name. Nothing changes once the block is decoded.
class MRZIPHOTO_EXPORT TVQiPhotoUserData final : public Object {
 public:
  static const Class kClass;

  /// Decodes a whole block; an empty one gives an object without values. A record that is shorter
  /// than its own header, or that reaches beyond the block, ends the decoding, and what stands
  /// before it is kept. A text of an unexpected type is logged: "String type %d for code 0x%8x".
  /// Throws NSException "NSInvalidArgumentException" for a fraction whose denominator is 0.
  static Ref<TVQiPhotoUserData> initWithData(const Data& data);

  /// The photo that the values belong to; nothing once that has gone or was unloaded. It is not
  /// owned.
  void setPhoto(const Object* photo) { _imageRecord = photo; }
  [[nodiscard]] const Object* photo() const { return _imageRecord; }

  /// The value of the record of that code: a text, a number, a decimal, or the bytes of a record of
  /// unknown meaning. Of several such records the last one counts.
  [[nodiscard]] Value dataForKey(std::uint32_t code) const;

  [[nodiscard]] std::optional<std::string> maker() const;
  [[nodiscard]] std::optional<std::string> model() const;
  [[nodiscard]] std::optional<std::string> software() const;
  /// The f-number: 2.8 for f/2.8.
  [[nodiscard]] std::optional<Decimal> aperture() const;
  /// APEX, as the camera wrote it.
  [[nodiscard]] std::optional<Decimal> maximumAperture() const;
  /// The exposure time in seconds.
  [[nodiscard]] std::optional<Decimal> exposure() const;
  /// Exposure values (EV). What is stored has no sign.
  [[nodiscard]] std::optional<Decimal> exposureBias() const;
  /// Metres.
  [[nodiscard]] std::optional<Decimal> subjectDistance() const;
  [[nodiscard]] std::optional<std::uint16_t> isoSpeed() const;
  /// The codes of EXIF; the descriptions below put them in words.
  [[nodiscard]] std::optional<std::uint16_t> sensingMethod() const;
  [[nodiscard]] std::optional<std::uint16_t> lightSource() const;
  [[nodiscard]] std::optional<std::uint16_t> flash() const;
  [[nodiscard]] std::optional<std::uint16_t> meteringMode() const;
  /// APEX, as the camera wrote it.
  [[nodiscard]] std::optional<Decimal> brightness() const;
  /// Millimetres.
  [[nodiscard]] std::optional<Decimal> focalLength() const;

  /// The n of an exposure time written as 1/n, rounded to a whole number of at most 18 or 19 digits
  /// and zeros behind them. 0 when there is no exposure time and when it is 0.
  [[nodiscard]] Decimal shutter() const;

  /// The settings in words, in the language of the library's texts. A setting that is missing
  /// counts as code 0; a code without words gives a text with the number, such as "Flash 9".
  [[nodiscard]] std::string sensingMethodDescription() const;
  [[nodiscard]] std::string lightSourceDescription() const;
  [[nodiscard]] std::string flashDescription() const;
  [[nodiscard]] std::string meteringModeDescription() const;

  /// Second names.
  [[nodiscard]] std::optional<std::string> cameraMaker() const { return maker(); }
  [[nodiscard]] std::optional<std::string> cameraModel() const { return model(); }
  [[nodiscard]] std::optional<std::string> cameraSoftware() const { return software(); }
  [[nodiscard]] Decimal fractionalExposure() const { return shutter(); }
  [[nodiscard]] std::optional<std::uint16_t> speed() const { return isoSpeed(); }

  [[nodiscard]] const Class& objectClass() const override { return kClass; }
  [[nodiscard]] const Accessor* accessorNamed(std::string_view name) const override;

 private:
  struct Entry {
    std::uint32_t code;
    Value value;
  };

  void _readData(TVQStreamData& data);
  void readRecord(TVQStreamData& data, std::uint32_t size, std::uint32_t code,
                  std::uint32_t offset);
  void _readDataStringForKeyAtIndex(TVQStreamData& data, std::uint32_t code, std::uint32_t offset);
  void _readDataUnsignedShortForKeyAtIndex(TVQStreamData& data, std::uint32_t code,
                                           std::uint32_t offset);
  void _readDataRationalForKeyAtIndex(TVQStreamData& data, std::uint32_t code,
                                      std::uint32_t offset);
  void _readDataExposureForKeyAtIndex(TVQStreamData& data, std::uint32_t code,
                                      std::uint32_t offset);
  void store(std::uint32_t code, Value value) {
    _exifDictionary.push_back({code, std::move(value)});
  }
  [[nodiscard]] std::optional<std::uint16_t> numberForKey(std::uint32_t code) const;

  // Sorted by code once the block is decoded, records of one code in the order of the block. One
  // flat piece of memory: a host may ask every photo of a library.
  std::vector<Entry> _exifDictionary;
  const Object* _imageRecord = nullptr;
};

}  // namespace mrziphoto

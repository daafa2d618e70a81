#include "TVQiPhotoUserData.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "../stream/TVQStreamData.h"
#include "../values/Log.h"
#include "../values/NSException.h"
#include "../values/detail/Formatted.h"
#include "../values/detail/KeyValue.h"
#include "../values/detail/MacRoman.h"
#include "detail/CameraRecords.h"
#include "detail/SettingDescriptions.h"

namespace mrziphoto {
namespace {

constexpr std::uint32_t kHeaderSize = 8;

std::uint32_t readUnsigned(TVQStreamData& data) {
  return static_cast<std::uint32_t>(data.readInt());
}

std::uint16_t readUnsignedShort(TVQStreamData& data) {
  return static_cast<std::uint16_t>(data.readShort());
}

void seekToPayload(TVQStreamData& data, std::uint32_t offset) {
  data.seekToDataOffset(offset + kHeaderSize);
}

}  // namespace

const Class TVQiPhotoUserData::kClass{"TVQiPhotoUserData"};

Ref<TVQiPhotoUserData> TVQiPhotoUserData::initWithData(const Data& data) {
  Ref<TVQiPhotoUserData> result = make<TVQiPhotoUserData>();
  TVQStreamData stream(data);
  stream.setShouldSwapMode(TVQStreamData::bigEndian);
  try {
    result->_readData(stream);
  } catch (const NSException& exception) {
    // A record that is cut off ends the block; all other faults reach the caller.
    if (exception.name() != kNSRangeException) {
      throw;
    }
  }
  std::ranges::stable_sort(result->_exifDictionary, {}, &Entry::code);
  return result;
}

void TVQiPhotoUserData::_readData(TVQStreamData& data) {
  // Offsets are signed numbers to those who write such blocks: there are none from 2 GiB on.
  const auto length = static_cast<std::int32_t>(data.length());
  std::int32_t offset = 0;
  while (offset < length) {
    const auto start = static_cast<std::uint32_t>(offset);
    data.seekToDataOffset(start);
    const std::uint32_t size = readUnsigned(data);
    const std::uint32_t code = readUnsigned(data);
    if (size < kHeaderSize) {
      return;
    }
    readRecord(data, size, code, start);
    if (size >= static_cast<std::uint32_t>(length - offset)) {
      return;
    }
    offset += static_cast<std::int32_t>(size);
  }
}

/// The sizes of known payloads stand in their layout: only a raw one goes by the record's size.
void TVQiPhotoUserData::readRecord(TVQStreamData& data, std::uint32_t size, std::uint32_t code,
                                   std::uint32_t offset) {
  switch (cameraPayload(code)) {
    case CameraPayload::text:
      return _readDataStringForKeyAtIndex(data, code, offset);
    case CameraPayload::number:
      return _readDataUnsignedShortForKeyAtIndex(data, code, offset);
    case CameraPayload::fraction:
      return _readDataRationalForKeyAtIndex(data, code, offset);
    case CameraPayload::exposure:
      return _readDataExposureForKeyAtIndex(data, code, offset);
    case CameraPayload::raw:
      seekToPayload(data, offset);
      return store(code, data.readDataWithLength(size - kHeaderSize));
  }
}

void TVQiPhotoUserData::_readDataStringForKeyAtIndex(TVQStreamData& data, std::uint32_t code,
                                                     std::uint32_t offset) {
  seekToPayload(data, offset);
  const std::uint16_t length = readUnsignedShort(data);
  const std::uint16_t type = readUnsignedShort(data);
  if (type != 0) {
    log("String type %d for code 0x%8x", type, code);
  }
  store(code, stringFromMacRoman(data.readDataWithLength(length)));
}

void TVQiPhotoUserData::_readDataUnsignedShortForKeyAtIndex(TVQStreamData& data, std::uint32_t code,
                                                            std::uint32_t offset) {
  seekToPayload(data, offset);
  store(code, Value::integerOfType(readUnsignedShort(data), 'S'));
}

void TVQiPhotoUserData::_readDataRationalForKeyAtIndex(TVQStreamData& data, std::uint32_t code,
                                                       std::uint32_t offset) {
  seekToPayload(data, offset);
  const std::uint32_t numerator = readUnsigned(data);
  std::int32_t denominator = data.readInt();
  if (denominator == 0) {
    NSException::raise(kNSInvalidArgumentException,
                       detail::formatted("Can't take log10 of {}", denominator));
  }
  // Cameras write powers of ten; other denominators count as one, 2 to 19 as 10.
  std::int32_t exponent = 0;
  for (; denominator > 1; denominator /= 10) {
    --exponent;
  }
  store(code, Decimal{numerator, exponent});
}

void TVQiPhotoUserData::_readDataExposureForKeyAtIndex(TVQStreamData& data, std::uint32_t code,
                                                       std::uint32_t offset) {
  seekToPayload(data, offset);
  const std::uint32_t numerator = readUnsigned(data);
  const std::uint32_t denominator = readUnsigned(data);
  if (denominator == 0) {
    return store(code, Decimal{});
  }
  // The record holds the time in APEX: as -log2 of the seconds. A power beyond the range of
  // floating point gives 0 seconds.
  const float apex = static_cast<float>(numerator) / static_cast<float>(denominator);
  store(code, Decimal::fromDouble(1.0 / std::pow(2.0, static_cast<double>(apex))));
}

Value TVQiPhotoUserData::dataForKey(std::uint32_t code) const {
  const auto behind = std::ranges::upper_bound(_exifDictionary, code, {}, &Entry::code);
  const bool isThere = behind != _exifDictionary.begin() && std::prev(behind)->code == code;
  return isThere ? std::prev(behind)->value : Value();
}

std::optional<std::uint16_t> TVQiPhotoUserData::numberForKey(std::uint32_t code) const {
  const std::optional<std::int64_t> number = dataForKey(code).integer();
  return number ? std::optional(static_cast<std::uint16_t>(*number)) : std::nullopt;
}

std::optional<std::string> TVQiPhotoUserData::maker() const {
  return dataForKey(cameraRecordCode("maker")).text();
}

std::optional<std::string> TVQiPhotoUserData::model() const {
  return dataForKey(cameraRecordCode("model")).text();
}

std::optional<std::string> TVQiPhotoUserData::software() const {
  return dataForKey(cameraRecordCode("software")).text();
}

std::optional<Decimal> TVQiPhotoUserData::aperture() const {
  return dataForKey(cameraRecordCode("aperture")).decimal();
}

std::optional<Decimal> TVQiPhotoUserData::maximumAperture() const {
  return dataForKey(cameraRecordCode("maximumAperture")).decimal();
}

std::optional<Decimal> TVQiPhotoUserData::exposure() const {
  return dataForKey(cameraRecordCode("exposure")).decimal();
}

std::optional<Decimal> TVQiPhotoUserData::exposureBias() const {
  return dataForKey(cameraRecordCode("exposureBias")).decimal();
}

std::optional<Decimal> TVQiPhotoUserData::subjectDistance() const {
  return dataForKey(cameraRecordCode("subjectDistance")).decimal();
}

std::optional<std::uint16_t> TVQiPhotoUserData::isoSpeed() const {
  return numberForKey(cameraRecordCode("isoSpeed"));
}

std::optional<std::uint16_t> TVQiPhotoUserData::sensingMethod() const {
  return numberForKey(cameraRecordCode("sensingMethod"));
}

std::optional<std::uint16_t> TVQiPhotoUserData::lightSource() const {
  return numberForKey(cameraRecordCode("lightSource"));
}

std::optional<std::uint16_t> TVQiPhotoUserData::flash() const {
  return numberForKey(cameraRecordCode("flash"));
}

std::optional<std::uint16_t> TVQiPhotoUserData::meteringMode() const {
  return numberForKey(cameraRecordCode("meteringMode"));
}

std::optional<Decimal> TVQiPhotoUserData::brightness() const {
  return dataForKey(cameraRecordCode("brightness")).decimal();
}

std::optional<Decimal> TVQiPhotoUserData::focalLength() const {
  return dataForKey(cameraRecordCode("focalLength")).decimal();
}

Decimal TVQiPhotoUserData::shutter() const {
  const Decimal time = exposure().value_or(Decimal{});
  return time == Decimal{} ? time
                           : Decimal{1}.dividing(time, *TVQExposureBehaviour::exposureBehaviour());
}

std::string TVQiPhotoUserData::sensingMethodDescription() const {
  return describeSetting(kSensingMethods, sensingMethod().value_or(0));
}

std::string TVQiPhotoUserData::lightSourceDescription() const {
  return describeSetting(kLightSources, lightSource().value_or(0));
}

std::string TVQiPhotoUserData::flashDescription() const {
  return describeSetting(kFlashStates, flash().value_or(0));
}

std::string TVQiPhotoUserData::meteringModeDescription() const {
  return describeSetting(kMeteringModes, meteringMode().value_or(0));
}

namespace {

template <std::size_t row>
Value recordedValue(const Object& object) {
  return static_cast<const TVQiPhotoUserData&>(object).dataForKey(kCameraRecords[row].code);
}

/// What the records are called by, and the answers that are made from them, sorted by name.
template <std::size_t... row>
constexpr auto makeAccessors(std::index_sequence<row...> /*records*/) {
  using Camera = TVQiPhotoUserData;
  std::array accessors{
      Accessor{kCameraRecords[row].accessor, recordedValue<row>}...,
      accessor<&Camera::cameraMaker>("cameraMaker"),
      accessor<&Camera::cameraModel>("cameraModel"),
      accessor<&Camera::cameraSoftware>("cameraSoftware"),
      accessor<&Camera::flashDescription>("flashDescription"),
      accessor<&Camera::fractionalExposure>("fractionalExposure"),
      accessor<&Camera::lightSourceDescription>("lightSourceDescription"),
      accessor<&Camera::meteringModeDescription>("meteringModeDescription"),
      accessor<&Camera::sensingMethodDescription>("sensingMethodDescription"),
      accessor<&Camera::shutter>("shutter"),
      accessor<&Camera::speed>("speed"),
      Accessor{"photo",
               [](const Object& o) -> Value {
                 return Ref<Object>(const_cast<Object*>(static_cast<const Camera&>(o).photo()));
               }},
  };
  std::ranges::sort(accessors, {}, &Accessor::name);
  return accessors;
}

constexpr auto kAccessors = makeAccessors(std::make_index_sequence<kCameraRecords.size()>());

}  // namespace

const Accessor* TVQiPhotoUserData::accessorNamed(std::string_view name) const {
  // The name of a record without an accessor is empty.
  return name.empty() ? nullptr : findAccessor<kAccessors>(name, Object::accessorNamed(name));
}

}  // namespace mrziphoto

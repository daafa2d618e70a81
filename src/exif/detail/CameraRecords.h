#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace mrziphoto {

/// How the payload of a record in a camera block is laid out.
enum class CameraPayload : std::uint8_t { text, number, fraction, exposure, raw };

/// What the records of one code hold.
struct CameraRecord {
  std::uint32_t code;
  CameraPayload payload;
  /// The operation that answers the value; empty for a value without one.
  std::string_view accessor;
};

/// The records that a camera block is known to hold. A code is the byte A9 and three letters, or
/// "ex" and the number of an EXIF tag. All other records are raw bytes.
inline constexpr std::array kCameraRecords{
    CameraRecord{0xA96D616B, CameraPayload::text, "maker"},     // "mak"
    CameraRecord{0xA96D6F64, CameraPayload::text, "model"},     // "mod"
    CameraRecord{0xA9737772, CameraPayload::text, "software"},  // "swr"
    CameraRecord{0x6578829D, CameraPayload::fraction, "aperture"},
    CameraRecord{0x65788827, CameraPayload::number, "isoSpeed"},
    CameraRecord{0x65789201, CameraPayload::exposure, "exposure"},
    CameraRecord{0x65789202, CameraPayload::fraction, ""},  // ApertureValue
    CameraRecord{0x65789203, CameraPayload::fraction, "brightness"},
    CameraRecord{0x65789204, CameraPayload::fraction, "exposureBias"},
    CameraRecord{0x65789205, CameraPayload::fraction, "maximumAperture"},
    CameraRecord{0x65789206, CameraPayload::fraction, "subjectDistance"},
    CameraRecord{0x65789207, CameraPayload::number, "meteringMode"},
    CameraRecord{0x65789208, CameraPayload::number, "lightSource"},
    CameraRecord{0x65789209, CameraPayload::number, "flash"},
    CameraRecord{0x6578920A, CameraPayload::fraction, "focalLength"},
    CameraRecord{0x6578A217, CameraPayload::number, "sensingMethod"},
};

/// The code of the records that the accessor of that name answers.
[[nodiscard]] consteval std::uint32_t cameraRecordCode(std::string_view accessor) {
  return std::ranges::find(kCameraRecords, accessor, &CameraRecord::accessor)->code;
}

/// The payload of the records of that code.
[[nodiscard]] constexpr CameraPayload cameraPayload(std::uint32_t code) {
  const auto* row = std::ranges::find(kCameraRecords, code, &CameraRecord::code);
  return row != kCameraRecords.end() ? row->payload : CameraPayload::raw;
}

/// A code and an accessor belong to one record.
[[nodiscard]] consteval bool cameraRecordsAreUnique() {
  return std::ranges::all_of(kCameraRecords, [](const CameraRecord& record) {
    return std::ranges::count(kCameraRecords, record.code, &CameraRecord::code) == 1 &&
           std::ranges::count(kCameraRecords, record.accessor, &CameraRecord::accessor) == 1;
  });
}
static_assert(cameraRecordsAreUnique());

}  // namespace mrziphoto

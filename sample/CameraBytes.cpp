#include "sample/CameraBytes.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string_view>
#include <utility>
#include <vector>

#include <MRZiPhoto/exif/detail/CameraRecords.h>

#include "sample/Bytes.h"
#include "sample/ExifBlockWriter.h"

namespace mrziphoto::sample {
namespace {

constexpr std::uint32_t kExifTagCode = 0x65780000;  // "ex" and a tag

std::string exifValue(const CameraSetting& setting) {
  std::string payload;
  if (setting.denominator == 0) {
    appendBigEndian(payload, static_cast<std::uint16_t>(setting.numerator));
  } else {
    appendBigEndian(payload, setting.numerator);
    appendBigEndian(payload, setting.denominator);
  }
  return payload;
}

// One directory of an EXIF segment. Values of more than four bytes lie behind it.
class ExifDirectory {
 public:
  enum Type : std::uint16_t {
    ascii = 2,
    shortNumber = 3,
    longNumber = 4,
    fraction = 5,
    signedFraction = 10
  };

  static constexpr std::uint32_t kEntrySize = 12;

  void add(std::uint16_t tag, std::string_view text) {
    add({tag, ascii, static_cast<std::uint32_t>(text.size() + 1), std::string(text) + '\0'});
  }
  void add(std::uint16_t tag, Type type, std::string value) {
    add({tag, type, 1, std::move(value)});
  }
  [[nodiscard]] std::uint32_t size() const {
    std::size_t size = 2 + _entries.size() * kEntrySize + 4;
    for (const Entry& entry : _entries) {
      size += entry.value.size() > 4 ? entry.value.size() : 0;
    }
    return static_cast<std::uint32_t>(size);
  }
  /// The directory's bytes, given that it lies at that offset.
  [[nodiscard]] std::string bytesAt(std::uint32_t offset) const {
    std::string bytes;
    std::string values;
    appendBigEndian(bytes, static_cast<std::uint16_t>(_entries.size()));
    const auto valuesOffset =
        static_cast<std::uint32_t>(offset + 2 + _entries.size() * kEntrySize + 4);
    for (const Entry& entry : _entries) {
      appendBigEndian(bytes, entry.tag);
      appendBigEndian(bytes, entry.type);
      appendBigEndian(bytes, entry.count);
      if (entry.value.size() > 4) {
        appendBigEndian(bytes, static_cast<std::uint32_t>(valuesOffset + values.size()));
        values += entry.value;
      } else {
        bytes.append(entry.value).append(4 - entry.value.size(), '\0');
      }
    }
    appendBigEndian(bytes, std::uint32_t{0});  // no further directory
    return bytes + values;
  }

 private:
  struct Entry {
    std::uint16_t tag;
    std::uint16_t type;
    std::uint32_t count;
    std::string value;
  };

  // They stand in the order of their tags.
  void add(Entry entry) {
    const auto behind = std::ranges::upper_bound(_entries, entry.tag, {}, &Entry::tag);
    _entries.insert(behind, std::move(entry));
  }

  std::vector<Entry> _entries;
};

ExifDirectory::Type exifType(const CameraSetting& setting) {
  constexpr std::array<std::uint16_t, 3> kSigned{0x9201, 0x9203, 0x9204};
  if (setting.denominator == 0) {
    return ExifDirectory::shortNumber;
  }
  return std::ranges::find(kSigned, setting.tag) != kSigned.end() ? ExifDirectory::signedFraction
                                                                  : ExifDirectory::fraction;
}

std::string exifDate(double date) {
  using namespace std::chrono;
  constexpr sys_days kReferenceDay{2001y / January / 1};
  const auto instant = kReferenceDay + seconds(static_cast<std::int64_t>(date));
  const auto day = floor<days>(instant);
  const year_month_day calendar(day);
  const hh_mm_ss time(instant - day);
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "%04d:%02u:%02u %02d:%02d:%02d",
                static_cast<int>(calendar.year()), static_cast<unsigned>(calendar.month()),
                static_cast<unsigned>(calendar.day()), static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
  return text.data();
}

}  // namespace

std::string cameraBlock(const SampleCamera& camera) {
  ExifBlockWriter block;
  block.text(cameraRecordCode("maker"), camera.maker);
  block.text(cameraRecordCode("model"), camera.model);
  block.text(cameraRecordCode("software"), camera.software);
  for (const CameraSetting& setting : camera.settings) {
    const std::uint32_t code = kExifTagCode | setting.tag;
    if (cameraPayload(code) == CameraPayload::number) {
      block.number(code, static_cast<std::uint16_t>(setting.numerator));
    } else {
      block.fraction(code, setting.numerator, setting.denominator);
    }
  }
  return block.bytes();
}

std::string exifSegment(const SampleCamera& camera, double date) {
  constexpr std::uint32_t kMainOffset = 8;
  const std::string taken = exifDate(date);
  ExifDirectory settings;
  for (const CameraSetting& setting : camera.settings) {
    settings.add(setting.tag, exifType(setting), exifValue(setting));
  }
  settings.add(0x9003, taken);

  ExifDirectory main;
  main.add(0x010F, camera.maker);
  main.add(0x0110, camera.model);
  main.add(0x0131, camera.software);
  main.add(0x0132, taken);
  // The other directory follows; the entry that says so is part of the size.
  const std::uint32_t settingsOffset = kMainOffset + main.size() + ExifDirectory::kEntrySize;
  std::string pointer;
  appendBigEndian(pointer, settingsOffset);
  main.add(0x8769, ExifDirectory::longNumber, pointer);

  std::string segment("Exif\0\0MM\0*", 10);
  appendBigEndian(segment, kMainOffset);
  return segment + main.bytesAt(kMainOffset) + settings.bytesAt(settingsOffset);
}

}  // namespace mrziphoto::sample

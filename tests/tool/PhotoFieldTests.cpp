#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include <MRZiPhoto/platform/NSImage.h>

#include "sample/SampleLibrary.h"
#include "sample/SampleModel.h"
#include "support/RunTool.h"
#include "support/TemporaryFolder.h"

namespace mrziphoto {
namespace {

using sample::CameraSetting;

/// A camera field and the EXIF tag that the sample sets for it.
struct CameraField {
  std::string_view name;
  std::uint16_t tag;
};
constexpr std::array kCameraFields{
    CameraField{"aperture", 0x829D},     CameraField{"maximumAperture", 0x9205},
    CameraField{"exposureBias", 0x9204}, CameraField{"subjectDistance", 0x9206},
    CameraField{"isoSpeed", 0x8827},     CameraField{"focalLength", 0x920A},
    CameraField{"brightness", 0x9203},   CameraField{"sensingMethod", 0xA217},
    CameraField{"lightSource", 0x9208},  CameraField{"flash", 0x9209},
    CameraField{"meteringMode", 0x9207},
};
constexpr std::uint16_t kShutterSpeed = 0x9201;

/// 35 tenths are "3.5".
std::string decimal(const CameraSetting& setting) {
  const std::uint32_t unit = std::max(setting.denominator, 1U);
  std::string fraction = std::to_string(unit + setting.numerator % unit).substr(1);
  fraction.erase(fraction.find_last_not_of('0') + 1);
  const std::string whole = std::to_string(setting.numerator / unit);
  return fraction.empty() ? whole : whole + '.' + fraction;
}

const CameraSetting& settingOf(const sample::SamplePhoto& photo, std::uint16_t tag) {
  return *std::ranges::find(photo.camera.settings, tag, &CameraSetting::tag);
}

/// "3" for 1/3 second: the denominator that photographers know.
std::string shutter(const sample::SamplePhoto& photo) {
  constexpr std::array<std::pair<std::uint32_t, const char*>, 6> kShutters{{{4906891, "30"},
                                                                            {5906891, "60"},
                                                                            {6965784, "125"},
                                                                            {7965784, "250"},
                                                                            {8965784, "500"},
                                                                            {0, "1"}}};
  const std::uint32_t speed = settingOf(photo, kShutterSpeed).numerator;
  return std::ranges::find(kShutters, speed, &std::pair<std::uint32_t, const char*>::first)->second;
}

std::string quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

/// What a listing of `fields` says of a photo; nothing of its camera where album data alone tells
/// of it.
std::string recordOf(const sample::SamplePhoto& photo, const std::string& root, bool hasCamera) {
  const auto field = [](std::string_view name, const std::string& value) {
    return ',' + quoted(name) + ':' + value;
  };
  std::string record =
      "{\"key\":" + std::to_string(photo.key) +
      field("fileSize", std::to_string(std::filesystem::file_size(root + '/' + photo.imagePath))) +
      field("imageWidth", std::to_string(static_cast<int>(photo.width))) +
      field("imageHeight", std::to_string(static_cast<int>(photo.height))) +
      field("maker", hasCamera ? quoted(photo.camera.maker) : "null") +
      field("model", hasCamera ? quoted(photo.camera.model) : "null") +
      field("software", hasCamera ? quoted(photo.camera.software) : "null") +
      field("shutter", hasCamera ? shutter(photo) : "0");
  for (const CameraField& each : kCameraFields) {
    record += field(each.name, hasCamera ? decimal(settingOf(photo, each.tag)) : "null");
  }
  return record + "}\n";
}

TEST(PhotoFields, TellPicturesAndCamerasInEveryGeneration) {
  std::string fields = "key,fileSize,imageWidth,imageHeight,maker,model,software,shutter";
  for (const CameraField& each : kCameraFields) {
    fields += ',' + std::string(each.name);
  }
  for (const std::int32_t version : {20, 40, 60, 150, 200}) {
    const TemporaryFolder folder;
    SampleOptions options;
    options.folder = folder / "library";
    options.libraryVersion = version;
    writeSampleLibrary(options);
    const bool hasAlbumDataOnly = version == 200;
    if (hasAlbumDataOnly && !NSImage::isSupported()) {
      continue;  // sizes are then read from the pictures
    }
    std::string expected;
    sample::SampleModel(options.seed, version, options.photos)
        .forEachPhoto([&](const sample::SampleRoll&, const sample::SamplePhoto& photo) {
          expected += recordOf(photo, options.folder, !hasAlbumDataOnly);
        });
    const ToolResult result =
        runTool({"photos", options.folder, "--fields", fields, "--format", "jsonl", "--quiet"});
    EXPECT_EQ(result.out, expected) << version;
    EXPECT_EQ(result.err, "");
  }
}

}  // namespace
}  // namespace mrziphoto

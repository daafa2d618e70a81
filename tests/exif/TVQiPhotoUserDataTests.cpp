#include <MRZiPhoto/exif/TVQiPhotoUserData.h>
#include <MRZiPhoto/exif/detail/CameraRecords.h>
#include <MRZiPhoto/values/Log.h>

#include "sample/ExifBlockWriter.h"
#include "support/KeyValueAnswers.h"

namespace mrziphoto {
namespace {

using sample::ExifBlockWriter;

constexpr std::uint32_t kMaker = cameraRecordCode("maker");
constexpr std::uint32_t kModel = cameraRecordCode("model");
constexpr std::uint32_t kAperture = cameraRecordCode("aperture");
constexpr std::uint32_t kExposure = cameraRecordCode("exposure");
constexpr std::uint32_t kIsoSpeed = cameraRecordCode("isoSpeed");
constexpr std::uint32_t kFocalLength = cameraRecordCode("focalLength");
constexpr std::uint32_t kApertureValue = 0x65789202;
constexpr std::uint32_t kUnknown = 0x65789290;

Ref<TVQiPhotoUserData> decoded(const ExifBlockWriter& block) {
  return TVQiPhotoUserData::initWithData(Data::copyOf(block.bytes()));
}

TEST(TVQiPhotoUserData, TakesDenominatorsForPowersOfTen) {
  for (const auto& [numerator, denominator, value] :
       Rows<std::uint32_t, std::uint32_t, const char*>{{28, 10, "2.8"},
                                                       {1, 1, "1"},
                                                       {3, 100, "0.03"},
                                                       {7, 5, "0.7"},
                                                       {7, 11, "0.7"},
                                                       {7, 20, "0.07"},
                                                       {7, 0x80000000, "7"},
                                                       {4294967295, 1, "4294967295"},
                                                       {1, 2147483647, "0.0000000001"}}) {
    const auto camera = decoded(ExifBlockWriter().fraction(kAperture, numerator, denominator));
    EXPECT_EQ(camera->aperture().value_or(Decimal{-1}).description(), value);
  }
  EXPECT_EQ(exceptionOf([] {
              decoded(ExifBlockWriter().text(kMaker, "Maker").fraction(kFocalLength, 1, 0));
            }),
            "NSInvalidArgumentException - Can't take log10 of 0");
}

TEST(TVQiPhotoUserData, WorksOutExposureTimes) {
  for (const auto& [numerator, denominator, seconds, shutter] :
       Rows<std::uint32_t, std::uint32_t, double, const char*>{
           {6965784, 1000000, 0.008, "125"},
           {0, 1, 1, "1"},
           {1, 2, 0.7071067811865475, "1"},
           {40, 1, 9.094947017729282e-13, "1099511627776"},
           {62, 1, 2.168404344971009e-19, "4611686018427387623"},
           {63, 1, 1.0842021724855044e-19, "9223372036854776100"},
           {70, 1, 8.470329472543003e-22, "1180591620717411358000"},
           {4294967295, 1, 0, "0"},
           {1, 0, 0, "0"}}) {
    const auto camera = decoded(ExifBlockWriter().fraction(kExposure, numerator, denominator));
    ASSERT_TRUE(camera->exposure());
    EXPECT_NEAR(camera->exposure()->doubleValue(), seconds, seconds * 1e-6);
    EXPECT_EQ(camera->shutter().description(), shutter);
  }
}

TEST(TVQiPhotoUserData, ReadsTextsInMacRomanAndLogsUnexpectedTypes) {
  Texts lines;
  const LogSink before = setLogSink([&](std::string_view line) { lines.emplace_back(line); });
  const auto camera = decoded(ExifBlockWriter().text(kMaker, "M\x8Ak\xDB").text(kModel, "X1", 1));
  setLogSink(before);
  EXPECT_EQ(camera->maker(), "Mäk€");
  EXPECT_EQ(camera->model(), "X1");
  EXPECT_EQ(lines, Texts{"String type 1 for code 0xa96d6f64"});
}

TEST(TVQiPhotoUserData, KeepsEveryRecordAndTheLastOfEachCode) {
  ExifBlockWriter block;
  block.fraction(kApertureValue, 297, 100).raw(kUnknown, "bytes").number(kIsoSpeed, 51200);
  for (std::uint32_t length = 1; length <= 85; ++length) {
    block.fraction(kFocalLength, length, 1);
  }
  const auto camera = decoded(block);
  EXPECT_EQ(camera->focalLength(), (Decimal{85, 0}));
  EXPECT_EQ(camera->dataForKey(kApertureValue).decimal(), (Decimal{297, -2}));
  EXPECT_EQ(camera->dataForKey(kUnknown).data()->bytes(), "bytes");
  EXPECT_EQ(camera->isoSpeed(), 51200);
}

TEST(TVQiPhotoUserData, EndsAtADamagedRecord) {
  for (const auto& [size, code, isKept] : Rows<std::uint32_t, std::uint32_t, bool>{
           {0, kIsoSpeed, false},
           {7, kIsoSpeed, false},
           {7, kUnknown, false},
           {0x80000000, kUnknown, false},
           {0xFFFFFFFF, kUnknown, false},
           // What is known to be short is read, wherever its record may end.
           {200, kIsoSpeed, true},
           {0xFFFFFFFF, kIsoSpeed, true}}) {
    const auto camera = decoded(
        ExifBlockWriter().text(kMaker, "Maker").rawOfSize(size, code, "12").text(kModel, "Model"));
    EXPECT_EQ(camera->maker(), "Maker") << size;
    EXPECT_EQ(camera->dataForKey(code).isNothing(), !isKept) << size;
    EXPECT_EQ(camera->model(), std::nullopt) << size;
  }
}

TEST(TVQiPhotoUserData, DecodesTheRecordsThatACutBlockStillHolds) {
  const std::vector<std::pair<std::uint32_t, ExifBlockWriter>> records{
      {kMaker, ExifBlockWriter().text(kMaker, "Maker")},
      {kAperture, ExifBlockWriter().fraction(kAperture, 28, 10)},
      {kExposure, ExifBlockWriter().fraction(kExposure, 7, 1)},
      {kUnknown, ExifBlockWriter().raw(kUnknown, "123")},
      {kIsoSpeed, ExifBlockWriter().number(kIsoSpeed, 100)}};
  std::string block;
  for (const auto& record : records) {
    block += record.second.bytes();
  }
  for (std::size_t size = 0; size <= block.size(); ++size) {
    // A piece of memory of that very size, so that a sanitizer sees what is read beyond it.
    const std::vector<char> cut(block.data(), block.data() + size);
    const auto camera = TVQiPhotoUserData::initWithData(Data({}, {cut.data(), cut.size()}));
    std::size_t end = 0;
    for (const auto& [code, record] : records) {
      end += record.bytes().size();
      EXPECT_EQ(camera->dataForKey(code).isNothing(), end > size) << end << " of " << size;
    }
  }
}

TEST(TVQiPhotoUserData, PutsSettingsInWords) {
  constexpr std::uint32_t kFlash = cameraRecordCode("flash");
  constexpr std::uint32_t kLightSource = cameraRecordCode("lightSource");
  constexpr std::uint32_t kMeteringMode = cameraRecordCode("meteringMode");
  // Without resources every text is its own key, in whatever language the tests run.
  setenv("MRZIPHOTO_RESOURCES", "/nowhere", 1);
  for (const auto& [key, code, setting, words] :
       Rows<const char*, std::uint32_t, std::uint16_t, const char*>{
           {"flashDescription", kUnknown, 7, "Off"},
           {"flashDescription", kFlash, 7, "On - Light detected"},
           {"flashDescription", kFlash, 9, "Flash 9"},
           {"lightSourceDescription", kUnknown, 7, "Unknown"},
           {"lightSourceDescription", kLightSource, 255, "other"},
           {"lightSourceDescription", kLightSource, 4, "Light Source 4"},
           {"meteringModeDescription", kMeteringMode, 255, "Other"},
           {"sensingMethodDescription", kUnknown, 7, "Sensing method 0"}}) {
    const auto camera = decoded(ExifBlockWriter().number(code, setting));
    EXPECT_EQ(camera->valueForKey(key).text(), words);
  }
}

TEST(TVQiPhotoUserData, AnswersEveryRecordUnderItsName) {
  const auto camera = decoded(ExifBlockWriter()
                                  .text(0xA96D616B, "Maker")
                                  .text(0xA96D6F64, "Model")
                                  .text(0xA9737772, "Software")
                                  .fraction(0x6578829D, 1, 10)
                                  .number(0x65788827, 2)
                                  .fraction(0x65789201, 1, 1)
                                  .fraction(0x65789203, 4, 10)
                                  .fraction(0x65789204, 5, 10)
                                  .fraction(0x65789205, 6, 10)
                                  .fraction(0x65789206, 7, 10)
                                  .number(0x65789207, 8)
                                  .number(0x65789208, 9)
                                  .number(0x65789209, 10)
                                  .fraction(0x6578920A, 11, 10)
                                  .number(0x6578A217, 12));
  expectAnswers(*camera, {{"maker", "Maker"},
                          {"model", "Model"},
                          {"software", "Software"},
                          {"cameraMaker", "Maker"},
                          {"cameraModel", "Model"},
                          {"cameraSoftware", "Software"},
                          {"aperture", Decimal{1, -1}},
                          {"isoSpeed", 2},
                          {"speed", 2},
                          {"exposure", Decimal{5, -1}},
                          {"shutter", Decimal{2}},
                          {"fractionalExposure", Decimal{2}},
                          {"brightness", Decimal{4, -1}},
                          {"exposureBias", Decimal{5, -1}},
                          {"maximumAperture", Decimal{6, -1}},
                          {"subjectDistance", Decimal{7, -1}},
                          {"meteringMode", 8},
                          {"lightSource", 9},
                          {"flash", 10},
                          {"focalLength", Decimal{11, -1}},
                          {"sensingMethod", 12},
                          {"photo", {}}});
  EXPECT_THROW((void)camera->valueForKey("caption"), NSException);
  EXPECT_THROW((void)camera->valueForKey(""), NSException);
}

}  // namespace
}  // namespace mrziphoto

#include <MRZiPhoto/exif/detail/CameraRecords.h>
#include <MRZiPhoto/exif/detail/SettingDescriptions.h>
#include <MRZiPhoto/values/Log.h>

#include "support/MarkdownTable.h"
#include "support/Testing.h"

namespace mrziphoto {
namespace {

const std::string kPage = MRZIPHOTO_DOCS "/formats/camera-block.md";

TEST(CameraBlockPage, ListsTheRecordsThatAreRead) {
  // In the order of CameraPayload.
  constexpr const char* kPayloads[] = {"text", "number", "fraction", "exposure", "raw"};
  std::vector<MarkdownRow> expected;
  expected.reserve(kCameraRecords.size());
  for (const CameraRecord& record : kCameraRecords) {
    expected.push_back({stringWithFormat("%08X", record.code),
                        kPayloads[static_cast<std::size_t>(record.payload)],
                        record.accessor.empty() ? "–" : std::string(record.accessor)});
  }
  std::vector<MarkdownRow> written;
  for (const MarkdownRow& row : markdownTable(kPage, "Record codes")) {
    ASSERT_EQ(row.size(), 4U);
    written.push_back({row[0], row[2], row[3]});
  }
  EXPECT_EQ(written, expected);
}

TEST(CameraBlockPage, ListsTheTextsOfTheSettings) {
  struct Case {
    const char* heading;
    const SettingTexts& setting;
  };
  for (const Case& each : {Case{"Sensing method", kSensingMethods},
                           {"Light source", kLightSources},
                           {"Flash", kFlashStates},
                           {"Metering mode", kMeteringModes}}) {
    std::vector<MarkdownRow> expected;
    for (const SettingText& text : each.setting.texts) {
      expected.push_back({std::to_string(text.code), std::string(text.text)});
    }
    expected.push_back({"any other", std::string(each.setting.otherFormat)});
    EXPECT_EQ(markdownTable(kPage, each.heading), expected) << each.heading;
  }
}

}  // namespace
}  // namespace mrziphoto

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include <MRZiPhoto/platform/NSImage.h>

#include "sample/Bytes.h"
#include "sample/Picture.h"
#include "support/CollectedLog.h"
#include "support/TemporaryFolder.h"

namespace mrziphoto {
namespace {

using namespace std::string_literals;

std::string jpeg(std::size_t width, std::size_t height) {
  sample::Picture picture(width, height);
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      picture.row(y)[x * 3] = 200;
      picture.row(y)[x * 3 + 2] = 40;
    }
  }
  return sample::jpegFile(picture, "a camera block");
}

std::string bigEndian(std::uint32_t number, int bytes) {
  std::string result;
  for (int left = bytes - 1; left >= 0; --left) {
    result += static_cast<char>(number >> (left * 8));
  }
  return result;
}

/// Signature and header chunk.
std::string pngHeader(std::uint32_t width, std::uint32_t height) {
  return "\x89PNG\r\n\x1A\n\0\0\0\rIHDR"s + bigEndian(width, 4) + bigEndian(height, 4) +
         "\x08\x02\0\0\0****"s;
}

/// One transparent pixel.
const std::string kGif =
    "GIF89a\1\0\1\0\x80\0\0\0\0\0\xFF\xFF\xFF!\xF9\4\1\0\0\0\0"s + ",\0\0\0\0\1\0\1\0\0\2\2D\1\0;"s;

/// Grey pixels, one after the other, with the directory behind them.
std::string tiff(std::uint16_t width, std::uint16_t height, std::uint16_t samples = 1) {
  const std::uint32_t count = std::uint32_t{width} * height * samples;
  std::string bytes = "MM\0*"s + bigEndian(8 + count, 4) + std::string(count, '\x80');
  const std::vector<std::array<std::uint32_t, 2>> fields{
      {256, width}, {257, height}, {258, 8}, {259, 1}, {262, 1}, {277, samples}, {278, height}};
  bytes += bigEndian(static_cast<std::uint32_t>(fields.size() + 2), 2);
  for (const auto& [tag, value] : fields) {
    bytes += bigEndian(tag, 2) + "\0\3\0\0\0\1"s + bigEndian(value, 2) + "\0\0"s;
  }
  for (const auto& [tag, value] : {std::array{273U, 8U}, std::array{279U, count}}) {
    bytes += bigEndian(tag, 2) + "\0\4\0\0\0\1"s + bigEndian(value, 4);
  }
  return bytes + "\0\0\0\0"s;
}

/// The beginning of a WebP file of one of the three kinds.
std::string webp(const std::string& kind, const std::string& contents) {
  return "RIFF\0\1\0\0WEBP"s + kind + "\0\1\0\0"s + contents;
}

class NSImageTests : public testing::Test {
 protected:
  void SetUp() override {
    if (!NSImage::isSupported()) {
      GTEST_SKIP() << "built without images";
    }
  }
  Ref<NSImage> imageOf(const std::string& bytes) const {
    folder.write("picture", bytes);
    return NSImage::initByReferencingFile(folder / "picture");
  }
  TemporaryFolder folder;
};

TEST(NSImage, IsNothingWithoutImages) {
  EXPECT_EQ(static_cast<bool>(NSImage::initByReferencingFile("/a.jpg")), NSImage::isSupported());
  EXPECT_EQ(static_cast<bool>(NSImage::initWithSize({1, 1})), NSImage::isSupported());
  EXPECT_EQ(make<NSBitmapImageRep>(1, 1)->pngData().has_value(), NSImage::isSupported());
  EXPECT_EQ(static_cast<bool>(make<NSBitmapImageRep>(1, 1)->scaledToPixels(2, 2)),
            NSImage::isSupported());
}

TEST_F(NSImageTests, TellsSizesFromHeaders) {
  struct Case {
    std::string_view what;
    std::string bytes;
    NSSize size;  // none for what is no image
  };
  const NSSize none;
  for (const Case& each : std::vector<Case>{
           {"JPEG", jpeg(31, 17), {31, 17}},
           {"JPEG with bytes out of place", jpeg(31, 17).insert(3, "\0\0\xFF\xFF"s), {31, 17}},
           {"PNG", pngHeader(70'000, 3), {70'000, 3}},
           {"PNG without its first chunk", pngHeader(7, 3).replace(12, 4, "tEXt"), none},
           {"GIF", kGif, {1, 1}},
           {"TIFF", tiff(500, 2), {500, 2}},
           {"TIFF of a hundred samples a pixel", tiff(5, 2, 100), none},
           {"TIFF whose directory lies outside", "II*\0\xFF\xFF\xFF\x7F"s, none},
           {"WebP, extended", webp("VP8X", "\0\0\0\0\x0F\x27\0\1\0\0"s), {10'000, 2}},
           {"WebP, lossless", webp("VP8L", "\x2F\x09\x40\2\0\0"s), {10, 10}},
           {"WebP, lossy", webp("VP8 ", "\0\0\0\x9D\1\x2A\5\0\6\0"s), {5, 6}},
           {"another RIFF file", webp("VP8X", "").replace(8, 4, "WAVE"), none},
           {"no pixels", pngHeader(0, 3), none},
           {"text", "a text that is no image", none},
           {"nothing", "", none}}) {
    const Ref<NSImage> image = imageOf(each.bytes);
    EXPECT_EQ(image->isValid(), each.size != none) << each.what;
    EXPECT_EQ(image->size(), each.size) << each.what;
    EXPECT_EQ(image->failure().empty(), each.size != none) << each.what;
  }
}

TEST_F(NSImageTests, RefusesWhatIsTooLarge) {
  for (const auto& [bytes, isRefused] : {std::pair{pngHeader(30'000, 8'000), false},
                                         {pngHeader(30'000, 30'000), true},
                                         {pngHeader(0xFFFFFFFF, 0xFFFFFFFF), true},
                                         {pngHeader(2'000'000, 1), true},
                                         {"GIF89a\xFF\xFF\xFF\xFF\0\0\0"s, true}}) {
    CollectedLog log;
    const Ref<NSImage> image = imageOf(bytes);
    EXPECT_EQ(image->isValid(), !isRefused);
    EXPECT_EQ(image->failure().find("is too large an image: ") != std::string::npos, isRefused);
    EXPECT_EQ(log.lines().size(), isRefused ? 1 : 0);
    EXPECT_FALSE(image->bitmap());
  }
}

TEST_F(NSImageTests, OpensNothingUntilItIsAsked) {
  const auto image = NSImage::initByReferencingFile(folder / "later.jpg");
  folder.write("later.jpg", jpeg(4, 3));
  EXPECT_EQ(image->size(), (NSSize{4, 3}));
  // The size that was set stands, and a file of another spelling is found.
  const auto other = NSImage::initByReferencingFile(folder / "LATER.jpg");
  other->setSize({100, 50});
  EXPECT_EQ(other->size(), (NSSize{100, 50}));
  EXPECT_EQ(other->bitmap()->pixelsWide(), 4U);
  for (const std::string& name : {""s, "\0"s, "/missing"s}) {
    EXPECT_FALSE(NSImage::initByReferencingFile(folder.path() + name)->isValid());
  }
}

TEST_F(NSImageTests, DrawsIntoSizes) {
  const auto original = make<NSBitmapImageRep>(2, 1);
  const std::vector<std::uint8_t> pixels{10, 20, 30, 255, 200, 100, 50, 7};
  std::ranges::copy(pixels, original->bitmapData().begin());
  const auto stored = imageOf(std::string(original->pngData()->bytes()));
  const auto read = stored->bitmap();
  EXPECT_TRUE(std::ranges::equal(read->bitmapData(), pixels));  // alpha is not multiplied in

  const auto red = imageOf(jpeg(1000, 333));
  const auto copy = red->scaledCopy({240, 80});
  EXPECT_EQ(copy->size(), (NSSize{240, 80}));
  const auto bitmap = copy->bitmap();
  ASSERT_EQ(bitmap->bitmapData().size(), 240U * 80 * 4);
  for (const std::size_t corner : {0U, 240U * 80 * 4 - 4}) {
    EXPECT_NEAR(bitmap->bitmapData()[corner], 200, 3);
    EXPECT_NEAR(bitmap->bitmapData()[corner + 2], 40, 3);
    EXPECT_EQ(bitmap->bitmapData()[corner + 3], 255);
  }

  EXPECT_FALSE(red->bitmapOfPixels(0, 5));
  EXPECT_FALSE(red->bitmapOfPixels(1 << 20, 1 << 20));
  EXPECT_FALSE(NSImage::initByReferencingFile("/missing")->scaledCopy({5, 5})->isValid());
  for (const float side : {0.0F, -1.0F, 1e30F, std::numeric_limits<float>::quiet_NaN()}) {
    EXPECT_FALSE(red->scaledCopy({side, 5})->isValid()) << side;
  }
}

// Whatever is damaged: an answer or none, and no word on standard error.
TEST_F(NSImageTests, SurvivesDamagedFiles) {
  const auto dotted = make<NSBitmapImageRep>(5, 4);
  dotted->bitmapData()[9] = 77;
  for (const std::string& whole :
       {jpeg(20, 9), std::string(dotted->pngData()->bytes()), kGif, tiff(6, 5)}) {
    ASSERT_TRUE(imageOf(whole)->bitmap());
    testing::internal::CaptureStderr();
    for (std::size_t i = 0; i < whole.size(); ++i) {
      std::string bytes = whole;
      bytes[i] ^= static_cast<char>(0x41 + i % 50);
      const CollectedLog log;
      for (const std::string& each : {bytes, whole.substr(0, i)}) {
        const Ref<NSImage> image = imageOf(each);
        const NSSize size = image->size();
        if (size.width * size.height < 1e6F) {
          const bool isDecoded = static_cast<bool>(image->bitmap());
          EXPECT_EQ(image->isValid(), isDecoded);
        }
      }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  }
}

TEST(NSBitmapImageRep, IsTransparentAndCountsItsBytes) {
  const auto bitmap = make<NSBitmapImageRep>(64, 32);
  EXPECT_EQ(bitmap->bytesPerRow(), 256U);
  EXPECT_EQ(bitmap->bitsPerPixel(), 32U);
  EXPECT_EQ(bitmap->bitmapData().size(), 8192U);
  EXPECT_TRUE(std::ranges::all_of(bitmap->bitmapData(), [](int each) { return each == 0; }));
}

TEST_F(NSImageTests, ReadsRealPictures) {
  const std::filesystem::path masters =
      MRZIPHOTO_REAL_FILES "/iPhoto-9.4.3.photolibrary/Masters/2013/08/19/20130819-192758";
  if (!std::filesystem::exists(masters)) {
    GTEST_SKIP() << masters << " is not there";
  }
  const NSSize wide{3648, 2736};
  const NSSize high{2736, 3648};
  for (const auto& [name, size] : {std::pair{"P1060169", wide},
                                   {"P1060170", wide},
                                   {"P1060174", wide},
                                   {"P1060252", high},
                                   {"P1060584", wide},
                                   {"P1060587", high},
                                   {"P1060605", NSSize{1280, 720}}}) {
    const auto image =
        NSImage::initByReferencingFile((masters / name).replace_extension("jpg").string());
    EXPECT_EQ(image->size(), size) << name;
    EXPECT_TRUE(image->bitmapOfPixels(64, 64)) << name << image->failure();
  }
}

}  // namespace
}  // namespace mrziphoto

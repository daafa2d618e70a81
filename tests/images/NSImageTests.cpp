#include <cerrno>
#include <sys/resource.h>
#include <sys/stat.h>

#include <MRZiPhoto/files/FileFailure.h>
#include <MRZiPhoto/files/FileManager.h>
#include <MRZiPhoto/files/detail/OpenFile.h>
#include <MRZiPhoto/images/NSImage.h>
#include <MRZiPhoto/images/detail/ImageBackend.h>
#include <MRZiPhoto/values/Log.h>

#include "sample/Picture.h"
#include "support/Testing.h"

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

/// A JPEG of one pixel that says it is larger, and by its frame's marker progressive or not.
std::string jpegThatSays(std::uint32_t width, std::uint32_t height, char frame = '\xC0') {
  std::string bytes = jpeg(1, 1);
  const std::size_t place = bytes.find("\xFF\xC0"s);
  bytes[place + 1] = frame;
  return bytes.replace(place + 5, 4, bigEndian(height, 2) + bigEndian(width, 2));
}

/// Signature and header chunk.
std::string pngHeader(std::uint32_t width, std::uint32_t height, char interlaced = '\0') {
  return "\x89PNG\r\n\x1A\n\0\0\0\rIHDR"s + bigEndian(width, 4) + bigEndian(height, 4) +
         "\x08\x02\0\0"s + interlaced + "****";
}

/// One transparent pixel, in a frame of its own size.
std::string gif(const std::string& screen, const std::string& frame) {
  return "GIF89a" + screen + "\x80\0\0\0\0\0\xFF\xFF\xFF!\xF9\4\1\0\0\0\0,\0\0\0\0"s + frame +
         "\0\2\2D\1\0;"s;
}
const std::string kGif = gif("\1\0\1\0"s, "\1\0\1\0"s);

/// Grey pixels, one after the other, with the directory behind them; some fields may say otherwise.
std::string tiff(std::uint16_t width, std::uint16_t height,
                 const std::map<std::uint32_t, std::uint32_t>& otherwise = {}) {
  const std::uint32_t count = std::min(std::uint32_t{width} * height, 10'000U);
  std::map<std::uint32_t, std::uint32_t> fields{{256, width}, {257, height}, {258, 8},
                                                {259, 1},     {262, 1},      {273, 8},
                                                {277, 1},     {278, height}, {279, count}};
  for (const auto& [tag, value] : otherwise) {
    fields[tag] = value;
  }
  std::string bytes = "MM\0*"s + bigEndian(8 + count, 4) + std::string(count, '\x80') +
                      bigEndian(static_cast<std::uint32_t>(fields.size()), 2);
  for (const auto& [tag, value] : fields) {
    bytes += bigEndian(tag, 2) + (value <= 0xFFFF ? "\0\3\0\0\0\1"s + bigEndian(value, 2) + "\0\0"s
                                                  : "\0\4\0\0\0\1"s + bigEndian(value, 4));
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
  const NSSize none;
  // None for what is no image.
  for (const auto& [what, bytes, size] : Rows<std::string_view, std::string, NSSize>{
           {"JPEG", jpeg(31, 17), {31, 17}},
           {"JPEG with bytes out of place", jpeg(31, 17).insert(3, "\0\0\xFF\xFF"s), {31, 17}},
           {"JPEG with markers that stand alone",
            jpeg(31, 17).insert(2, "\xFF\xD0\xFF\1"),
            {31, 17}},
           {"PNG", pngHeader(65'536, 3), {65'536, 3}},
           {"PNG without its first chunk", pngHeader(7, 3).replace(12, 4, "tEXt"), none},
           {"GIF", kGif, {1, 1}},
           {"TIFF", tiff(500, 2), {500, 2}},
           {"TIFF of a hundred samples a pixel", tiff(5, 2, {{277, 100}}), none},
           {"TIFF whose directory lies outside", "II*\0\xFF\xFF\xFF\x7F"s, none},
           {"WebP, extended", webp("VP8X", "\0\0\0\0\x0F\x27\0\1\0\0"s), {10'000, 2}},
           {"WebP, lossless", webp("VP8L", "\x2F\x09\x40\2\0\0"s), {10, 10}},
           {"WebP, lossy", webp("VP8 ", "\0\0\0\x9D\1\x2A\5\0\6\0"s), {5, 6}},
           {"another RIFF file", webp("VP8X", "").replace(8, 4, "WAVE"), none},
           {"no pixels", pngHeader(0, 3), none},
           {"text", "a text that is no image", none},
           {"nothing", "", none}}) {
    const Ref<NSImage> image = imageOf(bytes);
    EXPECT_EQ(image->isValid(), size != none) << what;
    EXPECT_EQ(image->size(), size) << what;
    EXPECT_EQ(image->failure().empty(), size != none) << what;
  }
}

TEST_F(NSImageTests, RefusesWhatIsTooLarge) {
  // Empty for what is not refused.
  for (const auto& [bytes, size] : Rows<std::string, std::string_view>{
           {pngHeader(30'000, 8'000), ""},
           {pngHeader(30'000, 30'000), "30000 x 30000"},
           {pngHeader(12'000, 12'000), ""},
           {pngHeader(12'000, 12'000, '\1'), "12000 x 12000"},
           {pngHeader(0xFFFFFFFF, 0xFFFFFFFF), "4294967295 x 4294967295"},
           {pngHeader(65'537, 1), "65537 x 1"},
           {jpegThatSays(16'000, 16'000), ""},
           {jpegThatSays(16'000, 16'000, '\xC2'), "16000 x 16000"},
           {jpegThatSays(65'500, 65'500), "65500 x 65500"},
           {gif("\xFF\xFF\xFF\xFF"s, "\1\0\1\0"s), "65535 x 65535"},
           {tiff(15'000, 15'000), ""},
           {tiff(15'000, 15'000, {{258, 32}}), "15000 x 15000"},
           {tiff(15'000, 15'000, {{277, 4}}), "15000 x 15000"},
           {webp("VP8X", "\0\0\0\0\xFF\xFF\xFF\xFF\xFF\xFF"s), "16777216 x 16777216"},
           {webp("VP8L", "\x2F\xFF\xFF\xFF\x0F"s), "16384 x 16384"}}) {
    CollectedLog log;
    const Ref<NSImage> image = imageOf(bytes);
    EXPECT_EQ(image->isValid(), size.empty()) << size;
    const std::string reason =
        stringWithFormat("'%@' is too large an image: %@ pixels", folder / "picture", size);
    EXPECT_EQ(image->failure(), size.empty() ? "" : reason);
    EXPECT_EQ(log.lines().size(), size.empty() ? 0 : 1);
    EXPECT_FALSE(!size.empty() && image->bitmapOfPixels(2, 2)) << size;
  }
}

long peakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

TEST_F(NSImageTests, TakesNoBitmapThatIsTooLargeWhole) {
  CollectedLog log;
  EXPECT_FALSE(imageOf(pngHeader(30'000, 8'000))->bitmap());
  EXPECT_EQ(log.lines(),
            std::vector{stringWithFormat("'%@' is too large an image to be taken whole: "
                                         "30000 x 8000 pixels",
                                         folder / "picture")});
}

// The header is harmless, what comes behind it is not.
TEST_F(NSImageTests, DecodesNoMoreThanMayBe) {
  // The first of two fields counts for the decoder.
  std::string twice = tiff(8000, 8000, {{258, 32}, {260, 8}, {277, 4}, {278, 16}});
  twice.replace(twice.find("\1\4\0\3"s), 2, "\1\2");
  ASSERT_TRUE(imageOf(kGif)->bitmap());
  const long before = peakMegabytes();
  // Empty for any.
  for (const auto& [what, bytes, reason] : Rows<std::string_view, std::string, std::string_view>{
           {"a frame beyond its screen", gif("\1\0\1\0"s, "\xFF\xFF\xFF\xFF"s),
            "too large an image: 65535 x 65535 pixels"},
           {"a field that is there twice", twice, "too large an image: 8000 x 8000 pixels"},
           {"a tile of a terapixel", tiff(16, 16, {{322, 1 << 20}, {323, 1 << 20}}), ""},
           {"tiles that are not there", tiff(16, 16, {{322, 16}, {323, 16}, {324, 1 << 30}}), ""},
           {"a strip that is not there", tiff(16, 16, {{273, 1 << 30}}), ""},
           {"strips without an end", tiff(16, 16, {{257, 65'536}, {278, 1}}), ""},
           {"samples of a thousand bits", tiff(16, 16, {{258, 1000}}), ""},
           {"an unknown compression", tiff(16, 16, {{259, 77}}), ""},
           {"a compression of other bytes", tiff(16, 16, {{259, 8}}), ""},
           {"a strip beyond all bounds", tiff(11'000, 11'000), ""},
           {"a canvas without a picture", webp("VP8X", "\2\0\0\0\xFF\x1F\0\xFF\x1F\0"s), ""}}) {
    const Ref<NSImage> image = imageOf(bytes);
    EXPECT_FALSE(image->bitmapOfPixels(5, 4)) << what;
    EXPECT_FALSE(NSImage::initByReferencingFile(folder / "picture")->bitmap()) << what;
    EXPECT_FALSE(image->isValid()) << what;
    EXPECT_TRUE(image->failure().starts_with("'" + folder.path() + "/picture' ")) << what;
    EXPECT_PRED2(contains, image->failure(), reason);
  }
  EXPECT_LT(peakMegabytes() - before, 500);
}

TEST_F(NSImageTests, GoesByTheLimitsInForce) {
  const std::string picture = jpeg(40, 30);
  const std::string name = "'" + folder / "picture" + "' ";
  for (const auto& [bytes, limits, failure] : Rows<std::string, Limits, std::string>{
           {picture, {.imageSide = 40, .imagePixels = 1200, .decoderBytes = 0}, ""},
           {picture, {.imageSide = 39}, name + "is too large an image: 40 x 30 pixels"},
           {picture, {.imagePixels = 1199}, name + "is too large an image: 40 x 30 pixels"},
           {kGif, {.decoderBytes = kGif.size()}, ""},
           {kGif,
            {.decoderBytes = kGif.size() - 1},
            name + "is too large a file for an image that is decoded in memory: 43 bytes"},
           {tiff(500, 2), {.decoderBytes = 999}, name + "is too large an image: 500 x 2 pixels"},
           {picture,
            {.decodingTime = std::chrono::milliseconds(0)},
            name + "cannot be decoded: it takes longer than 0 milliseconds"}}) {
    const Ref<NSImage> image = imageOf(bytes);
    const Limits::Scope scope(limits);
    EXPECT_EQ(static_cast<bool>(image->bitmapOfPixels(3, 3)), failure.empty());
    EXPECT_EQ(image->failure(), failure);
  }
  const Limits::Scope scope({.bitmapPixels = 1199});
  EXPECT_FALSE(imageOf(picture)->bitmap());
  EXPECT_FALSE(imageOf(picture)->bitmapOfPixels(40, 30));
  EXPECT_TRUE(imageOf(picture)->bitmapOfPixels(39, 30));
}

/// A file that another program empties before the reading of that number, or for none one that
/// takes too long once all is read.
class DisturbedBytes final : public detail::ImageBytes {
 public:
  static constexpr int kNever = -1;
  DisturbedBytes(const detail::OpenFile& file, detail::ImageFormat format, std::string path,
                 int lastReading)
      : ImageBytes(file, format, std::chrono::hours(1)),
        _path(std::move(path)),
        _readingsLeft(lastReading) {}

  std::size_t read(std::uint64_t offset, char* destination, std::size_t count) override {
    if (_readingsLeft != kNever && _readingsLeft-- == 0) {
      fs::resize_file(_path, 0);
    }
    _isReading = true;
    const std::size_t got = ImageBytes::read(offset, destination, count);
    _isReading = false;
    return got;
  }
  bool isLate() override { return _readingsLeft == kNever && !_isReading; }
  [[nodiscard]] bool isEmptied() const { return fs::file_size(_path) == 0; }

 private:
  std::string _path;
  int _readingsLeft;
  bool _isReading = false;
};

TEST_F(NSImageTests, EndsWhenAFileShrinksMeanwhile) {
  for (const auto& seed : fs::directory_iterator(MRZIPHOTO_FUZZ_SEEDS "/ImageFuzzer")) {
    const std::string whole(FileManager::contents(seed.path().string())->bytes());
    bool isEmptied = true;
    for (int reading = 0; isEmptied; ++reading) {
      folder.write("picture", whole);
      const auto file = detail::OpenFile::atPath(folder / "picture");
      const std::optional<detail::ImageHeader> header = detail::imageHeaderOf(*file);
      ASSERT_TRUE(header) << seed;
      // The first time before anything is read.
      fs::resize_file(folder / "picture", reading == 0 ? 0 : whole.size());
      DisturbedBytes bytes(*file, header->format, folder / "picture", reading);
      std::string reason;
      const Limits limits;
      const detail::Pixels pixels =
          detail::ImageBackend::shared()->decodeScaled({bytes, *header, limits}, 3, 3, reason);
      isEmptied = bytes.isEmptied();
      EXPECT_TRUE(reading > 0 || !bytes.failure().empty()) << seed;
      EXPECT_TRUE(bytes.failure().empty() || !pixels.bytes) << seed << reading;
      EXPECT_TRUE(bytes.failure().empty() ||
                  reason.ends_with("the file has become shorter, or cannot be read to its end"))
          << seed << reading << reason;
    }
  }
}

TEST_F(NSImageTests, EndsDecodingThatTakesTooLong) {
  folder.write("picture", jpeg(1000, 1000));
  const auto file = detail::OpenFile::atPath(folder / "picture");
  const std::optional<detail::ImageHeader> header = detail::imageHeaderOf(*file);
  DisturbedBytes bytes(*file, header->format, folder / "picture", DisturbedBytes::kNever);
  std::string reason;
  const Limits limits;
  EXPECT_FALSE(detail::ImageBackend::shared()->decode({bytes, *header, limits}, reason).bytes);
  EXPECT_NE(reason, "");
}

TEST_F(NSImageTests, HandsDecodersOnlyTheChunksOfAPngThatMatter) {
  const auto chunk = [](const std::string& name, const std::string& contents) {
    return bigEndian(static_cast<std::uint32_t>(contents.size()), 4) + name + contents + "****";
  };
  const std::string needed = pngHeader(1, 1) + chunk("PLTE", "colours") + chunk("tRNS", "7");
  const std::string pixels = chunk("IDAT", "one") + chunk("IDAT", "two") + chunk("IEND", "");
  const std::string text = chunk("zTXt", "a text") + chunk("iCCP", "");
  std::string many = pngHeader(1, 1);
  for (int i = 0; i < 2000; ++i) {
    many += chunk("tEXt", "") + chunk("IDAT", "");
  }
  const std::string cut = chunk("IDAT", "cut").substr(0, 9);
  const Rows<std::string, std::string, std::string> rows{
      {needed + pixels, needed + pixels, ""},
      {needed + text + pixels + text, needed + pixels, ""},
      {needed + text + cut, needed + cut, ""},
      {needed + "\xFF\xFF\xFF\xFFzTXt" + pixels, needed, ""},
      {needed.substr(0, 5), needed.substr(0, 5), ""},
      {many, "", "it has too many chunks"}};
  for (const auto& [written, expected, failure] : rows) {
    folder.write("picture", written);
    const auto file = detail::OpenFile::atPath(folder / "picture");
    detail::ImageBytes bytes(*file, detail::ImageFormat::png, std::chrono::hours(1));
    EXPECT_EQ(bytes.failure(), failure);
    std::string seen(written.size(), '\0');
    const std::size_t got = bytes.read(0, seen.data(), seen.size());
    EXPECT_EQ(got, failure.empty() ? expected.size() : 0);
    seen.resize(expected.size());
    EXPECT_EQ(seen, failure.empty() ? expected : "");
    for (std::size_t i = 0; i <= expected.size() && failure.empty(); ++i) {
      char one = '\0';
      EXPECT_EQ(bytes.read(i, &one, 1), i == expected.size() ? 0 : 1) << i;
      EXPECT_EQ(one, i == expected.size() ? '\0' : expected[i]) << i;
    }
  }
}

TEST_F(NSImageTests, TriesAgainWhenTheFileHasChanged) {
  const auto image = NSImage::initByReferencingFile(folder / "picture");
  EXPECT_FALSE(image->isValid());
  EXPECT_EQ(image->failure(), "'" + folder / "picture" + "' cannot be opened: " +
                                  FileFailure::ofSystem("", ENOENT).reason);
  folder.write("picture", jpeg(4, 3).substr(0, 20));
  EXPECT_EQ(image->size(), NSSize{});
  EXPECT_EQ(image->failure(), "'" + folder / "picture" + "' is no image that can be read");
  folder.write("picture", jpeg(4, 3));
  EXPECT_EQ(image->size(), (NSSize{4, 3}));
  EXPECT_EQ(image->failure(), "");
  EXPECT_TRUE(image->bitmap());

  // A pipe in its place is not waited for.
  fs::remove(folder / "picture");
  ASSERT_EQ(mkfifo((folder / "picture").c_str(), 0600), 0);
  EXPECT_FALSE(image->bitmap());
  EXPECT_EQ(image->failure(),
            "'" + folder / "picture" + "' cannot be opened: it is no regular file");
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
  int decoded = 0;
  for (const auto& seed : fs::directory_iterator(MRZIPHOTO_FUZZ_SEEDS "/ImageFuzzer")) {
    const std::string whole(FileManager::contents(seed.path().string())->bytes());
    decoded += imageOf(whole)->bitmap() ? 1 : 0;
    testing::internal::CaptureStderr();
    const std::size_t step = 1 + whole.size() / 60;
    for (std::size_t i = 0; i < whole.size(); i += step) {
      std::string bytes = whole;
      bytes[i] ^= static_cast<char>(0x41 + i % 50);
      for (const std::string& each : {bytes, whole.substr(0, i)}) {
        const Ref<NSImage> image = imageOf(each);
        const NSSize size = image->size();
        if (size.width * size.height < 1e6F) {
          const bool isDecoded = static_cast<bool>(image->bitmap());
          EXPECT_EQ(image->isValid(), isDecoded) << seed;
          EXPECT_EQ(image->failure().empty(), isDecoded) << seed;
        }
      }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << seed;
  }
  EXPECT_GE(decoded, 20) << "of the seeds whose format each libvips reads";
}

}  // namespace
}  // namespace mrziphoto

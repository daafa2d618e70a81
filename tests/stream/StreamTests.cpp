#include <string_view>

#include <gtest/gtest.h>

#include <MRZiPhoto/platform/NSArchiver.h>
#include <MRZiPhoto/platform/NSException.h>
#include <MRZiPhoto/stream/TVQiPhotoCodedStreamData.h>

namespace mrziphoto {
namespace {

using namespace std::string_view_literals;

TVQiPhotoCodedStreamData bigEndian(std::string_view bytes) {
  TVQiPhotoCodedStreamData stream(Data::copyOf(bytes));
  stream.setShouldSwapMode(TVQStreamData::bigEndian);
  return stream;
}

TEST(TVQStreamData, ReadsEveryWidthInTheOrderOfItsSwapMode) {
  const Data bytes = Data::copyOf("\x01\x02\x03\x04\x05\x06\x07\x08"sv);
  struct Case {
    std::int32_t mode;
    std::int16_t number16;
    std::int32_t number32;
    std::int64_t number64;
  };
  // Modes outside the list behave as the host's order.
  for (const Case& each : {Case{2, 0x0102, 0x01020304, 0x0102030405060708},
                           {3, 0x0201, 0x04030201, 0x0807060504030201},
                           {0, 0x0201, 0x04030201, 0x0807060504030201},
                           {1, 0x0102, 0x01020304, 0x0102030405060708},
                           {99, 0x0201, 0x04030201, 0x0807060504030201}}) {
    TVQStreamData stream = TVQStreamData::initWithData(bytes);
    stream.setShouldSwapMode(each.mode);
    EXPECT_EQ(stream.readShort(), each.number16) << each.mode;
    stream.seekToDataOffset(0);
    EXPECT_EQ(stream.readInt(), each.number32) << each.mode;
    stream.seekByDataOffset(-4);
    EXPECT_EQ(stream.readLongLong(), each.number64) << each.mode;
    EXPECT_TRUE(stream.isAtEndOfData());
  }
}

TEST(TVQStreamData, ReadsNoByteBeyondTheEnd) {
  TVQStreamData stream(Data::copyOf("abc"sv));
  EXPECT_THROW(static_cast<void>(stream.readInt()), NSException);
  EXPECT_EQ(stream.offsetInData(), 0U) << "a failed read moves nothing";
  EXPECT_EQ(stream.readDataWithLength(3).bytes(), "abc");
  for (const std::uint32_t beyond : {3U, 4U, 0xFFFFFFFFU}) {
    stream.seekToDataOffset(beyond);
    EXPECT_TRUE(stream.isAtEndOfData());
    EXPECT_EQ(stream.remaining(), 0U);
    EXPECT_THROW(static_cast<void>(stream.readShort()), NSException);
  }
  stream.seekByDataOffset(0x7FFFFFFF);
  EXPECT_EQ(stream.offsetInData(), 0xFFFFFFFFU);
  EXPECT_TRUE(TVQStreamData(Data()).isAtEndOfData());
}

TEST(TVQiPhotoCodedStreamData, ReadsTypedItems) {
  auto number = bigEndian("dbVS\0\0\0\4\0\0\0\x2A"sv);
  EXPECT_EQ(number.readCode(), 0x64625653U);
  EXPECT_EQ(number.peekInt(), number.peekInt());
  EXPECT_EQ(number.readCodedInt(), 42);
  EXPECT_EQ(number.description(), "12 bytes offset = 12 remaining = 0");

  EXPECT_EQ(bigEndian("\0\0\0\2\xFF\xFE"sv).readCodedShort(), -2);
  EXPECT_EQ(bigEndian("\0\0\0\x8\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"sv).readCodedLongLong(), -1);
  EXPECT_EQ(bigEndian("\0\0\0\4\x3F\xC0\0\0"sv).readCodedFloat(), 1.5F);
  EXPECT_EQ(bigEndian("\0\0\0\x8\x3F\xF0\0\0\0\0\0\0"sv).readCodedDouble(), 1.0);
  EXPECT_EQ(bigEndian("\0\0\0\x8\x3F\x80\0\0\x40\0\0\0"sv).readCodedNSSize(), (NSSize{1, 2}));
  EXPECT_EQ(bigEndian("\0\0\0\xA\0\0\0\1\xFF\xFF\xFF\xFF\0\0"sv).readCodedIntArray(),
            (std::vector<std::int32_t>{1, -1}));
  EXPECT_EQ(bigEndian("\0\0\0\3xyz"sv).readCodedData().bytes(), "xyz");
}

TEST(TVQiPhotoCodedStreamData, RefusesAnItemOfAnotherSize) {
  auto stream = bigEndian("\0\0\0\x8\x3F\xF0\0\0\0\0\0\0"sv);
  try {
    static_cast<void>(stream.readCodedInt());
    FAIL() << "no exception";
  } catch (const NSException& exception) {
    EXPECT_EQ(exception.name(), kNSInternalInconsistencyException);
    EXPECT_EQ(exception.reason(), "Unexpected datasize 8 during readCodedInt");
  }
  EXPECT_EQ(stream.offsetInData(), 4U);
}

TEST(TVQiPhotoCodedStreamData, ReadsTextsInEitherByteOrder) {
  EXPECT_EQ(bigEndian("\0\0\0\4\0A\0B"sv).readCodedUTF16String().utf8(), "AB");
  EXPECT_EQ(bigEndian("\0\0\0\0"sv).readCodedUTF16String().utf8(), "");
  EXPECT_EQ(bigEndian("\xFF\xFF\xFF\xFF"sv).readCodedUTF16String().utf8(), "")
      << "halves round toward zero";
  EXPECT_EQ(bigEndian("\0\4\0A\0B"sv).readCodedUTF16StringShort().utf8(), "AB");
  // A byte-order mark makes the units stand in the host's order, and stays in the text.
  EXPECT_EQ(bigEndian("\0\0\0\4\xFF\xFE"
                      "A\0"sv)
                .readCodedUTF16String()
                .utf8(),
            "\xEF\xBB\xBF"
            "A");
  EXPECT_EQ(bigEndian("\0\0\0\x6\xD8\x3D\xDE\0\xD8\x3D"sv).readCodedUTF16String().utf8(),
            "\xF0\x9F\x98\x80\xEF\xBF\xBD")
      << "a lone surrogate";
  auto little = bigEndian("A\0"sv);
  little.setShouldSwapMode(TVQStreamData::littleEndian);
  EXPECT_EQ(little.readUTF16StringWithCharacterCount(1).utf8(), "A");
}

TEST(TVQiPhotoCodedStreamData, RefusesSizesBeyondTheBuffer) {
  NSArchiver archiver;
  archiver.encodeInt(1);
  const Data archive = archiver.archivedData();
  for (const std::string_view size : {"\x7F\xFF\xFF\xFF"sv, "\xFF\xFF\xFF\xF0"sv, "\0\0\0\x10"sv}) {
    EXPECT_THROW(static_cast<void>(bigEndian(size).readCodedIntArray()), NSException);
    EXPECT_THROW(static_cast<void>(bigEndian(size).readCodedUTF16String()), NSException);
    EXPECT_THROW(static_cast<void>(bigEndian(size).readCodedData()), NSException);
    EXPECT_THROW(static_cast<void>(bigEndian(size).readCodedArchive()), NSException);
    EXPECT_THROW(
        static_cast<void>(
            bigEndian(std::string(size) + std::string(archive.bytes())).readCodedArchive()),
        NSException)
        << "even where a whole archive is there";
  }
}

}  // namespace
}  // namespace mrziphoto

#include <MRZiPhoto/stream/TVQStreamData.h>

#include "support/Testing.h"

namespace mrziphoto {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

TVQiPhotoCodedStreamData bigEndian(std::string_view bytes) {
  auto stream = TVQiPhotoCodedStreamData::initWithData(Data::copyOf(bytes));
  stream.setShouldSwapMode(TVQStreamData::bigEndian);
  return stream;
}

/// With that size in place of the first four bytes.
TVQiPhotoCodedStreamData bigEndian(std::string_view bytes, std::int32_t size) {
  std::string sized(bytes);
  for (std::size_t i = 0; i < 4; ++i) {
    sized[i] = static_cast<char>(static_cast<std::uint32_t>(size) >> (24 - 8 * i));
  }
  return bigEndian(sized);
}

TEST(TVQStreamData, ReadsEveryWidthInTheOrderOfItsSwapMode) {
  const Data bytes = Data::copyOf("\x01\x02\x03\x04\x05\x06\x07\x08"sv);
  // Modes outside the list behave as the host's order.
  for (const auto& [mode, number16, number32, number64] :
       Rows<std::int32_t, std::int16_t, std::int32_t, std::int64_t>{
           {2, 0x0102, 0x01020304, 0x0102030405060708},
           {3, 0x0201, 0x04030201, 0x0807060504030201},
           {0, 0x0201, 0x04030201, 0x0807060504030201},
           {1, 0x0102, 0x01020304, 0x0102030405060708},
           {99, 0x0201, 0x04030201, 0x0807060504030201}}) {
    TVQStreamData stream = TVQStreamData::initWithData(bytes);
    stream.setShouldSwapMode(mode);
    EXPECT_EQ(stream.readShort(), number16) << mode;
    stream.seekToDataOffset(0);
    EXPECT_EQ(stream.readInt(), number32) << mode;
    stream.seekByDataOffset(-4);
    EXPECT_EQ(stream.readLongLong(), number64) << mode;
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
  struct Case {
    std::string_view operation;
    std::int32_t size;
    void (*read)(TVQiPhotoCodedStreamData&);
  };
  using Stream = TVQiPhotoCodedStreamData;
  for (const Case& each :
       {Case{"readCodedShort", 2, [](Stream& s) { static_cast<void>(s.readCodedShort()); }},
        {"readCodedInt", 4, [](Stream& s) { static_cast<void>(s.readCodedInt()); }},
        {"readCodedLongLong", 8, [](Stream& s) { static_cast<void>(s.readCodedLongLong()); }},
        {"readCodedFloat", 4, [](Stream& s) { static_cast<void>(s.readCodedFloat()); }},
        {"readCodedDouble", 8, [](Stream& s) { static_cast<void>(s.readCodedDouble()); }},
        {"readCodedNSSize", 8, [](Stream& s) { static_cast<void>(s.readCodedNSSize()); }}}) {
    for (const std::int32_t size : {0, -each.size, each.size - 1, each.size + 1, 16 - each.size}) {
      if (size == each.size) {
        continue;
      }
      Stream stream = bigEndian({"\0\0\0\0\1\2\3\4\5\6\7\x8\x9\xA\xB\xC\xD\xE\xF\x10", 20}, size);
      EXPECT_EQ(exceptionOf([&] { each.read(stream); }),
                "NSInternalInconsistencyException - Unexpected datasize " + std::to_string(size) +
                    " during " + std::string(each.operation));
      EXPECT_EQ(stream.offsetInData(), 4U) << each.operation;
    }
  }
}

TEST(TVQiPhotoCodedStreamData, ReadsTextsInEitherByteOrder) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"\0\0\0\4\0A\0B"sv, "AB"},
      {"\0\0\0\0"sv, ""},
      {"\xFF\xFF\xFF\xFF"sv, ""},  // halves round toward zero
      // A byte-order mark makes the units stand in the host's order, and stays in the text.
      {"\0\0\0\4\xFF\xFE\x41\0"sv, "\uFEFFA"},
      {"\0\0\0\4\xFE\xFF\x41\0"sv, "\uFFFEA"},
      {"\0\0\0\x6\xD8\x3D\xDE\0\xD8\x3D"sv, "\U0001F600\uFFFD"}  // a lone surrogate
  };
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(bigEndian(bytes).readCodedUTF16String().utf8(), text);
  }
  EXPECT_EQ(bigEndian(cases[4].first).readCodedUTF16String().bytes(), "\xFE\xFF\x41\0"sv);
  EXPECT_EQ(bigEndian("\0\4\0A\0B"sv).readCodedUTF16StringShort().utf8(), "AB");
  // The odd byte of a size stays unread; of 16 bits a size has no sign.
  auto odd = bigEndian("\0\5\0A\0B\0C"sv);
  EXPECT_EQ(odd.readCodedUTF16StringShort().utf8(), "AB");
  EXPECT_EQ(odd.offsetInData(), 6U);
  EXPECT_EQ(bigEndian("\xFF\xFE"s + std::string(0xFFFE, '!')).readCodedUTF16StringShort().bytes(),
            std::string(0xFFFE, '!'));
  for (const auto& [mode, text] : {std::pair{0, "\u4100"}, {1, "A"}, {2, "A"}, {3, "\u4100"}}) {
    auto stream = bigEndian("\0A"sv);
    stream.setShouldSwapMode(mode);
    EXPECT_EQ(stream.readUTF16StringWithCharacterCount(1).utf8(), text) << mode;
  }
}

TEST(TVQiPhotoCodedStreamData, StaysBeforeAnArchiveThatItReads) {
  NSArchiver archiver;
  archiver.encodeObject("root");
  const std::string bytes(archiver.archivedData().bytes());
  auto stream = bigEndian("size" + bytes + "after", static_cast<std::int32_t>(bytes.size()));
  EXPECT_EQ(stream.readCodedArchive(), "root");
  EXPECT_EQ(stream.offsetInData(), 4U) << "right behind the size";
  EXPECT_THROW(static_cast<void>(bigEndian("\0\0\0\5plain"sv).readCodedArchive()), NSException);
}

TEST(TVQiPhotoCodedStreamData, RefusesSizesBeyondTheBuffer) {
  NSArchiver archiver;
  archiver.encodeInt(1);
  const Data archive = archiver.archivedData();
  for (const std::string_view size : {"\x7F\xFF\xFF\xFF"sv, "\xFF\xFF\xFF\xF0"sv, "\0\0\0\x10"sv}) {
    EXPECT_THROW((void)bigEndian(size).readCodedIntArray(), NSException);
    EXPECT_THROW((void)bigEndian(size).readCodedUTF16String(), NSException);
    EXPECT_THROW((void)bigEndian(size).readCodedData(), NSException);
    EXPECT_THROW((void)bigEndian(size).readCodedArchive(), NSException);
    const std::string sized = std::string(size) + std::string(archive.bytes());
    EXPECT_THROW((void)bigEndian(sized).readCodedArchive(), NSException) << "a whole one is there";
  }
}

}  // namespace
}  // namespace mrziphoto

#include <MRZiPhoto/files/FileFailure.h>
#include <MRZiPhoto/stream/TVQStreamData.h>
#include <MRZiPhoto/stream/detail/StreamedFile.h>

#include "support/Testing.h"

namespace mrziphoto {
namespace {

TVQStreamData streamOf(const std::string& path) {
  return TVQStreamData(std::make_shared<StreamedFile>(detail::OpenFile::atPath(path), path));
}

TEST(StreamedFile, IsReadLikeBytesInMemory) {
  constexpr std::uint32_t kSize = 3 * StreamedFile::kWindow + 5;
  std::mt19937 random(1);
  std::string bytes(kSize, '\0');
  std::ranges::generate(bytes, [&] { return static_cast<char>(random()); });
  const TemporaryFolder folder;
  folder.write("file", bytes);
  TVQStreamData stream = streamOf(folder / "file");
  EXPECT_EQ(stream.length(), kSize);
  for (int i = 0; i < 2'000; ++i) {
    const std::uint32_t offset = static_cast<std::uint32_t>(random()) % (kSize - 8);
    const std::uint32_t count = static_cast<std::uint32_t>(random()) % (i % 10 == 0 ? kSize : 100);
    const std::string wanted = bytes.substr(offset, count);
    stream.seekToDataOffset(offset);
    EXPECT_EQ(stream.readLongLong(), [&] {
      std::int64_t number = 0;
      std::memcpy(&number, bytes.data() + offset, sizeof number);
      return number;
    }());
    EXPECT_EQ(stream.dataCutToRange(offset, count).bytes(), wanted);
    if (wanted.size() == count) {
      EXPECT_EQ(stream.bytesInRange(offset, count), wanted);
      EXPECT_EQ(stream.dataInRange(offset, count).bytes(), wanted);
      stream.seekToDataOffset(offset);
      std::string copy(count, '\0');
      stream.readBytesCount(copy.data(), count);
      EXPECT_EQ(copy, wanted);
      EXPECT_EQ(stream.offsetInData(), offset + count);
    } else {
      EXPECT_THROW((void)stream.dataInRange(offset, count), NSException);
    }
  }
}

TEST(StreamedFile, FailsOnceTheFileIsShorter) {
  const TemporaryFolder folder;
  folder.write("file", std::string(3 * StreamedFile::kWindow, 'x'));
  TVQStreamData stream = streamOf(folder / "file");
  EXPECT_EQ(stream.readShort(), 0x7878);
  fs::resize_file(folder / "file", StreamedFile::kWindow);
  EXPECT_EQ(stream.readShort(), 0x7878);
  stream.seekToDataOffset(2 * StreamedFile::kWindow);
  try {
    (void)stream.readShort();
    FAIL();
  } catch (const FileException& exception) {
    EXPECT_EQ(exception.failure().sentence(),
              "'" + folder / "file" +
                  "' cannot be read: its bytes behind offset 520192 cannot be "
                  "read any more");
  }
}

}  // namespace
}  // namespace mrziphoto

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

TEST(StreamedFile, FailsWhereTheFileIsNotAsItWas) {
  const TemporaryFolder folder;
  const std::string path = folder / "file";
  struct Row {
    std::function<void()> change;
    std::function<void(TVQStreamData&)> read;
    std::string reason;
  };
  const auto readOn = [](TVQStreamData& stream) {
    stream.seekToDataOffset(2 * StreamedFile::kWindow);
    (void)stream.readShort();
  };
  const Row rows[] = {
      {[&] { fs::resize_file(path, StreamedFile::kWindow); }, readOn,
       "its bytes behind offset 520192 cannot be read any more"},
      {[&] { fs::last_write_time(path, fs::file_time_type::clock::now() + std::chrono::hours(1)); },
       readOn, "another program wrote to it while it was read; try again"},
      {[] {},
       [](TVQStreamData& stream) {
         stream.seekToDataOffset(StreamedFile::kWindow);
         (void)stream.readDataWithLength(30'000'000);
       },
       "the 30000000 bytes at offset 262144 are a hole in it"},
  };
  for (const Row& row : rows) {
    folder.write("file", std::string(3 * StreamedFile::kWindow, 'x'));
    fs::resize_file(path, 40'000'000);
    TVQStreamData stream = streamOf(path);
    EXPECT_EQ(stream.readShort(), 0x7878);
    row.change();
    EXPECT_EQ(stream.readShort(), 0x7878);
    try {
      row.read(stream);
      FAIL() << row.reason;
    } catch (const FileException& exception) {
      EXPECT_EQ(exception.failure().path, path);
      EXPECT_EQ(exception.failure().reason, row.reason);
    }
  }
}

}  // namespace
}  // namespace mrziphoto

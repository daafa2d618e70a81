#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include <MRZiPhoto/archive/ArchiveDocument.h>
#include <MRZiPhoto/values/NSException.h>

#include "support/ArchiveBytes.h"
#include "support/TemporaryFolder.h"

namespace mrziphoto {
namespace {

namespace fs = std::filesystem;

ArchiveDocument read(const std::string& bytes) {
  return ArchiveDocument::initWithData(Data::copyOf(bytes)).value();
}

TEST(ArchiveDocument, EndsBeforeWhatIsNoGroup) {
  const std::string first = ArchiveBytes::build("'i' 1");
  const ArchiveDocument damagedLater = read(first + ArchiveBytes::build("'@' new A:0").substr(16));
  EXPECT_EQ(damagedLater.length(), first.size());
  EXPECT_EQ(damagedLater.trailingLength(), 9U);
  EXPECT_EQ(damagedLater.trailingReason(), "*** End of archive encountered prematurely at 29");
  EXPECT_EQ(damagedLater.write().bytes(), first);
  EXPECT_EQ(damagedLater.items().size(), 2U);
  EXPECT_TRUE(damagedLater.classes().empty());

  EXPECT_THROW(read(ArchiveBytes::build("'i' x84")), NSException);
  EXPECT_FALSE(ArchiveDocument::initWithData(Data::copyOf("dbVS\0\0\0\4")));
  const ArchiveDocument empty = read(ArchiveBytes::build(""));
  EXPECT_EQ(empty.length(), 16U);
  EXPECT_EQ(empty.trailingLength(), 0U);
}

TEST(ArchiveDocument, WritesTheSameBytesAnew) {
  for (const std::endian order : {std::endian::big, std::endian::little}) {
    for (const std::string_view listing : {kEveryType, kPhotoArchive}) {
      const std::string bytes = ArchiveBytes::build(listing, order);
      const ArchiveDocument document = read(bytes);
      EXPECT_EQ(document.byteOrder(), order);
      EXPECT_EQ(document.write().bytes(), bytes.substr(0, document.length()));
    }
  }
}

TEST(ArchiveDocument, ReadsOrRefusesAnythingCutOrChanged) {
  const auto check = [](const std::string& bytes) {
    try {
      if (const auto document = ArchiveDocument::initWithData(Data::copyOf(bytes))) {
        // What was read means the same when it is written in the shortest forms.
        EXPECT_EQ(read(std::string(document->write().bytes())).write(), document->write());
      }
    } catch (const NSException& exception) {
      EXPECT_LE(exception.offset().value_or(bytes.size() + 1), bytes.size()) << exception.what();
    }
  };
  const std::string whole = ArchiveBytes::build(kPhotoArchive);
  for (std::size_t i = 0; i < whole.size(); ++i) {
    check(whole.substr(0, i));
    std::string changed = whole;
    for (const int byte : {0x00, 0x7F, 0x81, 0x84, 0x85, 0x86, 0x92, 0xFF, ~whole[i]}) {
      changed[i] = static_cast<char>(byte);
      check(changed);
    }
  }
}

TEST(ArchiveDocument, WritesFilesOfOtherProgramsByteForByte) {
  const fs::path folder(MRZIPHOTO_REAL_FILES);
  if (!fs::exists(folder / "typedstream")) {
    GTEST_SKIP() << "the files of other programs are not here";
  }
  std::vector<fs::path> files{folder / "iPhoto-9.4.3.photolibrary" / "Library.iPhoto",
                              folder / "iPhoto-9.4.3.photolibrary" / "Library.data"};
  for (const auto& entry : fs::directory_iterator(folder / "typedstream")) {
    files.push_back(entry.path());
  }
  EXPECT_GT(files.size(), 20U);
  for (const fs::path& file : files) {
    SCOPED_TRACE(file);
    const std::string bytes = fileBytes(file);
    const ArchiveDocument document = read(bytes);
    EXPECT_EQ(document.trailingLength(), 0U);
    EXPECT_TRUE(document.write().bytes() == bytes);
  }
}

}  // namespace
}  // namespace mrziphoto

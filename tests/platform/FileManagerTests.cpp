#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include <MRZiPhoto/platform/FileManager.h>
#include <MRZiPhoto/platform/detail/FolderNames.h>

#include "support/EnvironmentVariable.h"
#include "support/TemporaryFolder.h"

namespace mrziphoto {
namespace {

namespace fs = std::filesystem;

TEST(FileManager, TellsEntriesApart) {
  const TemporaryFolder folder;
  folder.write("file", "12345");
  fs::create_directory(folder / "sub");
  fs::create_symlink("file", folder / "link");
  fs::create_symlink("gone", folder / "dangling");
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  struct Case {
    std::string name;
    bool exists, isFolder, isFile;
    std::optional<FileType> type;
  };
  const std::vector<Case> cases{
      {"file", true, false, true, FileType::regular},
      {"sub", true, true, false, FileType::folder},
      {"link", true, false, true, FileType::symbolicLink},
      {"dangling", false, false, false, FileType::symbolicLink},
      {"pipe", true, false, true, FileType::other},
      {"missing", false, false, false, std::nullopt},
      {"file/below", false, false, false, std::nullopt},
      {std::string("file\0x", 6), false, false, false, std::nullopt},
      {std::string(5000, 'x'), false, false, false, std::nullopt},
  };
  for (const Case& each : cases) {
    const std::string path = folder / each.name;
    EXPECT_EQ(FileManager::exists(path), each.exists) << each.name;
    EXPECT_EQ(FileManager::isFolder(path), each.isFolder) << each.name;
    EXPECT_EQ(FileManager::isFile(path), each.isFile) << each.name;
    EXPECT_EQ(FileManager::fileType(path), each.type) << each.name;
    EXPECT_EQ(FileManager::size(path).has_value(), each.exists) << each.name;
    const bool readable = each.name == "file" || each.name == "link";
    EXPECT_EQ(FileManager::contents(path).has_value(), readable) << each.name;
    const auto isEntry = [&](const auto& entry) {
      return entry.name == each.name && entry.type == each.type;
    };
    const DirectoryEnumerator entries(folder.path());
    EXPECT_EQ(std::ranges::count_if(entries, isEntry), each.type ? 1 : 0) << each.name;
  }
  EXPECT_EQ(FileManager::size(folder / "link"), 5U);
  EXPECT_FALSE(FileManager::exists(""));
  EXPECT_FALSE(FileManager::locate(""));
}

TEST(FileManager, ReadsWholeFiles) {
  const TemporaryFolder folder;
  std::string large((std::size_t{9} << 20) + 7, 'x');
  large.back() = 'y';
  folder.write("empty", "");
  folder.write("large", large);
  ASSERT_TRUE(FileManager::contents(folder / "empty"));
  EXPECT_TRUE(FileManager::contents(folder / "empty")->empty());
  EXPECT_TRUE(FileManager::contents(folder / "large")->bytes() == large);

  folder.write("sparse", "");
  fs::resize_file(folder / "sparse", std::uintmax_t{5} << 30);
  EXPECT_FALSE(FileManager::contents(folder / "sparse")) << "more than a value can hold";
}

TEST(FileManager, ReadsDatesToTheFraction) {
  const TemporaryFolder folder;
  folder.write("file", "");
  fs::create_symlink("file", folder / "link");
  const timespec times[] = {{0, UTIME_OMIT}, {978307200 + 86400, 250000000}};
  ASSERT_EQ(utimensat(AT_FDCWD, (folder / "file").c_str(), times, 0), 0);
  EXPECT_EQ(FileManager::modificationDate(folder / "link"), Date{86400.25});
  EXPECT_FALSE(FileManager::modificationDate(folder / "missing"));
}

TEST(FileManager, WritesAtOnceOrNotAtAll) {
  const TemporaryFolder folder;
  fs::create_directory(folder / "sub");
  EXPECT_TRUE(FileManager::writeAtomically(folder / "dump", "first"));
  EXPECT_TRUE(FileManager::writeAtomically(folder / "dump", "second"));
  EXPECT_EQ(FileManager::contents(folder / "dump")->bytes(), "second");
  EXPECT_FALSE(FileManager::writeAtomically(folder / "sub", "onto a folder"));
  EXPECT_FALSE(FileManager::writeAtomically(folder / "missing/dump", "nowhere"));
  const DirectoryEnumerator entries(folder.path());
  EXPECT_EQ(std::distance(entries.begin(), entries.end()), 2) << "no scratch file is left";
}

TEST(FileManager, FindsNamesAsAMacFileSystemDoes) {
  const TemporaryFolder folder;
  folder.write("Originals/2004/Caf\u00E9.JPG", "composed");
  folder.write("Originals/2004/Strasse.jpg", "");
  folder.write("both/a", "small");
  folder.write("both/A", "large");
  folder.write("\xFF-no-text", "");
  const std::vector<std::pair<std::string, std::string>> cases{
      {"originals/2004/CAFE\u0301.jpg", "Originals/2004/Caf\u00E9.JPG"},
      {"Originals/2004/caf\u00C9.jpg", "Originals/2004/Caf\u00E9.JPG"},
      {"ORIGINALS/2004", "Originals/2004"},
      {"both/a", "both/a"},
      {"both/A", "both/A"},
      {"BOTH/a", "both/a"},
      {"\xFF-no-text", "\xFF-no-text"},
      {"Originals/2004/Stra\u00DFe.jpg", ""},
      {"Originals/2005/Caf\u00E9.jpg", ""},
      {"\xFF-NO-TEXT", ""},
      {"\xFF\xFE/x", ""},
  };
  for (const auto& [asked, found] : cases) {
    EXPECT_EQ(FileManager::locate(folder / asked).value_or(""), found.empty() ? "" : folder / found)
        << asked;
    EXPECT_EQ(FileManager::exists(folder / asked), !found.empty()) << asked;
  }
  const std::string asked = folder / "originals/2004/CAFE\u0301.jpg";
  EXPECT_EQ(FileManager::contents(asked)->bytes(), "composed");
  EXPECT_EQ(FileManager::size(asked), 8U);
  EXPECT_TRUE(FileManager::isFile(asked) && FileManager::modificationDate(asked));
}

TEST(FileManager, NoticesThatAFolderHasChanged) {
  const TemporaryFolder folder;
  for (int round = 0; round < 50; ++round) {
    const std::string name = "Photo" + std::to_string(round);
    std::string shouted = name;
    shouted[0] = 'p';
    EXPECT_FALSE(FileManager::exists(folder / shouted)) << name;
    folder.write(name, "");
    EXPECT_TRUE(FileManager::exists(folder / shouted)) << name;
  }
  // A folder that has been left alone is read once.
  const timespec longAgo[] = {{0, UTIME_OMIT}, {1000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, folder.path().c_str(), longAgo, 0), 0);
  const auto names = detail::FolderNames::of(folder.path());
  EXPECT_EQ(detail::FolderNames::of(folder.path()), names);
  folder.write("another", "");
  EXPECT_NE(detail::FolderNames::of(folder.path()), names);
}

TEST(FileManager, KnowsTheUsersFolders) {
  const EnvironmentVariable home("HOME", "/home/somebody");
  const EnvironmentVariable temporary("TMPDIR", "/scratch");
  EXPECT_EQ(FileManager::homeFolder(), "/home/somebody");
  EXPECT_EQ(FileManager::temporaryFolder(), "/scratch");
  const EnvironmentVariable noHome("HOME", std::nullopt);
  const EnvironmentVariable noTemporary("TMPDIR", "");
  EXPECT_TRUE(FileManager::homeFolder().starts_with('/'));
  EXPECT_EQ(FileManager::temporaryFolder(), "/tmp");
  EXPECT_FALSE(FileManager::homeFolderOfUser("no-such-user"));
}

}  // namespace
}  // namespace mrziphoto

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <MRZiPhoto/files/FileFailure.h>
#include <MRZiPhoto/files/FileManager.h>
#include <MRZiPhoto/files/Path.h>
#include <MRZiPhoto/files/ReadingRules.h>
#include <MRZiPhoto/files/detail/FolderNames.h>

#include "support/EnvironmentVariable.h"
#include "support/Testing.h"

namespace mrziphoto {
namespace {

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
  const std::vector<Case> cases{{"file", true, false, true, FileType::regular},
                                {"sub", true, true, false, FileType::folder},
                                {"link", true, false, true, FileType::symbolicLink},
                                {"dangling", false, false, false, FileType::symbolicLink},
                                {"pipe", true, false, true, FileType::other},
                                {"missing", false, false, false, std::nullopt},
                                {"file/below", false, false, false, std::nullopt},
                                {std::string("file\0x", 6), false, false, false, std::nullopt},
                                {std::string(5000, 'x'), false, false, false, std::nullopt}};
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

  // Of a file with holes only what is written is read; the rest is zero.
  folder.write("sparse", "begin");
  fs::resize_file(folder / "sparse", std::uintmax_t{64} << 20);
  std::ofstream(folder / "sparse", std::ios::binary | std::ios::app) << "end";
  const std::optional<Data> sparse = FileManager::contents(folder / "sparse");
  ASSERT_TRUE(sparse);
  EXPECT_EQ(sparse->size(), (std::size_t{64} << 20) + 3);
  EXPECT_TRUE(sparse->bytes().starts_with(std::string_view("begin\0\0", 7)));
  EXPECT_TRUE(sparse->bytes().ends_with(std::string_view("\0end", 4)));
}

/// Gives up the rights of the super-user for as long as it lives.
class AsNobody {
 public:
  AsNobody() : _user(geteuid()) {
    if (_user == 0) {
      EXPECT_EQ(seteuid(65534), 0);
    }
  }
  ~AsNobody() { static_cast<void>(seteuid(_user)); }
  AsNobody(const AsNobody&) = delete;
  AsNobody& operator=(const AsNobody&) = delete;

 private:
  uid_t _user;
};

TEST(FileManager, SaysWhyAFileCannotBeRead) {
  using Cause = FileFailure::Cause;
  const TemporaryFolder folder;
  folder.write("file", "0123456789");
  folder.write("barred/file", "");
  fs::create_directory(folder / "sub");
  fs::create_symlink("circle", folder / "circle");
  fs::create_symlink("gone", folder / "dangling");
  fs::permissions(folder / "file", fs::perms::none);
  fs::permissions(folder / "barred", fs::perms::none);
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0644), 0);
  folder.write("large", "");
  fs::resize_file(folder / "large", (std::uintmax_t{2} << 30) + 1);
  folder.write("small", "12345");
  const std::uint64_t all = Limits().fileSize;
  fs::permissions(folder.path(), fs::perms::all);
  const AsNobody nobody;
  for (const auto& [name, cause, reason, most] :
       Rows<std::string, Cause, std::string, std::uint64_t>{
           {"missing", Cause::notThere, "No such file or directory", all},
           {"file/inside", Cause::notThere, "Not a directory", all},
           {"dangling", Cause::notThere, "No such file or directory", all},
           {std::string(300, 'x'), Cause::notThere, "File name too long", all},
           {"file", Cause::notAllowed, "Permission denied", all},
           {"barred/file", Cause::notAllowed, "Permission denied", all},
           {"sub", Cause::folder, "it is a folder", all},
           {"SUB", Cause::folder, "it is a folder", all},
           {"pipe", Cause::notRegular, "it is no regular file", all},
           {"circle", Cause::system, "Too many levels of symbolic links", all},
           {"large", Cause::tooLarge,
            "its 2147483649 bytes are more than the 2147483648 that are allowed", all},
           {"small", Cause::tooLarge, "its 5 bytes are more than the 4 that are allowed", 4}}) {
    const Limits::Scope scope({.fileSize = most});
    FileFailure failure;
    EXPECT_FALSE(FileManager::contents(folder / name, &failure)) << name;
    EXPECT_EQ(failure.cause, cause) << name;
    EXPECT_EQ(failure.sentence(), "'" + (folder / name) + "' cannot be read: " + reason);
  }
  EXPECT_EQ(DirectoryEnumerator(folder / "barred").failure()->cause, Cause::notAllowed);
  EXPECT_EQ(DirectoryEnumerator(folder / "pipe").failure()->cause, Cause::notRegular);
  EXPECT_EQ(DirectoryEnumerator(folder / "missing").failure()->cause, Cause::notThere);
  EXPECT_FALSE(DirectoryEnumerator(folder / "sub").failure());
}

TEST(FileManager, OpensNothingOutsideOfTheOnlyFolderThatMayBeRead) {
  const TemporaryFolder folder;
  folder.write("library/inside/file", "in");
  folder.write("library-2/file", "out");
  fs::create_symlink("inside/file", folder / "library/link");
  fs::create_symlink("../library-2/file", folder / "library/out");
  fs::create_directory_symlink("../library-2", folder / "library/folder");
  ReadingRules rules;
  rules.onlyInside = fs::canonical(folder / "library").string();
  for (const auto& [name, isInside] : Rows<std::string, bool>{{"library/inside/file", true},
                                                              {"library/LINK", true},
                                                              {"library/out", false},
                                                              {"library/folder/file", false},
                                                              {"library-2/file", false},
                                                              {"library/../library-2/file", false},
                                                              {"library/../library/link", true}}) {
    EXPECT_TRUE(FileManager::contents(folder / name)) << name;
    const ReadingRules::Scope scope(&rules);
    FileFailure failure;
    EXPECT_EQ(FileManager::contents(folder / name, &failure).has_value(), isInside) << name;
    if (!isInside) {
      EXPECT_EQ(failure.cause, FileFailure::Cause::outside) << name;
    }
  }
  const ReadingRules::Scope scope(&rules);
  EXPECT_FALSE(DirectoryEnumerator(folder / "library").failure());
  EXPECT_EQ(DirectoryEnumerator(folder / "library/folder").failure()->cause,
            FileFailure::Cause::outside);
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
  std::string deep;
  for (int i = 0; i < 300; ++i) {
    deep += "/a";
  }
  folder.write("deep" + deep + "/file", "");
  for (const auto& [asked, found] : Rows<std::string, std::string>{
           {"ORIGINALS" + deep + "/2004/CAFE\u0301.jpg", ""},
           {"originals" + std::string(3000, '/') + "2004/CAFE\u0301.jpg",
            "Originals/2004/Caf\u00E9.JPG"},
           {"deep" + deep + "/FILE", "deep" + deep + "/file"},
           {"DEEP" + deep, "deep" + deep},
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
           {"\xFF\xFE/x", ""}}) {
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

TEST(Path, Joins) {
  const std::vector<std::array<std::string, 3>> cases{
      {"/a", "b", "/a/b"},    {"/a/", "b", "/a/b"},
      {"/a", "/b/", "/a/b"},  {"/", "b", "/b"},
      {"", "b", "b"},         {"", "/b", "/b"},
      {"/a/", "", "/a"},      {"", "", ""},
      {"/", "", "/"},         {"a//b", "c//d", "a/b/c/d"},
      {"/a", "ä/é", "/a/ä/é"}};
  for (const auto& [folder, component, joined] : cases) {
    EXPECT_EQ(path::join(folder, component), joined) << folder << " and " << component;
  }
}

TEST(Path, TakesPathsApart) {
  for (const auto& [whole, last, folder, extension] :
       Rows<std::string, std::string, std::string, std::string>{
           {"/top/a.tiff", "a.tiff", "/top", "tiff"},
           {"/top/lock/", "lock", "/top", ""},
           {"/top", "top", "/", ""},
           {"/", "/", "/", ""},
           {"///", "/", "/", ""},
           {"", "", "", ""},
           {"a.b.c", "a.b.c", "", "c"},
           {"a//b///", "b", "a", ""},
           {".hidden", ".hidden", "", ""},
           {"name.", "name.", "", ""},
           {"/x.d/name", "name", "/x.d", ""},
           {"..jpg", "..jpg", "", "jpg"}}) {
    EXPECT_EQ(path::lastComponent(whole), last) << whole;
    EXPECT_EQ(path::withoutLastComponent(whole), folder) << whole;
    EXPECT_EQ(path::extension(whole), extension) << whole;
  }
}

TEST(Path, AppendsExtensions) {
  EXPECT_EQ(path::withExtension("123", "attr"), "123.attr");
  EXPECT_EQ(path::withExtension("/a/b.old/", "jpg"), "/a/b.old.jpg");
  EXPECT_EQ(path::withExtension("42", "?ext?"), "42.?ext?");
  EXPECT_EQ(path::withExtension("/", "jpg"), "/");
  EXPECT_EQ(path::withExtension("", "jpg"), "");
}

TEST(Path, SplitsIntoComponentsAndBack) {
  EXPECT_EQ(path::components("/Users//a/b"), (Texts{"/", "Users", "a", "b"}));
  EXPECT_EQ(path::components("a/b/"), (Texts{"a", "b", "/"}));
  EXPECT_EQ(path::components("/"), Texts{"/"});
  EXPECT_EQ(path::components(""), Texts{});
  EXPECT_EQ(path::fromComponents({"/", "Users", "a"}), "/Users/a");
  EXPECT_EQ(path::fromComponents({"2004", "05", "/"}), "2004/05");
  EXPECT_EQ(path::fromComponents({}), "");
}

TEST(Path, Standardizes) {
  const EnvironmentVariable home("HOME", "/home/me/");
  for (const auto& [given, standard] : Rows<std::string, std::string>{
           {"/a/./b//c/", "/a/b/c"},
           {"/a/b/../c", "/a/c"},
           {"/../../a", "/a"},
           {"/a/..", "/"},
           {"a/../b", "a/../b"},
           {"./a/.", "a"},
           {".", "."},
           {"", ""},
           {"~", "/home/me"},
           {"~/Pictures/../x", "/home/me/x"},
           {"~no-such-user/x", "~no-such-user/x"},
           {"a/~", "a/~"},
           {"~root", FileManager::homeFolderOfUser("root").value_or("~root")}}) {
    EXPECT_EQ(path::standardized(given), standard) << given;
  }
}

TEST(Path, ResolvesSymbolicLinks) {
  const TemporaryFolder folder;
  const std::string root = fs::canonical(folder.path()).string();
  folder.write("real/photo.jpg", "");
  fs::create_directory_symlink("real", folder / "link");
  fs::create_symlink("nowhere", folder / "dangling");
  EXPECT_EQ(path::resolvingSymlinks(root + "/link/photo.jpg"), root + "/real/photo.jpg");
  EXPECT_EQ(path::resolvingSymlinks(root + "/link/missing"), root + "/link/missing");
  EXPECT_EQ(path::resolvingSymlinks(root + "/dangling"), root + "/dangling");
  EXPECT_EQ(path::resolvingSymlinks(""), "");

  const fs::path before = fs::current_path();
  fs::current_path(root);
  EXPECT_EQ(path::resolvingSymlinks("link/photo.jpg"), "real/photo.jpg");
  EXPECT_EQ(path::resolvingSymlinks("link/.."), ".");
  EXPECT_EQ(path::resolvingSymlinks(".."), fs::path(root).parent_path().string());
  fs::current_path(before);
}

}  // namespace
}  // namespace mrziphoto

#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <MRZiPhoto/platform/FileManager.h>
#include <MRZiPhoto/platform/Path.h>

#include "support/EnvironmentVariable.h"
#include "support/TemporaryFolder.h"

namespace mrziphoto {
namespace {

namespace fs = std::filesystem;

TEST(Path, Joins) {
  const std::vector<std::array<std::string, 3>> cases{
      {"/a", "b", "/a/b"},     {"/a/", "b", "/a/b"},
      {"/a", "/b/", "/a/b"},   {"/", "b", "/b"},
      {"", "b", "b"},          {"", "/b", "/b"},
      {"/a/", "", "/a"},       {"", "", ""},
      {"/", "", "/"},          {"a//b", "c//d", "a/b/c/d"},
      {"/a", "ä/é", "/a/ä/é"},
  };
  for (const auto& [folder, component, joined] : cases) {
    EXPECT_EQ(path::join(folder, component), joined) << folder << " and " << component;
  }
}

TEST(Path, TakesPathsApart) {
  struct Case {
    std::string path, last, folder, extension;
  };
  const std::vector<Case> cases{
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
      {"..jpg", "..jpg", "", "jpg"},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(path::lastComponent(each.path), each.last) << each.path;
    EXPECT_EQ(path::withoutLastComponent(each.path), each.folder) << each.path;
    EXPECT_EQ(path::extension(each.path), each.extension) << each.path;
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
  using Parts = std::vector<std::string>;
  EXPECT_EQ(path::components("/Users//a/b"), (Parts{"/", "Users", "a", "b"}));
  EXPECT_EQ(path::components("a/b/"), (Parts{"a", "b", "/"}));
  EXPECT_EQ(path::components("/"), Parts{"/"});
  EXPECT_EQ(path::components(""), Parts{});
  EXPECT_EQ(path::fromComponents({"/", "Users", "a"}), "/Users/a");
  EXPECT_EQ(path::fromComponents({"2004", "05", "/"}), "2004/05");
  EXPECT_EQ(path::fromComponents({}), "");
}

TEST(Path, Standardizes) {
  const EnvironmentVariable home("HOME", "/home/me/");
  const std::vector<std::pair<std::string, std::string>> cases{
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
      {"~root", FileManager::homeFolderOfUser("root").value_or("~root")},
  };
  for (const auto& [given, standard] : cases) {
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

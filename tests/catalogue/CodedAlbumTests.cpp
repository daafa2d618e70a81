#include <MRZiPhoto/albums/AlbumKinds.h>

#include "support/CodedLibrary.h"

namespace mrziphoto {
namespace {

template <class Kind = Album>
Value named(std::string_view name) {
  const Ref<Kind> album = Album::init<Kind>();
  album->setAlbumName(name);
  return album;
}

Value folderOf(const std::string& name, std::vector<Value> children) {
  return archivedAs<FolderAlbum>({{"Name", name}, {"Children", make<Array>(std::move(children))}});
}

/// The names of a catalogue's albums, behind a bar that of its archive album, and what was logged
/// when it could not be loaded.
std::string albums(const std::vector<Value>& objects) {
  // A roll shows which archive album is kept.
  const CodedLibrary library(
      60,
      CodedBuilder().item("dbAL", albumArchive(objects)).rolls({CodedBuilder().item("stKY", 1)}));
  if (!library) {
    return library.log().front();
  }
  std::string names;
  for (const Ref<Album>& album : library->albums()) {
    names += album->albumName().value_or("?");
  }
  return names + "|" + std::to_string(library->numberOfRolls());
}

TEST(CodedAlbumRecords, AreFiledByTheirExactKind) {
  EXPECT_EQ(albums({}), "|0");
  EXPECT_EQ(
      albums({named("a"), named<SlideshowAlbum>("s"), named<FilterAlbum>("f"),
              folderOf("F", {named("b"), folderOf("G", {named("c")}), named<FilterAlbum>("x")}),
              named<RollAlbum>("r"), named("d")}),
      "afbcd|0");
  EXPECT_EQ(albums({named<ArchiveAlbum>("1"), named<ArchiveAlbum>("2")}), "|1");
}

TEST(CodedAlbumRecords, EndAtTheNumber0AndRefuseOtherObjects) {
  EXPECT_EQ(albums({named("a"), 0, named("b"), 1}), "a|0");
  EXPECT_EQ(albums({named("a"), 0.5, named("b")}), "a|0") << "as an integer it is 0";
  const std::string failure = "NSInternalInconsistencyException - Unexpected object ";
  EXPECT_EQ(albums({1}), failure + "NSNumber 1 while loading album data = (null)");
  EXPECT_EQ(albums({Value()}), failure + "<nil>  while loading album data = (null)");
  EXPECT_EQ(albums({Keyword::initWithString("k")}),
            failure + "Keyword Keyword: {\n    String = k;\n} while loading album data = (null)");
  const CodedLibrary library(60, CodedBuilder().item("dbAL", std::string("no archive")));
  EXPECT_FALSE(library);
}

TEST(FolderAlbum, ThatContainsItselfIsWalkedOnce) {
  const Ref<FolderAlbum> folder = Album::init<FolderAlbum>();
  const Ref<Array> children = list({folder, folder, named("a"), folder, folder});
  const_cast<Dictionary&>(*folder->storedDictionary()).set(Album::kChildren, children);
  EXPECT_EQ(albums({folder}), "a|0");
  const_cast<Dictionary&>(*folder->storedDictionary()).set(Album::kChildren, Value());
}

}  // namespace
}  // namespace mrziphoto

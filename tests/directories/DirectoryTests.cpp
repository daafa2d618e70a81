#include <MRZiPhoto/directories/TVQiPhotoDirectories.h>
#include <MRZiPhoto/photos/Key.h>

#include "support/KeyValueAnswers.h"
#include "support/StandInDatabase.h"

namespace mrziphoto {
namespace {

class Entry final : public ArchivedRecord {
 public:
  Entry(Value key, std::string_view folder)
      : ArchivedRecord(dictionary({{"Key", std::move(key)}, {"Path", folder}})) {}
  const Class& objectClass() const override { return DirectoryRec::kClass; }
};

Data table(std::vector<Value> entries, std::uint32_t version = 1) {
  NSArchiver archiver;
  archiver.setVersionForClassName(version, "DirectoryRec");
  archiver.encodeObject(3);
  archiver.encodeObject(make<Array>(std::move(entries)));
  return archiver.archivedData();
}

TEST(TVQiPhotoDirectories, FindsFoldersByKey) {
  const Ref<TVQiPhotoDirectories> directories = TVQiPhotoDirectories::initWithData(
      table({make<Entry>(1, "a"), make<Entry>(Key::initWithKey(2), "b"), "no entry",
             make<Entry>(1, "later"), make<Entry>(2.5, "c")}));
  ASSERT_TRUE(directories);
  EXPECT_EQ(directories->directoryForKey(1), "a") << "the first entry stands";
  EXPECT_EQ(directories->directoryForKey(Key::initWithKey(2)), "b");
  EXPECT_EQ(directories->directoryForKey(2.0), "b");
  EXPECT_EQ(directories->directoryForKey(2.5), "c");
  EXPECT_EQ(directories->directoryForKey(3), std::nullopt);
  EXPECT_EQ(directories->directoryForKey("1"), std::nullopt);
  EXPECT_EQ(directories->directoryForKey(make<Key>()), std::nullopt) << "a key without a number";
  EXPECT_EQ(TVQiPhotoDirectories::init()->directoryForKey(1), std::nullopt);
  EXPECT_EQ(TVQiPhotoDirectories::init()->description(),
            "TVQiPhotoDirectories: directoriesKey = (null), directories = (null)");
}

TEST(DirectoryRec, AnswersItsOperationsByName) {
  const Value entry = throughArchive(make<Entry>(Key::initWithKey(2), "b"));
  expectAnswers(
      *entry.object(),
      {{"directory", "b"}, {"directoryKey", Key::initWithKey(2)}, {"directoryKeyValue", 2}});
}

TEST(TVQiPhotoDirectories, LogsWhatItCannotRead) {
  const TemporaryFolder folder;
  const Data whole = table({make<Entry>(1, "a")});
  const std::string file = folder.path() + "/Dir.data";
  for (const auto& [contents, line] :
       {std::pair<std::string_view, std::string>{
            "no archive", "NSInvalidArgumentException - it is no archive = (null)"},
        {whole.bytes().substr(0, whole.size() - 1), "NSArchiverArchiveInconsistency - "}}) {
    folder.write("Dir.data", contents);
    const CollectedLog log;
    EXPECT_FALSE(TVQiPhotoDirectories::initWithContentsOfFile(file));
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_TRUE(log.lines()[0].starts_with(line)) << log.lines()[0];
  }
  const CollectedLog log;
  EXPECT_FALSE(TVQiPhotoDirectories::initWithContentsOfFile(folder.path() + "/missing"));
  EXPECT_EQ(log.lines().size(), 1U);
  const Ref<TVQiPhotoDirectories> newer =
      TVQiPhotoDirectories::initWithData(table({make<Entry>(1, "a")}, 2));
  EXPECT_EQ(log.lines().back(), "DirectoryRec version 2");
  EXPECT_EQ(newer->directoryForKey(1), "a");
}

}  // namespace
}  // namespace mrziphoto

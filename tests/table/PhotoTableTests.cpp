#include <MRZiPhoto/table/detail/PhotoFacts.h>

#include "support/Testing.h"

namespace mrziphoto {
namespace {

TEST(PhotoTable, GivesBackEveryValueWithItsType) {
  const std::int64_t least = std::numeric_limits<std::int64_t>::min();
  const Ref<Dictionary> nested = make<Dictionary>(Entries{{"", "empty name"}, {"Roll", 1}});
  const std::vector<Value> values{"",
                                  "text",
                                  std::string(70000, 'x'),
                                  std::string("\0\xC3\xA9", 3),
                                  std::int64_t{0},
                                  std::int64_t{-1},
                                  least,
                                  std::numeric_limits<std::int64_t>::max(),
                                  Value::integerOfType(-1, 'Q'),
                                  std::int32_t{-7},
                                  std::uint32_t{0xFFFFFFFF},
                                  true,
                                  false,
                                  0.1,
                                  -0.0,
                                  std::numeric_limits<double>::infinity(),
                                  0.1F,
                                  Date{123456789.25},
                                  Data::copyOf(std::string("\0\1\2", 3)),
                                  make<Array>(),
                                  list({"1", "0", "4294967295"}),
                                  list({"1", "01"}),
                                  list({"1", "4294967296"}),
                                  list({"1", nested, 2.5}),
                                  make<Dictionary>(),
                                  nested};
  PhotoTable::Filler filler;
  filler.beginRow(9, {PhotoStore::imageInfo, PhotoStore::info});
  std::uint32_t field = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    field = filler.fieldNamed("name " + std::to_string(i), field);
    filler.addName(field);
    filler.putField(field, values[i]);
  }
  filler.endRow();
  filler.beginRow(9, {});
  filler.endRow();
  const Ref<PhotoTable> table = filler.finish();

  const Ref<Dictionary> info = (*table)[0].dictionary(PhotoStore::imageInfo);
  ASSERT_EQ(info->size(), values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    const Dictionary::Entry& entry = info->entries()[i];
    EXPECT_EQ(entry.key.text(), "name " + std::to_string(i));
    EXPECT_EQ(entry.value, values[i]) << values[i].description().substr(0, 100);
    EXPECT_EQ(entry.value.numberType(), values[i].numberType());
    EXPECT_EQ(entry.value.description(), values[i].description());
  }
  // A store without entries is there all the same, others are not.
  EXPECT_TRUE((*table)[0].dictionary(PhotoStore::info)->empty());
  EXPECT_FALSE((*table)[0].dictionary(PhotoStore::attributes));
  EXPECT_FALSE((*table)[1].dictionary(PhotoStore::imageInfo));
  EXPECT_EQ(table->rowForKey(9), 0U);
  EXPECT_EQ(table->rowForKey(8), std::nullopt);
}

TEST(PhotoTable, KeepsTextsAliveThatItHandedOut) {
  Value text;
  {
    PhotoTable::Filler filler;
    filler.beginRow(1, {PhotoStore::imageInfo});
    filler.addName(static_cast<std::uint32_t>(PhotoField::infoCaption));
    filler.putText("caption");
    filler.endRow();
    text = (*filler.finish())[0][PhotoField::infoCaption].value();
  }
  EXPECT_EQ(text, Value("caption"));
}

TEST(PhotoTable, SharesTheFoldersThatPhotosShare) {
  PhotoTable::Filler filler;
  const auto image = static_cast<std::uint32_t>(PhotoField::imagePath);
  const auto thumbnail = static_cast<std::uint32_t>(PhotoField::thumbPath);
  Texts images;
  Texts thumbnails;
  for (int i = 0; i < 1000; ++i) {
    const std::string roll = std::to_string(i / 100);
    images.push_back("/lib/Masters/" + roll + "/" + std::to_string(i));
    // Each thumbnail lies in a folder of its own.
    thumbnails.push_back("/lib/Thumbs/" + roll + "/" + std::to_string(i * 77) + "/t.jpg");
    filler.beginRow(static_cast<std::uint32_t>(i), {PhotoStore::imageInfo});
    filler.addName(image);
    filler.putPath(image, images.back());
    filler.addName(thumbnail);
    filler.putPath(thumbnail, thumbnails.back());
    filler.endRow();
  }
  for (const std::string_view path : {"", "/", "none", "/x", "//", "a/"}) {
    filler.beginRow(0, {PhotoStore::imageInfo});
    filler.addName(image);
    filler.putPath(image, path);
    filler.endRow();
    images.emplace_back(path);
  }
  const Ref<PhotoTable> table = filler.finish();
  for (std::uint32_t row = 0; row < images.size(); ++row) {
    const PhotoFacts photo = (*table)[row];
    EXPECT_EQ(photo.imagePath()->text(), images[row]);
    if (row < thumbnails.size()) {
      EXPECT_EQ(photo.thumbnailPath()->text(), thumbnails[row]);
    }
  }
  EXPECT_LT(table->folderCount(), 40U);
}

TEST(PhotoTable, AsksTheAttributesFirst) {
  PhotoTable::Filler filler;
  const auto put = [&filler](PhotoField field, const Value& value) {
    filler.addName(static_cast<std::uint32_t>(field));
    filler.putValue(value);
  };
  filler.beginRow(1, {PhotoStore::imageInfo, PhotoStore::attributes, PhotoStore::info});
  put(PhotoField::infoCaption, "of the image info");
  put(PhotoField::caption, "of the attributes");
  put(PhotoField::infoComment, "of the image info");
  put(PhotoField::annotation, 5);
  put(PhotoField::infoDate, 10);
  put(PhotoField::archiveDate, Date{20});
  put(PhotoField::infoModificationDate, true);
  put(PhotoField::infoRoll, 7);
  filler.endRow();
  const Ref<PhotoTable> table = filler.finish();
  const PhotoFacts photo = (*table)[0];
  const PhotoSheet sheet(photo);
  EXPECT_EQ(photo.caption()->text(), "of the attributes");
  EXPECT_FALSE(photo.comments());
  EXPECT_EQ(photo.archiveDate(), Date{20});
  EXPECT_EQ(photo.modificationDate(), Date{1});
  // With an info store, the roll key is the one of that store, which has none.
  EXPECT_TRUE(photo.roll().isNothing());
  EXPECT_EQ(sheet.caption()->text(), "of the attributes");
  EXPECT_FALSE(sheet.comments());
  EXPECT_EQ(sheet.archiveDate(), photo.archiveDate());
  EXPECT_TRUE(sheet.roll().isNothing());
}

}  // namespace
}  // namespace mrziphoto

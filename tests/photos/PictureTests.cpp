#include <cstdio>

#include <MRZiPhoto/images/NSImage.h>
#include <MRZiPhoto/photos/ImageRecRef.h>
#include <MRZiPhoto/values/Object.h>

#include "support/StandInDatabase.h"

namespace mrziphoto {
namespace {

/// A kind of a host's own: the size stands in the file's name ("3000x2000.jpg"), "0x0" is not
/// valid, and it is drawn in one colour.
class HostImage final : public NSImage {
 public:
  static const Class kClass;
  bool referToFile(const std::string& path) override {
    int width = 0;
    int height = 0;
    const bool isNamed = std::sscanf(path.c_str(), "%*[^0-9]%dx%d", &width, &height) == 2;
    _named = {static_cast<float>(width), static_cast<float>(height)};
    return isNamed;
  }
  [[nodiscard]] NSSize size() const override { return isValid() ? _named : NSImage::size(); }
  [[nodiscard]] bool isValid() const override { return _named.width > 0; }
  [[nodiscard]] Ref<NSBitmapImageRep> bitmapOfPixels(std::uint32_t wide,
                                                     std::uint32_t high) const override {
    return make<NSBitmapImageRep>(wide, high);
  }
  [[nodiscard]] const Class& objectClass() const override { return kClass; }

 private:
  NSSize _named;
};

const Class HostImage::kClass{"TVQAttributedImage", &NSImage::kClass, 0, &makeEmpty<HostImage>};
// Before any photo asks for the kind of its images.
const bool isRegistered = (ClassRegistry::add(HostImage::kClass), true);

Ref<ImageRecRef> photoWith(StandInDatabase& database, Entries imageInfo) {
  Ref<ImageRecRef> photo = ImageRecRef::init();
  photo->setImageInfoForKey(make<Dictionary>(imageInfo), 42);
  photo->setImageAttributes(AttributeMgr::init());
  photo->setDatabase(&database);
  return photo;
}

TEST(Pictures, AreOfTheKindThatTheHostRegistered) {
  EXPECT_EQ(&ImageRecRef::imageClass(), &HostImage::kClass);
  StandInDatabase database;
  const auto photo = photoWith(database, {{"ImagePath", "/40x30.jpg"}});
  EXPECT_TRUE(photo->image().as<HostImage>());
  EXPECT_TRUE(photo->image()->isCachedSeparately());
  EXPECT_EQ(photo->displayImage(), photo->image());
  EXPECT_EQ(photo->valueForKey("image").object(), photo->image());
  EXPECT_FALSE(photoWith(database, {{"ImagePath", "/none.jpg"}})->image());
}

TEST(Pictures, KeepTheLastImageOnly) {
  const auto first = ImageRecRef::imageWithPath("/1x1.jpg");
  EXPECT_EQ(ImageRecRef::imageWithPath("/1x1.jpg"), first);
  const auto second = ImageRecRef::imageWithPath("/2x2.jpg");
  EXPECT_NE(second, first);
  EXPECT_EQ(ImageRecRef::imageWithPath("/2x2.jpg"), second);
  EXPECT_NE(ImageRecRef::imageWithPath("/1x1.jpg"), first);
}

TEST(Pictures, TellSizesThatNoStoreTells) {
  StandInDatabase database;
  const auto photo = photoWith(database, {{"ImagePath", "/40x30.jpg"}});
  EXPECT_EQ(photo->imageWidth(), Value(40.0F));
  EXPECT_EQ(photo->imageHeight(), Value(30.0F));
  EXPECT_EQ(photo->imageSize(), (NSSize{40, 30}));
  const auto unread = photoWith(database, {{"ImagePath", "/0x0.jpg"}});
  EXPECT_EQ(unread->imageWidth(), Value(0.0F));
  const auto stored = photoWith(database, {{"ImagePath", "/40x30.jpg"}});
  stored->setInfo(ImageRec::init());
  EXPECT_EQ(stored->imageSize(), NSSize{});
}

TEST(Pictures, ShowTheThumbnailFileOrTheSmallBitmap) {
  // None for no thumbnail.
  for (const auto& [file, isStored, size] :
       Rows<std::string_view, bool, NSSize>{{"/7x5.jpg", true, {7, 5}},
                                            {"/0x0.jpg", true, {40, 30}},
                                            {"/none.jpg", true, {40, 30}},
                                            {"/0x0.jpg", false, {}}}) {
    StandInDatabase database;
    const auto photo = photoWith(
        database,
        {{"ImagePath", "/40x30.jpg"}, {"ImageThumbnailPath", file}, {"ThumbPath", "/9x9.jpg"}});
    if (isStored && NSImage::isSupported()) {
      database.thumbnails[42] = make<NSBitmapImageRep>(64, 64);
    }
    const auto thumbnail = photo->thumbnail();
    if (!NSImage::isSupported() && file != "/7x5.jpg") {
      EXPECT_FALSE(thumbnail);
      continue;
    }
    ASSERT_EQ(static_cast<bool>(thumbnail), size != NSSize{}) << file;
    if (!thumbnail) {
      // Not kept: the next call tries again.
      database.thumbnails[42] = make<NSBitmapImageRep>(64, 64);
      EXPECT_TRUE(photo->thumbnail());
      continue;
    }
    EXPECT_EQ(thumbnail->size(), size) << file;
    EXPECT_EQ(photo->thumbnail(), thumbnail);
    EXPECT_NE(photo->displayThumbnail(), thumbnail);
    EXPECT_EQ(photo->displayThumbnail(), photo->displayThumbnail());
  }
}

// The generations before iPhoto 6 kept the image file's own name.
TEST(Pictures, NameOriginalsByTheGeneration) {
  for (const auto& [generation, name] : {std::pair{"11", "b.jpg"},
                                         {"20", "b.jpg"},
                                         {"40", "b.jpg"},
                                         {"50", "b.jpg"},
                                         {"10", "42.JPG"},
                                         {"60", "42.JPG"},
                                         {"80", "42.JPG"},
                                         {"", "42.JPG"}}) {
    StandInDatabase database;
    database.generation = generation;
    const auto photo = photoWith(database, {{"ImagePath", "/a/b.jpg"}});
    photo->imageAttributes()->setAttributeForKey("JPG", AttributeMgr::kOrigExt);
    EXPECT_EQ(photo->_originalImageFilename(), name) << generation;
  }
}

TEST(Pictures, MakeSmallCopiesOfOriginals) {
  if (!NSImage::isSupported()) {
    GTEST_SKIP() << "built without images";
  }
  StandInDatabase database;
  for (const auto& [original, size, isCopy] :
       Rows<std::string_view, NSSize, bool>{{"/3000x2000.jpg", {240, 160}, true},
                                            {"/2000x3000.jpg", {160, 240}, true},
                                            {"/1000x333.jpg", {240, 80}, true},
                                            {"/241x240.jpg", {240, 240}, true},
                                            {"/240x240.jpg", {240, 240}, false},
                                            {"/0x0.jpg", {0, 0}, false}}) {
    const auto photo = photoWith(database, {{"ImagePath", "/a/40x30.jpg"},
                                            {"ImageOriginalPath", original},
                                            {"ImageThumbnailPath", "/9x9.jpg"}});
    const auto copy = photo->originalThumbnail();
    ASSERT_TRUE(copy) << original;
    EXPECT_EQ(copy->size(), size) << original;
    EXPECT_EQ(!copy.as<HostImage>(), isCopy) << original;
    EXPECT_EQ(photo->originalThumbnail(), copy);
  }
  const auto unedited = photoWith(database, {{"ImagePath", "/40x30.jpg"},
                                             {"ImageOriginalPath", "/40x30.jpg"},
                                             {"ImageThumbnailPath", "/9x9.jpg"}});
  EXPECT_EQ(unedited->originalImage(), unedited->image());
  EXPECT_EQ(unedited->originalThumbnail(), unedited->thumbnail());
}

}  // namespace
}  // namespace mrziphoto

// The commands that write pictures.

#include <cerrno>
#include <cstddef>
#include <fmt/format.h>
#include <optional>
#include <string>

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/images/NSImage.h>
#include <MRZiPhoto/photos/ImageRecRef.h>

#include "../output/Failure.h"
#include "../output/Messages.h"
#include "../output/NewFile.h"
#include "../output/Progress.h"
#include "../pictures/ContactSheet.h"
#include "../pictures/Pictures.h"
#include "Commands.h"
#include "Library.h"
#include "sample/JpegWriter.h"

namespace mrziphoto::tool {
namespace {

/// The thumbnail as a PNG file; `failure` is where a thumbnail file says why it cannot be read.
std::optional<Data> thumbnailPng(const TVQiPhotoDatabase& database, const ImageRecRef& photo,
                                 std::string& failure) {
  const std::optional<std::string> path = photo.thumbnailPath();
  if (const Ref<NSImage> file = path ? NSImage::initByReferencingFile(*path) : nullptr) {
    if (std::optional<Data> png = file->pngData()) {
      return png;
    }
    failure = file->failure();
  }
  const Ref<NSBitmapImageRep> bitmap = database.cacheThumbnailForKey(photo.key());
  return bitmap ? bitmap->pngData() : std::nullopt;
}

/// Writes the sheet; answers how many photos have no thumbnail.
std::size_t drawSheet(const TVQiPhotoDatabase& database, const List<ImageRecRef>& photos,
                      const SheetLayout& layout, NewFile& file) {
  constexpr int kQuality = 88;
  sample::JpegWriter picture(file.stream(), layout.width(), layout.height());
  const auto expect = [&](bool isWritten) {
    if (!isWritten) {
      file.fail();
    }
  };
  errno = ENOMEM;  // what a failure is due to unless the file system says otherwise
  expect(picture.begin(kQuality));
  SheetRow row(layout);
  Progress progress("Drawing");
  std::size_t drawn = 0;
  std::size_t without = 0;
  for (const Ref<ImageRecRef>& photo : photos) {
    const Ref<NSBitmapImageRep> thumbnail = thumbnailInSquare(database, *photo, layout.square());
    without += thumbnail ? 0 : 1;
    row.draw(drawn % layout.columns, thumbnail);
    photo->unload();
    ++drawn;
    if (drawn % layout.columns == 0 || drawn == photos.size()) {
      expect(picture.writeRows(row.samples()));
      row.clear();
    }
    progress.show(drawn, photos.size());
  }
  expect(picture.finish());
  return without;
}

}  // namespace

void thumbnail(Session& session) {
  expectEnding(session.arguments.outputFile, "png");
  expectPictures();
  const std::string& key = session.arguments.words.front();
  const TVQiPhotoDatabase& database = openLibrary(session);
  const Ref<ImageRecRef> photo = photoWithKey(database, key);
  std::string failure;
  const std::optional<Data> png = thumbnailPng(database, *photo, failure);
  if (!png) {
    throw Failure(ExitStatus::notThere,
                  fmt::format("photo {} of the library '{}' has no thumbnail{}{}", key,
                              database.directory(), failure.empty() ? "" : ": ", failure));
  }
  NewFile file(session.arguments.outputFile, LibraryPlaces(database));
  file.write(png->bytes());
  file.takePlace();
}

void contactSheet(Session& session) {
  expectEnding(session.arguments.outputFile, "jpg");
  expectPictures();
  const Arguments& arguments = session.arguments;
  const TVQiPhotoDatabase& database = openLibrary(session);
  const List<ImageRecRef> photos = selectPhotos(database, arguments);
  if (photos.empty()) {
    throw Failure(
        ExitStatus::notThere,
        fmt::format("the library '{}' has no photos for a contact sheet", database.directory()));
  }
  const SheetLayout layout = SheetLayout::of(photos.size(), arguments.columns, arguments.cellSize);
  NewFile file(arguments.outputFile, LibraryPlaces(database));
  const std::size_t without = drawSheet(database, photos, layout, file);
  file.takePlace();
  if (without > 0) {
    Messages::notice("no thumbnail",
                     fmt::format("{} of {} photos have no thumbnail, and are grey in '{}'", without,
                                 photos.size(), arguments.outputFile));
  }
}

}  // namespace mrziphoto::tool

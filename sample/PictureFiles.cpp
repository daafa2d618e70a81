#include "sample/PictureFiles.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "sample/Bytes.h"
#include "sample/CameraBytes.h"
#include "sample/OutputFile.h"
#include "sample/Picture.h"

namespace mrziphoto::sample {
namespace {

// Of the longer side.
constexpr std::size_t kThumbnailSize = 240;

PictureSubject subjectOf(const SampleModel& model, const SamplePhoto& photo) {
  return {model.chance("colours", photo.index), photo.index + 1, photo.isEdited};
}

void writePhoto(const SampleModel& model, const SamplePhoto& photo, const std::string& prefix) {
  const std::string exif = exifSegment(photo.camera, photo.date);
  const auto width = static_cast<std::size_t>(photo.width);
  const auto height = static_cast<std::size_t>(photo.height);
  const auto longer = std::max(width, height);
  PictureSubject subject = subjectOf(model, photo);
  writeFile(prefix + photo.imagePath, jpegFile(drawPicture(subject, width, height), exif));
  writeFile(prefix + photo.thumbnailPath,
            jpegFile(drawPicture(subject, width * kThumbnailSize / longer,
                                 height * kThumbnailSize / longer),
                     {}));
  if (photo.isEdited) {
    subject.isEdited = false;
    writeFile(prefix + photo.originalPath, jpegFile(drawPicture(subject, width, height), exif));
  }
}

// Green, blue, alpha, red: readers turn each pixel by a byte.
std::string slotOf(const Picture& picture) {
  constexpr std::uint8_t kOpaque = 255;
  std::string slot;
  slot.reserve(picture.width() * picture.height() * 4);
  for (std::size_t y = 0; y < picture.height(); ++y) {
    for (std::size_t x = 0; x < picture.width(); ++x) {
      const std::uint8_t* pixel = picture.row(y) + x * Picture::kSamples;
      for (const std::uint8_t byte : {pixel[1], pixel[2], kOpaque, pixel[0]}) {
        slot += static_cast<char>(byte);
      }
    }
  }
  return slot;
}

}  // namespace

void writePictureFiles(const SampleModel& model, const std::string& folder,
                       const std::function<void()>& photoDone) {
  const std::string prefix = folder + "/";
  for (std::uint32_t i = 0; i < model.rollCount(); ++i) {
    const SampleRoll roll = model.roll(i);
    for (const std::string& each :
         {roll.imageFolder, roll.editedFolder, roll.originalFolder, roll.thumbnailFolder}) {
      makeFolder(prefix + each);
    }
  }
  model.forEachPhoto([&](const SampleRoll&, const SamplePhoto& photo) {
    writePhoto(model, photo, prefix);
    photoDone();
  });
}

void writeSegmentCache(const SampleModel& model, const std::string& path, std::uint32_t side,
                       std::uint32_t slots, const std::function<void()>& photoDone) {
  constexpr std::string_view kSignature = "iPhotoSegmentCache";
  constexpr std::size_t kItemSizeOffset = 132;
  constexpr std::size_t kFirstItemOffset = 4096;
  std::string header(kSignature);
  header.resize(kItemSizeOffset);
  appendLittleEndian(header, side * side * 4);
  appendLittleEndian(header, slots);
  header.resize(kFirstItemOffset);

  OutputFile file(path);
  file.write(header);
  std::string index;
  model.forEachPhoto([&](const SampleRoll&, const SamplePhoto& photo) {
    if (photo.index < slots) {
      constexpr std::uint32_t kInUse = 1;
      file.write(slotOf(drawPicture(subjectOf(model, photo), side, side)));
      for (const std::uint32_t word : {kInUse, std::uint32_t{0}, photo.key, std::uint32_t{0}}) {
        appendLittleEndian(index, word);
      }
    }
    photoDone();
  });
  file.write(index);
  file.close();
}

}  // namespace mrziphoto::sample

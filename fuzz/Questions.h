#pragma once

#include <array>
#include <span>
#include <string_view>

#include <MRZiPhoto/values/NSException.h>
#include <MRZiPhoto/values/Object.h>
#include <MRZiPhoto/values/Value.h>

namespace mrziphoto {

/// What a host may ask a photo record, its camera values among it, and an album.
inline constexpr auto kPhotoQuestions = std::to_array<std::string_view>({
    "archiveDate",
    "caption",
    "comments",
    "date",
    "dbInfo",
    "description",
    "directory",
    "directoryKey",
    "displayImage",
    "extension",
    "fileSize",
    "filename",
    "filepath",
    "hasBeenEdited",
    "imageAttributes",
    "imageHeight",
    "imagePath",
    "imageSize",
    "info",
    "key",
    "keyStringValue",
    "keywords",
    "modificationDate",
    "originalExtension",
    "originalFilename",
    "originalImage",
    "originalImagePath",
    "originalThumbnail",
    "photoId",
    "relativeDirectory",
    "rollKey",
    "rotation",
    "thumbnail",
    "thumbnailPath",
    "title",
    "aperture",
    "brightness",
    "exposureBias",
    "flashDescription",
    "focalLength",
    "isoSpeed",
    "maker",
    "meteringMode",
    "model",
    "shutter",
    "software",
});
inline constexpr auto kAlbumQuestions = std::to_array<std::string_view>({
    "albumName",
    "albums",
    "archiveDate",
    "attributes",
    "comments",
    "children",
    "date",
    "description",
    "key",
    "modificationDate",
    "photoKeys",
    "photos",
    "roll",
    "rollKey",
    "rolls",
});

/// Asks each of these questions, and writes each answer out. An exception is an answer, too.
inline void ask(const Object& object, std::span<const std::string_view> questions) {
  for (const std::string_view question : questions) {
    try {
      (void)object.valueForKey(question).description();
    } catch (const NSException&) {
      continue;
    }
  }
}

/// Asks all of these objects, which may be none.
template <class Objects>
void askEach(const Objects& objects, std::span<const std::string_view> questions) {
  for (const auto& object : objects) {
    ask(*object, questions);
  }
}

}  // namespace mrziphoto

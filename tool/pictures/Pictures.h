#pragma once

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/images/NSImage.h>
#include <MRZiPhoto/photos/ImageRecRef.h>

namespace mrziphoto::tool {

/// Throws `Failure` when the library was built without images.
void expectPictures();

/// The photo's thumbnail, from its own file or else from the thumbnail cache, drawn as large as it
/// gets in a square of `side` pixels. Empty for a photo without a thumbnail. It is not
/// cached, so that all photos of a large library may be asked.
[[nodiscard]] Ref<NSBitmapImageRep> thumbnailInSquare(const TVQiPhotoDatabase& database,
                                                      const ImageRecRef& photo, std::uint32_t side);

}  // namespace mrziphoto::tool

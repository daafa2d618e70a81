#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <MRZiPhoto/albums/Album.h>
#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/photos/ImageRecRef.h>
#include <MRZiPhoto/values/Array.h>

#include "Session.h"

namespace mrziphoto::tool {

/// True for a text of decimal digits, which a KEY is.
[[nodiscard]] bool isKeyText(std::string_view text);
/// Throws `Failure` for any other text.
void expectKeyText(const std::string& text);

/// The full path of the library folder that the command line names, or of the default library.
[[nodiscard]] std::string libraryFolder(const Arguments& arguments);
/// Opens the library that the command line names. Throws `Failure` when that cannot be done, and
/// without `--strict` also when its photos cannot be read.
const TVQiPhotoDatabase& openLibrary(Session& session);
/// Throws `Failure` when the photos of the open library could not be read.
void expectPhotos(Session& session);

/// The photo of a KEY. Throws `Failure` when there is none.
[[nodiscard]] Ref<ImageRecRef> photoWithKey(const TVQiPhotoDatabase& database,
                                            const std::string& key);

/// The photos that the filters of the command line leave, in the order of the album or the roll, or
/// else of the library. Throws `Failure` when there is no such album, roll or keyword.
[[nodiscard]] List<ImageRecRef> selectPhotos(const TVQiPhotoDatabase& database,
                                             const Arguments& arguments);

}  // namespace mrziphoto::tool

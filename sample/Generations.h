#pragma once

#include <cstdint>

#include <MRZiPhoto/values/detail/Generation.h>

namespace mrziphoto::sample {

// The last catalogue version of each generation of libraries.

/// Albums are files of the folder "Albums", photos have files of their own for what is known of
/// them, and the coded catalogue counts for its roll records only.
inline constexpr std::int32_t kLastWithAlbumFiles = lastVersionWith(&Generation::hasAlbumFiles);
/// The catalogue begins with a typed-object archive; pictures lie in a folder for each day.
inline constexpr std::int32_t kLastArchiveHeaded = lastVersionWith(&Generation::hasArchivedHeader);
/// "Dir.data" lists the folders with pictures.
inline constexpr std::int32_t kLastWithDirectories = lastVersionWith(&Generation::hasDirectories);
/// There is a coded catalogue. Later libraries have "AlbumData.xml" alone.
inline constexpr std::int32_t kLastCoded = lastVersionWith(&Generation::isCoded);

}  // namespace mrziphoto::sample

#pragma once

#include <array>
#include <string_view>

#include "AlbumData.h"

namespace mrziphoto {

/// An entry that stands beside the photos, and where it is kept.
struct AlbumDataEntry {
  std::string_view name;
  Fact AlbumData::*place;
};

inline constexpr std::array kAlbumDataEntries{
    AlbumDataEntry{AlbumData::kArchivePath, &AlbumData::archivePath},
    AlbumDataEntry{AlbumData::kListOfAlbums, &AlbumData::albums},
    AlbumDataEntry{AlbumData::kListOfRolls, &AlbumData::rolls},
    AlbumDataEntry{AlbumData::kListOfKeywords, &AlbumData::keywords},
};

}  // namespace mrziphoto

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "../../files/FileFailure.h"
#include "../../table/detail/Fact.h"
#include "../../table/detail/PhotoTable.h"
#include "../../values/Data.h"
#include "../../values/Value.h"
#include "PlainMarkup.h"

namespace mrziphoto {

/// What "AlbumData.xml" says: a row for each photo, and the entries of the file that stand beside
/// them, packed in the same table until somebody asks for their values.
struct AlbumData {
  /// The photos of "Master Image List" in the order of the file, each with its dictionary as image
  /// info; a photo whose entry is no dictionary has none.
  Ref<PhotoTable> photos;
  Fact archivePath;
  Fact albums;
  Fact rolls;
  Fact keywords;

  static constexpr std::string_view kMasterImageList = "Master Image List";
  static constexpr std::string_view kArchivePath = "Archive Path";
  static constexpr std::string_view kListOfAlbums = "List of Albums";
  static constexpr std::string_view kListOfRolls = "List of Rolls";
  static constexpr std::string_view kListOfKeywords = "List of Keywords";

  /// What the file at that path says; empty where it cannot be read, and `failure` then tells why.
  /// Throws NSException for a file that is no property list.
  static AlbumData read(const std::string& path, std::optional<FileFailure>* failure = nullptr);

  // The two ways in which `read` reads.

  /// In one pass over plain markup; nothing for a file that needs the other way.
  static std::optional<AlbumData> fromPlainMarkup(PlainMarkup::Read read,
                                                  std::size_t window = PlainMarkup::kWindow);
  /// From what the general reader says of any property list.
  static AlbumData fromPropertyList(const Value& top);
};

}  // namespace mrziphoto

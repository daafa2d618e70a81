#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace mrziphoto {

/// The names of a library's files.
namespace library_file {

inline constexpr std::string_view kCatalogue = "Library.iPhoto";
inline constexpr std::string_view kOldCatalogue = "Library.data";
/// The catalogue itself, where `kCatalogue` tells its version only.
inline constexpr std::string_view kCatalogue6 = "Library6.iPhoto";
inline constexpr std::string_view kAlbumData = "AlbumData.xml";
inline constexpr std::string_view kDirectories = "Dir.data";
inline constexpr std::string_view kAlbums = "Albums";
inline constexpr std::string_view kThumbnails = "Thumb64Segment.data";
inline constexpr std::string_view kOldThumbnails = "Thumb64.data";

}  // namespace library_file

/// What the libraries of some catalogue versions have in common: the files that lie in them, and
/// what their catalogues hold. The one place that tells versions apart.
struct Generation {
  std::int32_t firstVersion = 0;
  /// How hosts are told of it: "60". Where two generations share their versions it is that of the
  /// one that has the file `telltale`, and `otherDataVersion` that of the other.
  std::string_view dataVersion;
  std::string_view telltale = {};
  std::string_view otherDataVersion = {};
  bool isSupported = true;
  /// The catalogue holds sections of coded items. Without them, album data is all there is.
  bool isCoded = true;
  /// A typed-object archive stands in front of the sections.
  bool hasArchivedHeader = false;
  /// The sections hold photos with what is known of them, and not rolls alone.
  bool hasCodedPhotos = true;
  bool hasCatalogue6 = true;
  bool hasAlbumData = true;
  bool hasDirectories = false;
  /// Each album is a file of the folder "Albums".
  bool hasAlbumFiles = false;
  /// What is known of a photo may lie in a file beside it.
  bool hasAttributesFiles = true;

  /// The generation of a catalogue of that version; 0 for none.
  [[nodiscard]] static constexpr const Generation& of(std::int32_t version);
  /// One that is told to hosts by that data version.
  [[nodiscard]] static constexpr const Generation& ofDataVersion(std::string_view dataVersion);
};

// The formatter would put each entry on a line of its own.
// clang-format off
inline constexpr std::array kGenerations{
    Generation{.firstVersion = 0, .dataVersion = "11", .telltale = "Albums/Pending Rotation", .otherDataVersion = "10",
               .isSupported = false, .isCoded = false, .hasArchivedHeader = true, .hasCodedPhotos = false,
               .hasCatalogue6 = false, .hasAlbumData = false, .hasDirectories = true, .hasAlbumFiles = true},
    Generation{.firstVersion = 13, .dataVersion = "40", .telltale = "Thumb32.data", .otherDataVersion = "20",
               .isSupported = false, .isCoded = false, .hasArchivedHeader = true, .hasCodedPhotos = false,
               .hasCatalogue6 = false, .hasAlbumData = false, .hasDirectories = true, .hasAlbumFiles = true},
    Generation{.firstVersion = 15, .dataVersion = "40", .telltale = "Thumb32.data", .otherDataVersion = "20",
               .hasArchivedHeader = true, .hasCodedPhotos = false, .hasCatalogue6 = false, .hasAlbumData = false,
               .hasDirectories = true, .hasAlbumFiles = true},
    Generation{.firstVersion = 16, .dataVersion = "40", .telltale = "Thumb32.data", .otherDataVersion = "20",
               .hasArchivedHeader = true, .hasCodedPhotos = false, .hasCatalogue6 = false, .hasDirectories = true,
               .hasAlbumFiles = true},
    Generation{.firstVersion = 25, .dataVersion = "50", .hasArchivedHeader = true, .hasCatalogue6 = false,
               .hasDirectories = true},
    Generation{.firstVersion = 51, .dataVersion = "60", .hasDirectories = true},
    Generation{.firstVersion = 101, .dataVersion = "70"},
    Generation{.firstVersion = 150, .dataVersion = "80", .hasAttributesFiles = false},
    Generation{.firstVersion = 151, .dataVersion = "80", .isCoded = false, .hasCodedPhotos = false,
               .hasAttributesFiles = false},
};
// clang-format on

constexpr const Generation& Generation::of(std::int32_t version) {
  const Generation* found = &kGenerations.front();
  for (const Generation& each : kGenerations) {
    found = version >= each.firstVersion ? &each : found;
  }
  return *found;
}

constexpr const Generation& Generation::ofDataVersion(std::string_view dataVersion) {
  const Generation* found = &kGenerations.front();
  for (const Generation& each : kGenerations) {
    const bool isIt = each.dataVersion == dataVersion || each.otherDataVersion == dataVersion;
    found = isIt ? &each : found;
  }
  return *found;
}

/// The last catalogue version whose generation has that.
constexpr std::int32_t lastVersionWith(bool Generation::*property) {
  std::int32_t last = 0;
  for (std::size_t i = 0; i + 1 < kGenerations.size(); ++i) {
    last = kGenerations[i].*property ? kGenerations[i + 1].firstVersion - 1 : last;
  }
  return last;
}

}  // namespace mrziphoto

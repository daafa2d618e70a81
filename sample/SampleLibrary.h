#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace mrziphoto {

/// The catalogue versions of which a library can be made up.
inline constexpr std::int32_t kOldestSampleVersion = 15;
inline constexpr std::int32_t kNewestSampleVersion = 300;
/// Above it a coded catalogue would no longer fit the format's 32-bit offsets.
inline constexpr std::uint32_t kMostSamplePhotos = 2'000'000;

/// What kind of library to make up.
struct SampleOptions {
  /// Where; made when missing. Paths inside "AlbumData.xml" are absolute ones under this folder.
  std::string folder;
  /// The catalogue version, which decides what files there are and where pictures lie.
  std::int32_t libraryVersion = 60;
  std::uint32_t photos = 24;
  /// The same seed gives the same library; another one other dates, sizes, keywords and colours.
  std::uint64_t seed = 1;
  /// Without them there are no picture files, no files beside pictures and no cached thumbnails.
  bool images = true;
  /// The byte order of typed-object archives; coded parts are big-endian always.
  bool bigEndianArchives = false;
  /// Called now and then with the progress, in no particular unit. An exception from it ends the
  /// writing.
  std::function<void(std::uint32_t done, std::uint32_t total)> progress = {};
};

/// Writes a made-up library: catalogue, "AlbumData.xml", and whatever else libraries of that
/// version have. The same options give the same bytes.
///
/// Throws std::runtime_error with one sentence, which names the path or number in question, when
/// the folder is not empty, when a number is out of range, and when something cannot be written.
/// Nothing of the library is left behind then.
void writeSampleLibrary(const SampleOptions& options);

}  // namespace mrziphoto

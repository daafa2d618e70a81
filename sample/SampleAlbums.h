#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include <MRZiPhoto/albums/Album.h>

#include "sample/SampleModel.h"

namespace mrziphoto::sample {

/// Which photos an album holds: every `step`-th, from number `first` on, at most `most` of them. A
/// step of 0 stands for the last roll.
struct SampleSelection {
  std::uint32_t first = 0;
  std::uint32_t step = 1;
  std::uint32_t most = 0;
};

/// How an album's image keys are stored: as objects, or in one block of bytes.
enum class SampleKeys : std::uint8_t { listed, packed };

struct SampleAlbum {
  std::uint32_t key;
  /// The key of the folder that contains it; 0 for none.
  std::uint32_t parent;
  const AlbumKind* kind;
  std::string_view name;
  /// What "AlbumData.xml" calls the kind.
  std::string_view albumDataType;
  SampleKeys keys;
  SampleSelection selection;
  std::string_view comment = {};
};

/// The albums of a made-up library: one of every kind, and folders in folders. A parent comes
/// before its children.
[[nodiscard]] std::span<const SampleAlbum> sampleAlbums();
/// The photos of an album, in a library of that many.
[[nodiscard]] SampleSelection photosOfAlbum(const SampleAlbum& album, const SampleModel& model);

}  // namespace mrziphoto::sample

#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

#include <MRZiPhoto/values/Value.h>

#include "sample/SampleModel.h"

namespace mrziphoto::sample {

/// An archive of these objects, one after the other.
[[nodiscard]] std::string archiveOf(const std::vector<Value>& objects, std::endian byteOrder);
/// An archive of nothing but a catalogue version.
[[nodiscard]] std::string archiveOfVersion(std::int32_t version, std::endian byteOrder);

/// The keywords as catalogues keep them.
[[nodiscard]] Value archivedKeywords();
/// The albums that stand in no folder, each with all that it contains.
[[nodiscard]] std::vector<Value> archivedAlbums(const SampleModel& model);

/// Writes "Dir.data".
void writeDirectoryTable(const SampleModel& model, const std::string& folder,
                         std::endian byteOrder);
/// Writes a file for each album into the folder "Albums".
void writeAlbumFiles(const SampleModel& model, const std::string& folder, std::endian byteOrder);

}  // namespace mrziphoto::sample

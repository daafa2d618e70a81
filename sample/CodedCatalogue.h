#pragma once

#include <bit>
#include <cstdint>
#include <functional>
#include <string>

#include "sample/SampleModel.h"

namespace mrziphoto::sample {

class OutputFile;

/// Writes the catalogue files of coded sections, through the tables that their reader uses.
class CodedCatalogue {
 public:
  CodedCatalogue(const SampleModel& model, std::string folder, bool hasPictures,
                 std::endian byteOrder);

  /// A file that begins with an archive of the version and the keywords.
  void writeArchiveHeaded(const std::string& path, const std::function<void()>& photoDone) const;
  /// A file of sections only.
  void write(const std::string& path, const std::function<void()>& photoDone) const;
  /// A file of nothing but the version.
  static void writeVersion(const std::string& path, std::int32_t version);

 private:
  void writeSections(OutputFile& file, const std::function<void()>& photoDone) const;
  void writeAlbumSection(OutputFile& file) const;
  void writeRollSection(OutputFile& file) const;
  void writeRollTable(OutputFile& file) const;
  void writePhotoTable(OutputFile& file, const std::function<void()>& photoDone) const;

  const SampleModel& _model;
  std::string _folder;
  bool _hasPictures;
  std::endian _byteOrder;
};

}  // namespace mrziphoto::sample

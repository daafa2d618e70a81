#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "../../files/FileFailure.h"
#include "../TVQiPhotoLibrary.h"
#include "CodedImageReader.h"

namespace mrziphoto {

/// What a coded catalogue promised while it was walked, what of it was read, and where it says
/// what cannot be.
struct TVQiPhotoLibrary::Reading {
  /// Things of one kind that are wrong, told in one sentence.
  struct Tally {
    std::uint32_t count = 0;
    std::uint32_t firstOffset = 0;

    void add(std::uint32_t offset) {
      firstOffset = count == 0 ? offset : firstOffset;
      ++count;
    }
  };
  struct Damage {
    std::string what;  // goes on behind "…: "
    std::uint32_t offset;
  };

  /// The records behind each image table from here on.
  std::uint32_t imageRecordCount = 0;
  /// Where the count stands, until a table has followed it.
  std::optional<std::uint32_t> countWithoutTable;
  std::uint64_t promisedRecords = 0;
  std::uint64_t readRecords = 0;
  std::optional<std::uint32_t> recordCode;
  /// Made when the first record is read.
  std::unique_ptr<CodedImageReader> images;
  bool hasReadAny = false;
  /// The records that were read.
  List<ImageRecRef>::Items records;
  List<ImageRecRef>::Items photos;
  List<ImageRecRef>::Items rolls;
  /// Stands for all records that say nothing: of those a damaged file may hold millions.
  Ref<ImageRecRef> blank;
  /// Behind this nothing of the catalogue was read.
  std::optional<Damage> end;

  std::uint32_t readRolls = 0;
  std::optional<Damage> rollsEnd;

  Tally sectionsAsRecords;  // where a photo record should be
  Tally uncountedRecords;   // among the sections
  Tally unfitRecords;       // whose contents end elsewhere than their size says
  Tally recordsWithoutAllBlocks;
  Tally albumsBehindEnd;

  /// Counts the image record at `position`, which was walked to its end.
  void note(const CodedRecordState& record, std::uint32_t position);
  /// The sentences about all that, on the file at that path.
  [[nodiscard]] std::vector<Notice> notices(const std::string& file) const;
};

}  // namespace mrziphoto

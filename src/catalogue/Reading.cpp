// What people are told of a coded catalogue that is damaged.

#include "detail/Reading.h"

#include <array>

#include "../values/detail/Formatted.h"

namespace mrziphoto {
namespace {

std::string counted(std::uint64_t count, std::string_view one, std::string_view many) {
  return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

}  // namespace

void TVQiPhotoLibrary::Reading::note(const CodedRecordState& record, std::uint32_t position) {
  if (findCode(kCodedSections, record.code) != nullptr) {
    // The count says that a record stands here, and it was read as one; but it is a section.
    sectionsAsRecords.add(position);
    return;
  }
  ++readRecords;
  recordCode = record.code;
  if (!record.fitsItsSize) {
    unfitRecords.add(position);
  }
  if (!record.hasAllBlocks) {
    recordsWithoutAllBlocks.add(position);
  }
}

std::vector<Notice> TVQiPhotoLibrary::Reading::notices(const std::string& file) const {
  std::vector<Notice> told;
  const auto tell = [&](const std::string& sentence, std::uint32_t offset) {
    told.push_back({detail::formatted("the catalogue '{}' {}", file, sentence), file, offset});
  };
  if (end && promisedRecords == 0) {
    tell("is damaged before it counts photo records: " + end->what, end->offset);
  } else if (end) {
    tell("is damaged, and " + std::to_string(readRecords) + " of " +
             counted(promisedRecords, "photo record was read: ", "photo records were read: ") +
             end->what,
         end->offset);
  } else if (countWithoutTable) {
    tell("holds " + std::to_string(readRecords) + " of " +
             counted(promisedRecords, "photo record", "photo records") +
             ": no table of records follows the count at offset " +
             std::to_string(*countWithoutTable),
         *countWithoutTable);
  }
  if (rollsEnd) {
    tell("is damaged, and only " + counted(readRolls, "roll was read: ", "rolls were read: ") +
             rollsEnd->what,
         rollsEnd->offset);
  }

  struct Sentence {
    Tally Reading::*tally;
    std::string_view one;
    std::string_view many;
  };
  static constexpr std::array kSentences{
      Sentence{&Reading::sectionsAsRecords,
               "photo record too few: another part of the catalogue stands in its place",
               "photo records too few: other parts of the catalogue stand in their place"},
      Sentence{&Reading::uncountedRecords,
               "photo record that its count leaves out, and that was not read",
               "photo records that its count leaves out, and that were not read"},
      Sentence{&Reading::unfitRecords, "photo record whose contents do not fit its size",
               "photo records whose contents do not fit their size"},
      Sentence{&Reading::recordsWithoutAllBlocks,
               "photo record that lacks some of its announced image data",
               "photo records that lack some of their announced image data"},
      Sentence{&Reading::albumsBehindEnd, "album behind the end mark of its albums, not read",
               "albums behind the end mark of its albums, not read"},
  };
  for (const Sentence& each : kSentences) {
    const Tally& tally = this->*each.tally;
    if (tally.count > 0) {
      tell(detail::formatted("has {}, at offset {}{}", counted(tally.count, each.one, each.many),
                             tally.firstOffset, tally.count > 1 ? " first" : ""),
           tally.firstOffset);
    }
  }
  return told;
}

}  // namespace mrziphoto

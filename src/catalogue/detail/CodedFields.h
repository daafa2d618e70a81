#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "../../stream/detail/CodedRead.h"
#include "../../stream/detail/FourCharacterCode.h"

namespace mrziphoto {

// The sections of a coded catalogue.

inline constexpr std::uint32_t kVersionSection = fourCharacterCode("dbVS");
inline constexpr std::uint32_t kKeywordSection = fourCharacterCode("dbKW");
/// Counts the image records behind each image table that follows.
inline constexpr std::uint32_t kImageCountSection = fourCharacterCode("dbCT");
/// Read and dropped.
inline constexpr std::uint32_t kDateSection = fourCharacterCode("dbMD");
inline constexpr std::uint32_t kAlbumSection = fourCharacterCode("dbAL");
inline constexpr std::uint32_t kRollSection = fourCharacterCode("dbRL");
/// A marker: the image records stand behind its value.
inline constexpr std::uint32_t kImageTableSection = fourCharacterCode("dbTV");

struct CodedSection {
  std::uint32_t code;
  CodedRead read;
};

inline constexpr std::array kCodedSections{
    CodedSection{kVersionSection, CodedRead::intNumber},
    CodedSection{kKeywordSection, CodedRead::archive},
    CodedSection{kImageCountSection, CodedRead::intNumber},
    CodedSection{kDateSection, CodedRead::doubleNumber},
    CodedSection{kAlbumSection, CodedRead::none},
    CodedSection{kRollSection, CodedRead::none},
    CodedSection{kImageTableSection, CodedRead::none},
};

// The fields of an image record and of its image-data blocks.

/// What a photo record takes from its image record.
enum class ImageValue : std::uint8_t {
  nothing,  // the field is read for its size only
  imageKey,
  rollKey,
  date,
  modificationDate,
  archiveDate,
  metadataDate,
  caption,
  comment,
  fileName,
  thumbnailPath,
  originalFileName,
  keywordCount,
  keywordKeys,
  lastBlock,
  cameraData,
  // From image-data blocks.
  blockType,
  imageFile,
  thumbnailFile,
  originalFile,
  imageSize,
  rotation,
  fileSize,
  count
};

struct CodedImageField {
  std::uint32_t code;
  CodedRead read;
  ImageValue keep;
};

inline constexpr std::array kCodedImageFields{
    CodedImageField{fourCharacterCode("idKY"), CodedRead::intNumber, ImageValue::imageKey},
    CodedImageField{fourCharacterCode("idRL"), CodedRead::intNumber, ImageValue::rollKey},
    CodedImageField{fourCharacterCode("idDT"), CodedRead::doubleNumber, ImageValue::date},
    CodedImageField{fourCharacterCode("idMD"), CodedRead::doubleNumber,
                    ImageValue::modificationDate},
    CodedImageField{fourCharacterCode("idAD"), CodedRead::doubleNumber, ImageValue::archiveDate},
    CodedImageField{fourCharacterCode("idMM"), CodedRead::doubleNumber, ImageValue::metadataDate},
    CodedImageField{fourCharacterCode("idCP"), CodedRead::text, ImageValue::caption},
    CodedImageField{fourCharacterCode("idCM"), CodedRead::text, ImageValue::comment},
    CodedImageField{fourCharacterCode("idFN"), CodedRead::text, ImageValue::fileName},
    CodedImageField{fourCharacterCode("idTP"), CodedRead::text, ImageValue::thumbnailPath},
    CodedImageField{fourCharacterCode("idOF"), CodedRead::text, ImageValue::originalFileName},
    CodedImageField{fourCharacterCode("idNK"), CodedRead::intNumber, ImageValue::keywordCount},
    CodedImageField{fourCharacterCode("idKS"), CodedRead::intArray, ImageValue::keywordKeys},
    CodedImageField{fourCharacterCode("idNI"), CodedRead::intNumber, ImageValue::lastBlock},
    CodedImageField{fourCharacterCode("idUD"), CodedRead::data, ImageValue::cameraData},
    CodedImageField{fourCharacterCode("idOD"), CodedRead::doubleNumber, ImageValue::nothing},
    CodedImageField{fourCharacterCode("idPD"), CodedRead::doubleNumber, ImageValue::nothing},
    CodedImageField{fourCharacterCode("idPO"), CodedRead::doubleNumber, ImageValue::nothing},
    CodedImageField{fourCharacterCode("idTS"), CodedRead::doubleNumber, ImageValue::nothing},
    CodedImageField{fourCharacterCode("idFS"), CodedRead::longLong, ImageValue::nothing},
    CodedImageField{fourCharacterCode("idAF"), CodedRead::text, ImageValue::nothing},
    CodedImageField{fourCharacterCode("idML"), CodedRead::text, ImageValue::nothing},
    CodedImageField{fourCharacterCode("idUI"), CodedRead::text, ImageValue::nothing},
    CodedImageField{fourCharacterCode("idSH"), CodedRead::intNumber, ImageValue::nothing},
    CodedImageField{fourCharacterCode("idTV"), CodedRead::intNumber, ImageValue::nothing},
    CodedImageField{fourCharacterCode("idTC"), CodedRead::intNumber, ImageValue::nothing},
    CodedImageField{fourCharacterCode("idXF"), CodedRead::data, ImageValue::nothing},
    CodedImageField{fourCharacterCode("idRS"), CodedRead::archive, ImageValue::nothing},
    CodedImageField{fourCharacterCode("idRO"), CodedRead::floatNumber, ImageValue::nothing},
    CodedImageField{fourCharacterCode("idRK"), CodedRead::shortNumber, ImageValue::nothing},
};

/// The types of image-data blocks that say something about a photo.
enum class CodedBlockType : std::int32_t { original = 1, thumbnail = 5, image = 6 };

/// A field of an image-data block, and what becomes of it in each type of block.
struct CodedBlockField {
  std::uint32_t code;
  CodedRead read;
  ImageValue inImage = ImageValue::nothing;
  ImageValue inThumbnail = ImageValue::nothing;
  ImageValue inOriginal = ImageValue::nothing;
  ImageValue inOthers = ImageValue::nothing;

  [[nodiscard]] constexpr ImageValue keepIn(std::int32_t blockType) const {
    switch (static_cast<CodedBlockType>(blockType)) {
      case CodedBlockType::image:
        return inImage;
      case CodedBlockType::thumbnail:
        return inThumbnail;
      case CodedBlockType::original:
        return inOriginal;
    }
    return inOthers;
  }
};

inline constexpr std::array kCodedBlockFields{
    CodedBlockField{fourCharacterCode("idTY"), CodedRead::intNumber, ImageValue::blockType,
                    ImageValue::blockType, ImageValue::blockType, ImageValue::blockType},
    CodedBlockField{fourCharacterCode("idIS"), CodedRead::size, ImageValue::imageSize},
    CodedBlockField{fourCharacterCode("idRO"), CodedRead::floatNumber, ImageValue::rotation},
    CodedBlockField{fourCharacterCode("idFS"), CodedRead::longLong, ImageValue::fileSize},
    CodedBlockField{fourCharacterCode("idFP"), CodedRead::text, ImageValue::imageFile,
                    ImageValue::thumbnailFile, ImageValue::originalFile},
    CodedBlockField{fourCharacterCode("idFO"), CodedRead::floatNumber},
    CodedBlockField{fourCharacterCode("idIF"), CodedRead::intNumber},
    CodedBlockField{fourCharacterCode("idRR"), CodedRead::intNumber},
};

// The fields of a roll record.

/// What a roll album takes from its roll record.
enum class RollValue : std::uint8_t { nothing, rollKey, name, comment, photoKeys, count };

struct CodedRollField {
  std::uint32_t code;
  CodedRead read;
  RollValue keep;
};

inline constexpr std::array kCodedRollFields{
    CodedRollField{fourCharacterCode("stKY"), CodedRead::intNumber, RollValue::rollKey},
    CodedRollField{fourCharacterCode("rlNM"), CodedRead::text, RollValue::name},
    CodedRollField{fourCharacterCode("rlCM"), CodedRead::text, RollValue::comment},
    CodedRollField{fourCharacterCode("stPK"), CodedRead::intArray, RollValue::photoKeys},
    CodedRollField{fourCharacterCode("slUI"), CodedRead::text, RollValue::nothing},
    CodedRollField{fourCharacterCode("rlDT"), CodedRead::doubleNumber, RollValue::nothing},
    CodedRollField{fourCharacterCode("rlDR"), CodedRead::archive, RollValue::nothing},
    CodedRollField{fourCharacterCode("rlEM"), CodedRead::shortNumber, RollValue::nothing},
    CodedRollField{fourCharacterCode("rlOR"), CodedRead::shortNumber, RollValue::nothing},
};

/// The row of that code; nullptr when there is none.
template <class Row, std::size_t count>
[[nodiscard]] constexpr const Row* findCode(const std::array<Row, count>& table,
                                            std::uint32_t code) {
  const auto found = std::ranges::find(table, code, &Row::code);
  return found != table.end() ? &*found : nullptr;
}

/// For a `static_assert` beside each table.
template <class Row, std::size_t count>
[[nodiscard]] constexpr bool codesAreUnique(const std::array<Row, count>& table) {
  for (const Row& row : table) {
    if (std::ranges::count(table, row.code, &Row::code) != 1) {
      return false;
    }
  }
  return true;
}

static_assert(codesAreUnique(kCodedSections));
static_assert(codesAreUnique(kCodedImageFields));
static_assert(codesAreUnique(kCodedBlockFields));
static_assert(codesAreUnique(kCodedRollFields));

}  // namespace mrziphoto

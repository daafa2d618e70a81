#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "../ArchiveDocument.h"
#include "ArchiveReader.h"

namespace mrziphoto {

/// An archive as one run of items in the order of the file, so that writing and printing it are
/// one walk from front to back: a group's item is followed by its values; a new object by its
/// class, its groups and its end.
struct ArchiveDocument::Contents {
  Data data;
  std::endian byteOrder;
  std::int32_t systemVersion;
  std::vector<detail::ArchiveItem> items;
  std::vector<detail::ArchiveReader::ClassRecord> classes;
  std::vector<detail::ArchiveReader::CString> cStrings;
  std::size_t length;
  std::string trailingReason;
};

}  // namespace mrziphoto

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "Export.h"

namespace mrziphoto {

/// Bounds on what is read of a library. The defaults leave room for every library that iPhoto could
/// write; docs/limits.md gives the reasons.
///
/// Each thread has the limits of its innermost `Scope`. An object that reads on request uses the
/// limits of that moment.
struct MRZIPHOTO_EXPORT Limits {
  /// Bytes of a catalogue, album data, directory table or album file, read as a whole or not. 4 GiB
  /// and more cannot be read, whatever the limit. A library of a million photos needs 1.5 GB.
  std::uint64_t fileSize = std::uint64_t{2} << 30;
  /// Bytes that an archive's shared parts may take when written out in full: this often its size...
  std::uint64_t expansion = 64;
  /// ... and never less than this. The image records of a coded catalogue, whose damaged parts may
  /// reach over each other, may say this much more than the file holds.
  std::uint64_t leastExpansion = 16'000'000;
  /// Objects, arrays and dictionaries inside each other, in archives and property lists. Each level
  /// takes a piece of the thread's stack while it is read and when it is let go.
  std::uint32_t nesting = 256;
  /// Albums of one library, and likewise rolls; a notice tells how many more were left out. Real
  /// libraries have some thousands.
  std::uint32_t albums = 50'000;
  /// Albums and folders that are met while one folder's albums are listed.
  std::uint32_t flattenedAlbums = 100'000;
  /// Classes of an archive above each other, each the superclass of the one before.
  std::uint32_t classChain = 64;
  /// Bytes of one type string of an archive...
  std::uint32_t typeString = 4096;
  /// ... and arrays and structures inside each other in it.
  std::uint32_t typeNesting = 32;
  /// Bytes of the description that stands for a dictionary key of an archive which is no text.
  std::uint32_t describedKey = 512;
  /// Bytes of one description, whatever it describes, those of its parts included. The description
  /// of a catalogue may take 1 KiB for each photo when that is more.
  std::uint64_t description = std::uint64_t{16} << 20;
  /// Pixels of the longer side of a picture that is decoded, and of the whole picture.
  std::uint32_t imageSide = 1U << 16;
  std::uint64_t imagePixels = std::uint64_t{1} << 28;
  /// Bytes that a decoder may keep of one picture while it works.
  std::uint64_t decoderBytes = std::uint64_t{1} << 29;
  /// Pixels of one bitmap in memory, four bytes each.
  std::uint64_t bitmapPixels = std::uint64_t{1} << 27;
  /// How long the decoding of one picture may take.
  std::chrono::milliseconds decodingTime{10'000};

  /// The limits in force on this thread.
  [[nodiscard]] static const Limits& current();

  class Scope;
};

/// Puts limits in force on this thread for as long as it lives; scopes nest.
class MRZIPHOTO_EXPORT Limits::Scope {
 public:
  explicit Scope(const Limits& limits);
  ~Scope();
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

 private:
  Limits _limits;
  const Limits* _before;
};

}  // namespace mrziphoto

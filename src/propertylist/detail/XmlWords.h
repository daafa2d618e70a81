#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "XmlCharacters.h"

/// Several characters of an XML document at a time.
namespace mrziphoto::detail::xml {

/// The next eight bytes, the first one lowest.
inline std::uint64_t load(const char* at) {
  std::uint64_t word = 0;
  std::memcpy(&word, at, sizeof word);
  return std::endian::native == std::endian::little ? word : __builtin_bswap64(word);
}

/// How many of eight bytes, from the lowest on, are letters from a to z.
inline unsigned lettersIn(std::uint64_t word) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  constexpr std::uint64_t kTop = kOnes * 0x80;
  const std::uint64_t low = word & ~kTop;
  const std::uint64_t reachesA = low + kOnes * (0x80 - 'a');
  const std::uint64_t exceedsZ = low + kOnes * (0x7F - 'z');
  const std::uint64_t others = ~(reachesA & ~exceedsZ & ~word) & kTop;
  return static_cast<unsigned>(std::countr_zero(others)) / 8;
}

/// The lowest bytes of a word, fewer than eight.
inline std::uint64_t lowest(std::uint64_t word, unsigned count) {
  return word & ((std::uint64_t{1} << (8 * count)) - 1);
}

#ifdef __SSE2__
inline constexpr int kBlock = 16;

/// A bit for each of the next `kBlock` bytes that may mean something or needs a check.
inline unsigned placesOfOthers(const char* at) {
  const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
  // As signed numbers, control characters and the bytes of other characters lie below the blank.
  const __m128i found = _mm_or_si128(_mm_or_si128(_mm_cmplt_epi8(block, _mm_set1_epi8(' ')),
                                                  _mm_cmpeq_epi8(block, _mm_set1_epi8('<'))),
                                     _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8('&')),
                                                  _mm_cmpeq_epi8(block, _mm_set1_epi8(']'))));
  return static_cast<unsigned>(_mm_movemask_epi8(found));
}
#endif

/// The first character that may mean something or needs a check; `end` when there is none.
inline const char* passPlain(const char* at, const char* end) {
#ifdef __SSE2__
  for (; end - at >= kBlock; at += kBlock) {
    if (const unsigned places = placesOfOthers(at); places != 0) {
      return at + std::countr_zero(places);
    }
  }
#endif
  return passAll(kPlain, at, end);
}

/// The same where there is such a character, with at least `kBlock` bytes behind it.
inline const char* passPlain(const char* at) {
#ifdef __SSE2__
  for (;; at += kBlock) {
    if (const unsigned places = placesOfOthers(at); places != 0) {
      return at + std::countr_zero(places);
    }
  }
#else
  while (isOf(kPlain, *at)) {
    ++at;
  }
  return at;
#endif
}

}  // namespace mrziphoto::detail::xml

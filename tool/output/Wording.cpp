#include "Wording.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

namespace mrziphoto::tool {
namespace {

// Nobody writes longer words by mistake.
constexpr std::size_t kLongestWord = 64;

std::string lowered(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return result;
}

/// How many letters were left out, added, replaced or exchanged with their neighbour.
std::size_t slipsBetween(std::string_view a, std::string_view b) {
  std::vector<std::size_t> beforeLast(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) {
    row[j] = j;
  }
  for (std::size_t i = 1; i <= a.size(); ++i) {
    beforeLast.swap(last);
    last.swap(row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({replaced, last[j] + 1, row[j - 1] + 1});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
      }
    }
  }
  return row[b.size()];
}

}  // namespace

std::optional<std::string_view> nearestWord(std::string_view written,
                                            std::span<const std::string_view> words) {
  if (written.empty() || written.size() > kLongestWord) {
    return std::nullopt;
  }
  const std::string low = lowered(written);
  std::optional<std::string_view> nearest;
  std::size_t fewest = std::numeric_limits<std::size_t>::max();
  for (const std::string_view word : words) {
    const std::string candidate = lowered(word);
    const bool isBeginning = low.size() >= 2 && candidate.starts_with(low);
    const std::size_t slips =
        std::min(slipsBetween(low, candidate), isBeginning ? std::size_t{1} : low.size());
    // One slip in a short word, two in a longer one; but never a word made of slips alone.
    const std::size_t most = std::min<std::size_t>(2, (std::min(low.size(), word.size()) + 1) / 3);
    if (slips < fewest && (isBeginning || slips <= most)) {
      fewest = slips;
      nearest = word;
    }
  }
  return nearest;
}

std::string didYouMean(std::string_view written, std::span<const std::string_view> words,
                       std::string_view otherwise, std::string_view mark) {
  const std::optional<std::string_view> nearest = nearestWord(written, words);
  if (!nearest) {
    return std::string(otherwise);
  }
  return ": did you mean '" + std::string(mark) + std::string(*nearest) + "'?";
}

}  // namespace mrziphoto::tool

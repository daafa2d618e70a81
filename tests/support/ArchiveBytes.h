#pragma once

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace mrziphoto {

/// Builds a typed-object archive, header first, from a listing of its parts, damaged ones included:
///
///     'i' 15                                a new shared string, a number in its shortest form
///     '@' new NSDate:0 NSObject:0 nil       a new object, its classes in full with their versions
///       'd' d0.5  S2 f0.5                   reals; references are S... to strings, O... to others
///       '+' "text" end                      characters behind their length
///     x0001ff                               bytes as they are
///
/// Whoever writes a listing counts strings and objects.
class ArchiveBytes {
 public:
  static std::string build(std::string_view listing, std::endian order = std::endian::little) {
    ArchiveBytes builder(order);
    builder.number(4);
    builder.characters(order == std::endian::big ? "typedstream" : "streamtyped");
    builder.number(1000);
    while (!(listing = listing.substr(std::min(listing.find_first_not_of(" \n"), listing.size())))
                .empty()) {
      const char quote = listing[0] == '\'' || listing[0] == '"' ? listing[0] : '\0';
      const std::size_t end =
          quote != '\0' ? listing.find(quote, 1) + 1 : listing.find_first_of(" \n");
      builder.part(listing.substr(0, end));
      listing.remove_prefix(std::min(end, listing.size()));
    }
    return builder._bytes;
  }

 private:
  explicit ArchiveBytes(std::endian order) : _order(order) {}

  void part(std::string_view word) {
    const std::size_t colon = word.find(':');
    if (word[0] == '\'' || word[0] == '"') {
      _bytes.append(word[0] == '\'' ? 1 : 0, '\x84');
      characters(word.substr(1, word.size() - 2));
    } else if (word == "new" || word == "nil" || word == "end") {
      byte(word == "new" ? 0x84 : word == "nil" ? 0x85 : 0x86);
    } else if (colon != std::string_view::npos) {
      byte(0x84);
      byte(0x84);
      characters(word.substr(0, colon));
      number(parse<std::int64_t>(word.substr(colon + 1)));
    } else if (word[0] == 'S' || word[0] == 'O') {
      number(parse<std::int64_t>(word.substr(1)) - 110);
    } else if (word[0] == 'f') {
      byte(0x83);
      ordered(std::bit_cast<std::uint32_t>(parse<float>(word.substr(1))), sizeof(float));
    } else if (word[0] == 'd') {
      byte(0x83);
      ordered(std::bit_cast<std::uint64_t>(parse<double>(word.substr(1))), sizeof(double));
    } else if (word[0] == 'x') {
      for (std::size_t i = 1; i < word.size(); i += 2) {
        byte(parse<int>(word.substr(i, 2), 16));
      }
    } else {
      number(parse<std::int64_t>(word));
    }
  }

  template <class Number, class... Base>
  static Number parse(std::string_view digits, Base... base) {
    Number value{};
    const char* end = digits.data() + digits.size();
    if (std::from_chars(digits.data(), end, value, base...).ptr != end) {
      throw std::invalid_argument("no part of a listing: " + std::string(digits));
    }
    return value;
  }

  void byte(int value) { _bytes += static_cast<char>(value); }

  void characters(std::string_view text) {
    number(static_cast<std::int64_t>(text.size()));
    _bytes += text;
  }

  void number(std::int64_t value) {
    const auto bits = static_cast<std::uint64_t>(value);
    if (value >= -110 && value <= 127) {
      byte(static_cast<int>(value));
    } else if (value >= -32767 && value <= 32767) {
      byte(0x81);
      ordered(bits, 2);
    } else if (value >= INT32_MIN && value <= INT32_MAX) {
      byte(0x82);
      ordered(bits, 4);
    } else {
      byte(0x87);
      ordered(bits, 8);
    }
  }

  void ordered(std::uint64_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
      const std::size_t place = _order == std::endian::little ? i : size - 1 - i;
      byte(static_cast<int>(value >> (8 * place) & 0xFF));
    }
  }

  std::endian _order;
  std::string _bytes;
};

/// A group of every plain type, and of types made of them.
inline constexpr std::string_view kEveryType = R"(
    'c' xff  'C' xc8  's' -300  'S' -1  'i' -1  S4 -110  S4 -111  S4 32768  'I' -294967296
    'q' 5000000000  'Q' -3  'f' f0.5  'd' -2  S9 d0.1
    '*' new 'txt'  S10 O0  S10 nil  '%' 'atom'  ':' 'copy:'
    '#' NSString:1 NSObject:0 nil  '+' x028684
    '[3i]' 1 -2 300  '[4c]' x008486ff  '{_NSPoint=ff}' 1 f2.5  'iI' 1 5  '@' nil)";

/// Every kind of item, with objects inside objects, and damage at its end.
inline constexpr std::string_view kPhotoArchive = R"(
    'i' 25
    '@' new Photo:0 Stored:1 NSObject:0 nil
      S1 new NSString:1 O3  '+' "say \hi" end
      'c@@' x01 nil new O1  S1 O0 end
      '*' new S0  S8 O7
      '{s=fdd[2c]}' f0.5 2 x83000000000000f07f x00ff  S6 x02fffe
      '[30c]' x000000000000000000000000000000000000000000000000000000000000
      'Q' -1  '#' O1  ':' 'a'
    end
    S1 O4  x000100000002)";

}  // namespace mrziphoto

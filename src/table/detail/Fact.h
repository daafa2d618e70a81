#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "../../values/Date.h"
#include "../../values/Value.h"
#include "PhotoField.h"

namespace mrziphoto {

class PhotoTable;

/// How a fact lies in memory behind its kind.
enum class FactKind : std::uint8_t {
  nothing,
  text,          // length, UTF-8
  path,          // number of the folder, length of the rest, the rest
  pathInRoot,    // the same; the folder lies in the table's root, and the number is one more, or 0
  integer,       // type "q", zigzag
  otherInteger,  // type, 8 bytes
  real,          // 8 bytes
  single,        // 4 bytes
  date,          // 8 bytes
  bytes,         // length, bytes
  keyNumbers,    // count, numbers: an array of their decimal texts
  objects,       // count, numbers of objects of the table: an array of them
  array,         // values, each with its kind before it; then a 0
  dictionary,    // entries, each with the number of its name and its kind before it; then a 0
};

namespace facts {

/// A whole number, seven bits a byte, the low ones first.
inline char* writeNumber(char* to, std::uint64_t number) {
  for (; number >= 0x80; number >>= 7) {
    *to++ = static_cast<char>(number | 0x80);
  }
  *to++ = static_cast<char>(number);
  return to;
}
inline constexpr std::size_t kLongestNumber = 10;

inline std::uint64_t readNumber(const char*& at) {
  auto byte = static_cast<unsigned char>(*at++);
  std::uint64_t number = byte;
  if (byte >= 0x80) {
    number &= 0x7F;
    unsigned shift = 7;
    do {
      byte = static_cast<unsigned char>(*at++);
      number |= std::uint64_t{byte & 0x7FU} << shift;
      shift += 7;
    } while (byte >= 0x80);
  }
  return number;
}

/// Small numbers of either sign as small ones without.
constexpr std::uint64_t zigzag(std::int64_t number) {
  return (static_cast<std::uint64_t>(number) << 1) ^ static_cast<std::uint64_t>(number >> 63);
}
constexpr std::int64_t unzigzag(std::uint64_t number) {
  return static_cast<std::int64_t>((number >> 1) ^ (0 - (number & 1)));
}

template <class Plain>
Plain readPlain(const char* at) {
  Plain plain;
  std::memcpy(&plain, at, sizeof plain);
  return plain;
}
template <class Plain>
char* writePlain(char* to, Plain plain) {
  std::memcpy(to, &plain, sizeof plain);
  return to + sizeof plain;
}

inline std::string_view readText(const char*& at) {
  const auto size = static_cast<std::size_t>(readNumber(at));
  const std::string_view text(at, size);
  at += size;
  return text;
}

/// The number whose decimal text this is, as keys stand in files; nothing for texts that no number
/// is written as.
inline std::optional<std::uint32_t> keyNumber(std::string_view text) {
  constexpr std::size_t kMostDigits = 10;
  if (text.empty() || text.size() > kMostDigits || (text.front() == '0' && text.size() != 1)) {
    return std::nullopt;
  }
  std::uint64_t number = 0;
  for (const char each : text) {
    const auto digit = static_cast<unsigned>(static_cast<unsigned char>(each)) - '0';
    if (digit > 9) {
      return std::nullopt;
    }
    number = number * 10 + digit;
  }
  return number <= 0xFFFFFFFF ? std::optional(static_cast<std::uint32_t>(number)) : std::nullopt;
}

/// Where a fact of that kind ends, for kinds that hold others or lists.
const char* behindMany(FactKind kind, const char* at);

/// Where a fact of that kind ends.
inline const char* behind(FactKind kind, const char* at) {
  switch (kind) {
    case FactKind::text:
    case FactKind::bytes:
      static_cast<void>(readText(at));
      return at;
    case FactKind::path:
    case FactKind::pathInRoot:
      static_cast<void>(readNumber(at));
      static_cast<void>(readText(at));
      return at;
    case FactKind::integer:
      static_cast<void>(readNumber(at));
      return at;
    case FactKind::real:
    case FactKind::date:
      return at + sizeof(double);
    case FactKind::single:
      return at + sizeof(float);
    case FactKind::otherInteger:
      return at + 1 + sizeof(std::int64_t);
    case FactKind::nothing:
      return at;
    default:
      return behindMany(kind, at);
  }
}

}  // namespace facts

/// A text in a row: for a path its root and its folder, with their slashes, and what follows; for
/// others `rest` alone. Lies in the table.
struct FactText {
  std::string_view root;
  std::string_view folder;
  std::string_view rest;

  [[nodiscard]] std::string text() const {
    std::string whole;
    whole.reserve(root.size() + folder.size() + rest.size());
    return whole.append(root).append(folder).append(rest);
  }
  explicit operator std::string() const { return text(); }
  [[nodiscard]] bool empty() const { return root.empty() && folder.empty() && rest.empty(); }
};

/// One thing that a row says. Lives as long as the table.
class Fact {
 public:
  /// Nothing.
  Fact() = default;
  Fact(const PhotoTable& table, FactKind kind, const char* payload)
      : _table(&table), _payload(payload), _kind(kind) {}

  [[nodiscard]] FactKind kind() const { return _kind; }
  [[nodiscard]] bool isNothing() const { return _kind == FactKind::nothing; }
  [[nodiscard]] const char* payload() const { return _payload; }
  [[nodiscard]] const PhotoTable& table() const { return *_table; }

  /// True for an array or a dictionary that is not empty.
  [[nodiscard]] bool holdsAny() const;
  /// A text or a path; nothing for all other kinds.
  [[nodiscard]] std::optional<FactText> text() const;
  /// A number or a boolean; nothing for all other kinds.
  [[nodiscard]] std::optional<double> number() const;
  [[nodiscard]] std::optional<std::int64_t> integer() const;
  [[nodiscard]] std::optional<Date> date() const {
    return _kind == FactKind::date ? std::optional(Date{facts::readPlain<double>(_payload)})
                                   : std::nullopt;
  }
  /// Of any kind. Texts and bytes are slices of the table, and keep it alive.
  [[nodiscard]] Value value() const;

  /// Calls `use` with each number of a list of keys; not at all for other kinds.
  template <class Use>
  void forEachKeyNumber(Use&& use) const {
    forEachNumber(FactKind::keyNumbers, use);
  }
  /// Calls `use` with the number of each object of a list; not at all for other kinds.
  template <class Use>
  void forEachObjectNumber(Use&& use) const {
    forEachNumber(FactKind::objects, use);
  }
  /// Calls `use` with each value of an array; not at all for other kinds.
  template <class Use>
  void forEachElement(Use&& use) const {
    const char* at = _payload;
    while (_kind == FactKind::array && *at != 0) {
      const auto kind = static_cast<FactKind>(*at++);
      use(Fact(*_table, kind, at));
      at = facts::behind(kind, at);
    }
  }
  /// Calls `use` with the number of the name and the value of each entry of a dictionary; not at
  /// all for other kinds.
  template <class Use>
  void forEachEntry(Use&& use) const {
    const char* at = _payload;
    while (_kind == FactKind::dictionary) {
      const auto name = static_cast<std::uint32_t>(facts::readNumber(at));
      if (name == 0) {
        break;
      }
      const auto kind = static_cast<FactKind>(*at++);
      use(name, Fact(*_table, kind, at));
      at = facts::behind(kind, at);
    }
  }

 private:
  template <class Use>
  void forEachNumber(FactKind kind, Use&& use) const {
    const char* at = _payload;
    for (std::uint64_t left = _kind == kind ? facts::readNumber(at) : 0; left != 0; --left) {
      use(static_cast<std::uint32_t>(facts::readNumber(at)));
    }
  }

  const PhotoTable* _table = nullptr;
  const char* _payload = nullptr;
  FactKind _kind = FactKind::nothing;
};

}  // namespace mrziphoto

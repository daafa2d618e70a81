// The reader for album data in plain markup. It says nothing of what is wrong with a file: whatever
// it does not expect, it leaves to the general reader.

#include <algorithm>
#include <array>
#include <vector>

#include "../propertylist/PropertyList.h"
#include "../values/Limits.h"
#include "../values/NSException.h"
#include "detail/AlbumDataEntries.h"

namespace mrziphoto {
namespace {

using Tag = PlainMarkup::Tag;

constexpr Tag kKey = PlainMarkup::start("key");
constexpr Tag kString = PlainMarkup::start("string");
constexpr Tag kInteger = PlainMarkup::start("integer");
constexpr Tag kReal = PlainMarkup::start("real");
constexpr Tag kDate = PlainMarkup::start("date");
constexpr Tag kData = PlainMarkup::start("data");
constexpr Tag kArray = PlainMarkup::start("array");
constexpr Tag kDictionary = PlainMarkup::start("dict");
constexpr Tag kTrue = PlainMarkup::empty("true");
constexpr Tag kFalse = PlainMarkup::empty("false");
constexpr Tag kEmptyString = PlainMarkup::empty("string");
constexpr Tag kEmptyArray = PlainMarkup::empty("array");
constexpr Tag kEmptyDictionary = PlainMarkup::empty("dict");
constexpr Tag kArrayEnd = PlainMarkup::end("array");
constexpr Tag kDictionaryEnd = PlainMarkup::end("dict");
constexpr Tag kPropertyListEnd = PlainMarkup::end("plist");

// Album data nests no deeper than a few levels.
constexpr std::size_t kDeepest = 16;
// The level of the one dictionary around all others; the photos' dictionaries are at 0.
constexpr std::size_t kTop = kDeepest;
// The dictionaries around a photo's values: its own, that of all photos, and the one around all.
constexpr std::uint32_t kLevelsAround = 3;
// For fields with numbers below this, what follows their values is remembered.
constexpr std::size_t kForeseen = 96;
// After this many values in rare forms the whole file is left to the general reader, for which they
// cost less.
constexpr std::uint32_t kMostRareNumbers = 1000;
// Some fifty names stand in a file; one with this many is left to the general reader, which needs
// no memory for each name at each level.
constexpr std::uint32_t kMostNames = 10'000;
// Up to this many digits, and for these powers of ten, one division of doubles gives the double
// nearest to the decimal number.
constexpr std::size_t kExactDigits = 15;
constexpr std::array kPowersOfTen{1.0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                  1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

constexpr bool isDigit(char each) { return static_cast<unsigned char>(each - '0') <= 9; }

std::string_view withoutSpaceAround(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n";
  const std::size_t first = std::min(text.find_first_not_of(kSpace), text.size());
  return text.substr(first, text.find_last_not_of(kSpace) + 1 - first);
}

/// A whole number of so few digits that it cannot overflow; nothing for others.
std::optional<std::int64_t> shortInteger(std::string_view text) {
  const bool isNegative = text.starts_with('-');
  text.remove_prefix(isNegative ? 1 : 0);
  if (text.empty() || text.size() > kExactDigits) {
    return std::nullopt;
  }
  std::int64_t number = 0;
  for (const char each : text) {
    if (!isDigit(each)) {
      return std::nullopt;
    }
    number = number * 10 + (each - '0');
  }
  return isNegative ? -number : number;
}

/// A decimal fraction of so few digits that one division gives its double; nothing for others.
std::optional<double> shortReal(std::string_view text) {
  const bool isNegative = text.starts_with('-');
  text.remove_prefix(isNegative ? 1 : 0);
  if (text.empty() || text.size() > kExactDigits + 1 || !isDigit(text.front())) {
    return std::nullopt;
  }
  std::int64_t digits = 0;
  std::size_t point = text.size();
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (isDigit(text[i])) {
      digits = digits * 10 + (text[i] - '0');
    } else if (text[i] == '.' && point == text.size()) {
      point = i;
    } else {
      return std::nullopt;
    }
  }
  const std::size_t fraction = point == text.size() ? 0 : text.size() - point - 1;
  const std::size_t digitCount = text.size() - (point == text.size() ? 0 : 1);
  if (digitCount > kExactDigits) {
    return std::nullopt;
  }
  const double number = static_cast<double>(digits) / kPowersOfTen[fraction];
  return isNegative ? -number : number;
}

class Reader {
 public:
  explicit Reader(PlainMarkup& markup) : _markup(markup) {}

  AlbumData read() {
    _markup.prolog();
    expect(kDictionary);
    beginNames(kTop);
    for (Tag tag = _markup.next(); tag != kDictionaryEnd; tag = _markup.next()) {
      readEntry(tag);
    }
    expect(kPropertyListEnd);
    _markup.finish();
    _result.photos = _filler.finish();
    // Of equal keys the later photo counts, in the place of the earlier one.
    if (!_keysAscend && _result.photos->index().hasEqualKeys()) {
      throw PlainMarkup::Unusual{};
    }
    return std::move(_result);
  }

 private:
  void expect(Tag tag) {
    if (_markup.next() != tag) {
      throw PlainMarkup::Unusual{};
    }
  }

  std::string_view keyText(Tag tag) {
    if (tag != kKey) {
      throw PlainMarkup::Unusual{};
    }
    return _markup.textOf(kKey);
  }

  void readEntry(Tag tag) {
    const std::string_view name = keyText(tag);
    const auto* entry = std::ranges::find(kAlbumDataEntries, name, &AlbumDataEntry::name);
    const bool isPhotos = name == AlbumData::kMasterImageList;
    noteName(_filler.fieldNamed(name), kTop);
    if (isPhotos) {
      readPhotos();
      return;
    }
    readValue(_markup.next(), 1);
    if (entry != kAlbumDataEntries.end()) {
      _result.*entry->place = _filler.finishLone();
    } else {
      _filler.discardLone();
    }
  }

  void readPhotos() {
    expect(kDictionary);
    std::uint64_t least = 0;
    for (Tag tag = _markup.next(); tag != kDictionaryEnd; tag = _markup.next()) {
      const std::optional<std::uint32_t> key = facts::keyNumber(keyText(tag));
      if (!key) {
        throw PlainMarkup::Unusual{};
      }
      _keysAscend = _keysAscend && *key >= least;
      least = std::uint64_t{*key} + 1;
      expect(kDictionary);
      readPhoto(*key);
    }
  }

  void readPhoto(std::uint32_t key) {
    _filler.beginRow(key, {PhotoStore::imageInfo});
    beginNames(0);
    for (Entry entry = nextEntry(0); entry.tag != kDictionaryEnd; entry = nextEntry(entry.field)) {
      noteName(entry.field, 0);
      _filler.addName(entry.field);
      if (entry.tag == kString && isPath(entry.field)) {
        _filler.putPath(entry.field, _markup.textOf(kString));
      } else {
        readValue(entry.tag, 1);
      }
    }
    _filler.endRow();
  }

  /// What stands between two values of a photo: the name of the second and its start tag, or the
  /// end of the photo.
  struct Entry {
    std::uint32_t field = 0;
    Tag tag = 0;
  };
  struct Step {
    PlainMarkup::Passage passage;
    Entry entry;
  };

  Entry nextEntry(std::uint32_t before) {
    if (before >= _steps.size()) {
      return unforeseenEntry(before);
    }
    std::array<Step, 2>& steps = _steps[before];
    for (Step& step : steps) {
      if (!step.passage.empty() && _markup.passAgain(step.passage)) {
        return step.entry;
      }
    }
    const PlainMarkup::Place place = _markup.place();
    const Entry entry = unforeseenEntry(before);
    std::swap(steps[0], steps[1]);
    steps[0].entry = entry;
    _markup.keepPassedSince(place, steps[0].passage);
    return entry;
  }

  Entry unforeseenEntry(std::uint32_t before) {
    const Tag tag = _markup.next();
    if (tag == kDictionaryEnd) {
      return {0, tag};
    }
    const std::uint32_t field = _filler.fieldNamed(keyText(tag), before);
    return {field, _markup.next()};
  }

  void readValue(Tag tag, std::size_t level) {
    switch (tag) {
      case kString:
        _filler.putText(_markup.textOf(kString));
        return;
      case kInteger:
        readNumber(kInteger, shortInteger, &PhotoTable::Filler::putInteger);
        return;
      case kReal:
        readNumber(kReal, shortReal, &PhotoTable::Filler::putReal);
        return;
      case kArray:
        readArray(level);
        return;
      case kDictionary:
        readDictionary(level);
        return;
      case kTrue:
      case kFalse:
        _filler.putBoolean(tag == kTrue);
        return;
      case kEmptyString:
        _filler.putText({});
        return;
      case kEmptyArray:
        _filler.beginArray();
        _filler.endCollection();
        return;
      case kEmptyDictionary:
        _filler.beginDictionary();
        _filler.endCollection();
        return;
      case kDate:
      case kData:
        putRare(tag);
        return;
      default:
        throw PlainMarkup::Unusual{};
    }
  }

  template <class Parse, class Put>
  void readNumber(Tag tag, Parse parse, Put put) {
    if (const auto number = parse(withoutSpaceAround(_markup.textOf(tag)))) {
      (_filler.*put)(*number);
    } else {
      putPassed();
    }
  }

  void putRare(Tag tag) {
    static_cast<void>(_markup.textOf(tag));
    putPassed();
  }

  /// Puts the value of the element that was passed last, as the general reader reads it.
  void putPassed() {
    if (++_rareNumbers > kMostRareNumbers) {
      throw PlainMarkup::Unusual{};
    }
    _filler.putValue(propertyListFromData(Data::copyOf(_markup.element())));
  }

  void readArray(std::size_t level) {
    checkLevel(level);
    // Most arrays hold keys as texts; whether all elements are keys is known only after the last
    // one.
    std::vector<std::uint32_t>& keys = _keyNumbers;
    keys.clear();
    Tag tag = _markup.next();
    std::optional<std::string_view> other;
    PlainMarkup::Passage between;
    while (tag == kString) {
      const std::string_view text = _markup.textOf(kString);
      const std::optional<std::uint32_t> key = facts::keyNumber(text);
      if (!key) {
        other = text;
        break;
      }
      keys.push_back(*key);
      if (between.empty() || !_markup.passAgain(between)) {
        const PlainMarkup::Place place = _markup.place();
        tag = _markup.next();
        if (tag == kString) {
          _markup.keepPassedSince(place, between);
        }
      }
    }
    if (!keys.empty() && tag == kArrayEnd) {
      _filler.putKeyNumbers(keys);
      return;
    }
    _filler.beginArray();
    for (const std::uint32_t key : keys) {
      _filler.putText(std::to_string(key));
    }
    if (other) {
      _filler.putText(*other);
      tag = _markup.next();
    }
    for (; tag != kArrayEnd; tag = _markup.next()) {
      readValue(tag, level + 1);
    }
    _filler.endCollection();
  }

  void readDictionary(std::size_t level) {
    checkLevel(level);
    beginNames(level);
    _filler.beginDictionary();
    std::uint32_t field = 0;
    for (Tag tag = _markup.next(); tag != kDictionaryEnd; tag = _markup.next()) {
      field = _filler.fieldNamed(keyText(tag), field);
      noteName(field, level);
      _filler.addName(field);
      readValue(_markup.next(), level + 1);
    }
    _filler.endCollection();
  }

  static void checkLevel(std::size_t level) {
    if (level >= kDeepest) {
      throw PlainMarkup::Unusual{};
    }
  }

  /// To be called where a dictionary begins. No dictionary around it has the same level.
  void beginNames(std::size_t level) { ++_names[level].dictionary; }

  /// Of equal names in a dictionary the later value counts, in the place of the earlier one; that
  /// is rare enough to be left to the general reader.
  void noteName(std::uint32_t field, std::size_t level) {
    Names& names = _names[level];
    if (field >= kMostNames && level != 0) {
      throw PlainMarkup::Unusual{};
    }
    if (field >= names.lastIn.size()) {
      names.lastIn.resize(std::size_t{field} * 2 + 1);
    }
    if (names.lastIn[field] == names.dictionary) {
      throw PlainMarkup::Unusual{};
    }
    names.lastIn[field] = names.dictionary;
  }

  struct Names {
    std::uint64_t dictionary = 0;       // the number of the latest one at this level
    std::vector<std::uint64_t> lastIn;  // by field: the last dictionary in which it stood
  };

  PlainMarkup& _markup;
  PhotoTable::Filler _filler;
  AlbumData _result;
  std::array<Names, kTop + 1> _names;
  // By field: the entry that was last found behind its value, and the one found before that.
  std::array<std::array<Step, 2>, kForeseen> _steps;
  std::vector<std::uint32_t> _keyNumbers;  // of the array that is read
  std::uint32_t _rareNumbers = 0;
  bool _keysAscend = true;
};

}  // namespace

std::optional<AlbumData> AlbumData::fromPlainMarkup(PlainMarkup::Read read, std::size_t window) {
  // Limits below the depth that is accepted here are for the general reader to enforce.
  if (Limits::current().nesting < kDeepest + kLevelsAround) {
    return std::nullopt;
  }
  PlainMarkup markup(std::move(read), window);
  try {
    return Reader(markup).read();
  } catch (const PlainMarkup::Unusual&) {
    return std::nullopt;
  } catch (const NSException&) {
    // A malformed value in a rare form: the general reader reports it in its own words.
    return std::nullopt;
  }
}

}  // namespace mrziphoto

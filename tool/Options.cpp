#include "Options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <fmt/format.h>
#include <getopt.h>
#include <limits>

#include "output/Failure.h"
#include "output/Wording.h"
#include "sample/JpegWriter.h"

namespace mrziphoto::tool {
namespace {

std::string nameOf(const Option& option) { return fmt::format("'--{}'", option.name); }

template <class T>
struct Choice {
  std::string_view word;
  T value;
};

constexpr std::array kFormats{
    Choice<Format>{"table", Format::table},
    Choice<Format>{"json", Format::json},
    Choice<Format>{"jsonl", Format::jsonl},
    Choice<Format>{"csv", Format::csv},
};
constexpr std::array kByteOrders{Choice<bool>{"little", false}, Choice<bool>{"big", true}};
constexpr std::array kColors{
    Choice<Color>{"auto", Color::automatic},
    Choice<Color>{"always", Color::always},
    Choice<Color>{"never", Color::never},
};

/// "table, json, jsonl or csv"
std::string listOf(std::span<const std::string_view> words) {
  std::string list;
  for (std::size_t i = 0; i < words.size(); ++i) {
    list += i == 0 ? "" : i + 1 == words.size() ? " or " : ", ";
    list += words[i];
  }
  return list;
}

/// The value of an option that takes one of a few words.
template <class T, std::size_t count>
T chosen(const std::array<Choice<T>, count>& choices, const GivenOption& given) {
  const auto* found = std::ranges::find(choices, given.value, &Choice<T>::word);
  if (found == choices.end()) {
    std::array<std::string_view, count> words;
    std::ranges::transform(choices, words.begin(), &Choice<T>::word);
    throw Failure(ExitStatus::wrongUse,
                  fmt::format("{} takes {}, not '{}'{}", nameOf(given.option), listOf(words),
                              given.value, didYouMean(given.value, words, "")));
  }
  return found->value;
}

/// The value of an option that takes a number.
template <class T>
T numberIn(T smallest, T largest, const GivenOption& given) {
  const std::string& text = given.value;
  T number{};
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size() || number < smallest ||
      number > largest) {
    throw Failure(ExitStatus::wrongUse, fmt::format("{} takes a number from {} to {}, not '{}'",
                                                    nameOf(given.option), smallest, largest, text));
  }
  return number;
}

template <auto member>
void takeText(Arguments& arguments, const GivenOption& given) {
  arguments.*member = given.value;
}

template <auto member>
void takeSwitch(Arguments& arguments, const GivenOption& /*given*/) {
  arguments.*member = true;
}

constexpr std::uint32_t kSmallestCell = 16;
constexpr std::uint32_t kLargestCell = 512;

constexpr std::array kOptions{
    Option{kLibrary, '\0', "library", "FOLDER", "The library folder, if no LIBRARY names it",
           takeText<&Arguments::library>},
    Option{kFormat, '\0', "format", "FORMAT", "table (the default), json, jsonl or csv",
           [](Arguments& it, const GivenOption& given) { it.format = chosen(kFormats, given); }},
    Option{kFields, '\0', "fields", "A,B,C", "These fields in this order; 'all' for all of them",
           takeText<&Arguments::fields>},
    Option{kPhotoFilters, '\0', "album", "NAME|KEY", "Only the photos of this album, in its order",
           takeText<&Arguments::album>},
    Option{kPhotoFilters, '\0', "roll", "KEY", "Only the photos of this film roll, in its order",
           takeText<&Arguments::roll>},
    Option{kPhotoFilters, '\0', "keyword", "TEXT", "Only the photos with this keyword",
           takeText<&Arguments::keyword>},
    Option{kOutputFile, 'o', "output", "FILE", "The file to write",
           takeText<&Arguments::outputFile>, true},
    Option{kAll, '\0', "all", "", "In a table, files with which nothing is wrong as well",
           takeSwitch<&Arguments::all>},
    Option{kSheet, '\0', "columns", "N", "Thumbnails side by side; chosen to fit by default",
           [](Arguments& it, const GivenOption& given) {
             it.columns = numberIn<std::uint32_t>(1, sample::JpegWriter::kLongestSide, given);
           }},
    Option{kSheet, '\0', "size", "PIXELS",
           "The side of a thumbnail's cell, 16 to 512 (128 by default)",
           [](Arguments& it, const GivenOption& given) {
             it.cellSize = numberIn(kSmallestCell, kLargestCell, given);
           }},
    Option{kSample, '\0', "library-version", "V",
           "The catalogue version, 15 to 300 (60 by default)",
           [](Arguments& it, const GivenOption& given) {
             it.sample.libraryVersion =
                 numberIn<std::int32_t>(kOldestSampleVersion, kNewestSampleVersion, given);
           }},
    Option{kSample, '\0', "photos", "N", "How many photos (24 by default)",
           [](Arguments& it, const GivenOption& given) {
             it.sample.photos = numberIn<std::uint32_t>(0, kMostSamplePhotos, given);
           }},
    Option{kSample, '\0', "seed", "S", "Another number, another library (1 by default)",
           [](Arguments& it, const GivenOption& given) {
             using Seed = decltype(it.sample.seed);
             it.sample.seed = numberIn(std::numeric_limits<Seed>::min(),
                                       std::numeric_limits<Seed>::max(), given);
           }},
    Option{kSample, '\0', "no-images", "", "Leave the picture files out",
           [](Arguments& it, const GivenOption& /*given*/) { it.sample.images = false; }},
    Option{kSample, '\0', "byte-order", "ORDER",
           "Of typed-object archives: little (the default) or big",
           [](Arguments& it, const GivenOption& given) {
             it.sample.bigEndianArchives = chosen(kByteOrders, given);
           }},
    Option{kGlobal, '\0', "strict", "", "Answer as the catalogue reader alone does, with its log",
           takeSwitch<&Arguments::strict>},
    Option{kGlobal, '\0', "stay-inside", "", "Follow no path that leads out of the library",
           takeSwitch<&Arguments::stayInside>},
    Option{kGlobal, 'q', "quiet", "", "Say on standard error only what has failed",
           takeSwitch<&Arguments::quiet>},
    Option{kGlobal, 'v', "verbose", "", "Show the library's log, and every line of it",
           takeSwitch<&Arguments::verbose>},
    Option{kGlobal, '\0', "color", "WHEN", "auto (the default: on a terminal), always or never",
           [](Arguments& it, const GivenOption& given) { it.color = chosen(kColors, given); }},
    Option{kGlobal, 'h', "help", "", "Show this help", takeSwitch<&Arguments::help>},
    Option{kGlobal, 'V', "version", "", "Show the version", takeSwitch<&Arguments::version>},
};

// What getopt_long answers for the option at position i, apart from all letters.
constexpr int kFirstCode = 256;
// Its other answers; of the wrong ones, `optopt` then tells which option is meant.
constexpr int kEnd = -1;
constexpr int kWord = 1;
constexpr int kUnknown = '?';
constexpr int kWithoutValue = ':';

constexpr auto kLongOptions = [] {
  std::array<::option, kOptions.size() + 1> table{};
  for (std::size_t i = 0; i < kOptions.size(); ++i) {
    table[i] = {kOptions[i].name.data(),
                kOptions[i].value.empty() ? no_argument : required_argument, nullptr,
                kFirstCode + static_cast<int>(i)};
  }
  return table;
}();

/// The letters as getopt_long wants them: words are told in their place, missing values apart from
/// unknown options.
const std::string& letters() {
  static const std::string text = [] {
    std::string all = "-:";
    for (const Option& option : kOptions) {
      if (option.letter != '\0') {
        all += option.letter;
        all += option.value.empty() ? "" : ":";
      }
    }
    return all;
  }();
  return text;
}

/// The option of a code that getopt_long answers; nullptr for another.
const Option* optionOf(int code) {
  if (code >= kFirstCode) {
    return &kOptions[static_cast<std::size_t>(code - kFirstCode)];
  }
  const auto* found = std::ranges::find_if(kOptions, [=](const Option& option) {
    return option.letter != '\0' && option.letter == code;
  });
  return found == kOptions.end() ? nullptr : found;
}

/// Throws what is wrong with `written`, which names no option, or several.
[[noreturn]] void failWithoutOption(std::string_view written, std::string_view command,
                                    unsigned groups) {
  std::vector<std::string_view> names;
  for (const Option& option : kOptions) {
    if ((option.group & (groups | kGlobal)) != 0) {
      names.push_back(option.name);
    }
  }
  std::string_view name = written;
  name.remove_prefix(std::min(name.find_first_not_of('-'), name.size()));
  name = name.substr(0, name.find('='));
  const bool isLong = written.starts_with("--");
  throw Failure(
      ExitStatus::wrongUse,
      fmt::format("there is no option '{}'{}",
                  isLong ? written.substr(0, written.find('=')) : written,
                  isLong ? didYouMean(name, names, seeHelp(command), "--") : seeHelp(command)));
}

}  // namespace

std::span<const Option> options() { return kOptions; }

std::string seeHelp(std::string_view command) {
  return fmt::format(", see 'mrziphoto {}{}--help'", command, command.empty() ? "" : " ");
}

OptionReader::OptionReader(int argc, const char* const* argv) : _words(argv, argv + argc) {
  for (std::string& word : _words) {
    _argv.push_back(word.data());
  }
  _argv.push_back(nullptr);
  optind = 0;  // begins anew
  opterr = 0;
}

std::optional<OptionReader::Item> OptionReader::next(std::string_view command, unsigned groups) {
  const auto argc = static_cast<int>(_words.size());
  // Where a word holds several letters, getopt_long stays at it.
  const auto at = static_cast<std::size_t>(std::max(optind, 1));
  const int code = _areOptionsOver ? kEnd
                                   : getopt_long(argc, _argv.data(), letters().c_str(),
                                                 kLongOptions.data(), nullptr);
  if (code == kEnd) {
    _areOptionsOver = true;
    return optind < argc ? std::optional(Item{_words[static_cast<std::size_t>(optind++)], {}})
                         : std::nullopt;
  }
  if (code == kWord) {
    return Item{optarg, {}};
  }
  const bool isWrong = code == kUnknown || code == kWithoutValue;
  const Option* const option = optionOf(isWrong ? optopt : code);
  if (code == kWithoutValue) {
    throw Failure(ExitStatus::wrongUse, fmt::format("{} lacks its {}{}", nameOf(*option),
                                                    option->value, seeHelp(command)));
  }
  if (code == kUnknown && option != nullptr) {
    throw Failure(ExitStatus::wrongUse, nameOf(*option) + " takes no value" + seeHelp(command));
  }
  if (code == kUnknown) {
    const std::string& word = _words[at];
    const auto letter = static_cast<char>(optopt);
    const bool isWhole = word.starts_with("--") || word[1] == letter;
    failWithoutOption(isWhole ? word : std::string("-") + letter, command, groups);
  }
  return Item{"", GivenOption{*option, optarg == nullptr ? "" : optarg}};
}

}  // namespace mrziphoto::tool

#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "commands/Session.h"

namespace mrziphoto::tool {

/// The options that a command takes.
enum OptionGroup : unsigned {
  kGlobal = 1,
  kLibrary = 2,
  kFormat = 4,
  kPhotoFilters = 8,
  kFields = 16,
  kOutputFile = 32,
  kSample = 64,
  kAll = 128,
  kSheet = 256,
};

struct Option;

/// An option as the command line gives it.
struct GivenOption {
  const Option& option;
  std::string value;  // empty for a switch
};

struct Option {
  OptionGroup group;
  char letter;  // '\0' for none
  std::string_view name;
  std::string_view value;  // what the help calls it; empty for a switch
  std::string_view help;
  /// Keeps the value. Throws `Failure` for one that does not fit.
  void (*take)(Arguments& arguments, const GivenOption& given);
  /// True for an option without which a command of its group does nothing.
  bool isNeeded = false;
};

/// All options, in the order of the help.
[[nodiscard]] std::span<const Option> options();

/// The end of a sentence about a wrong command line: where help is. `command` may be empty.
[[nodiscard]] std::string seeHelp(std::string_view command);

/// Reads a command line from left to right. Options stand before, between or behind the words;
/// `--` ends them. There is one such reader at a time.
class OptionReader {
 public:
  OptionReader(int argc, const char* const* argv);

  /// What comes next: a word, or an option and its value.
  struct Item {
    std::string word;
    std::optional<GivenOption> option;
  };
  /// The next item; nothing at the end. Throws `Failure` for what is no option, and for an option
  /// without its value; `command`, where it is known, and the groups of options that it takes, are
  /// what the failure hints at.
  std::optional<Item> next(std::string_view command, unsigned groups);

 private:
  std::vector<std::string> _words;
  std::vector<char*> _argv;
  bool _areOptionsOver = false;
};

}  // namespace mrziphoto::tool

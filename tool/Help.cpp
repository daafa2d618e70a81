#include "Help.h"

#include <algorithm>
#include <fmt/format.h>
#include <string_view>
#include <utility>
#include <vector>

#include "output/TerminalText.h"

namespace mrziphoto::tool {
namespace {

constexpr std::size_t kWidth = 80;
constexpr std::string_view kIndent = "  ";
constexpr std::string_view kGap = "  ";

constexpr std::string_view kDescription =
    "Opens an iPhoto library folder and tells what is in it. Nothing is written to the folder.";

constexpr std::string_view kFooter =
    "LIBRARY is a library folder. Without it, that is 'iPhoto Library' in the folder 'Pictures' "
    "of your home folder. 'mrziphoto COMMAND --help' explains a command, with examples.";

constexpr std::string_view kExitStatus =
    "Answers go to standard output, everything else to standard error. Exit status:\n"
    "  0  done\n"
    "  1  the library cannot be opened, or what was named is not there, or cannot\n"
    "     be written\n"
    "  2  the command line is wrong\n"
    "  3  done, but something was missing, repaired or left out\n";

/// A name and its meaning.
using Row = std::pair<std::string, std::string_view>;

std::string paragraph(std::string_view text) {
  std::string result;
  for (const std::string& line : wrapToWidth(text, kWidth)) {
    result += line + '\n';
  }
  return result;
}

/// The rows below a heading, their texts in one column.
std::string section(std::string_view heading, const std::vector<Row>& rows) {
  std::size_t names = 0;
  for (const Row& row : rows) {
    names = std::max(names, row.first.size());
  }
  std::string result = '\n' + std::string(heading) + ":\n";
  const std::size_t column = kIndent.size() + names + kGap.size();
  for (const auto& [name, text] : rows) {
    std::string begin = std::string(kIndent) + name;
    for (const std::string& line : wrapToWidth(text, kWidth - column)) {
      begin.resize(column, ' ');
      result += begin + line + '\n';
      begin.clear();
    }
  }
  return result;
}

Row rowOf(const Option& option) {
  std::string name = option.letter == '\0' ? "    " : std::string("-") + option.letter + ", ";
  name += "--" + std::string(option.name);
  if (!option.value.empty()) {
    name += ' ' + std::string(option.value);
  }
  return {name, option.help};
}

/// The options that pass, below a heading; empty when there are none.
template <class Test>
std::string optionSection(std::string_view heading, Test&& passes) {
  std::vector<Row> rows;
  for (const Option& option : options()) {
    if (passes(option)) {
      rows.push_back(rowOf(option));
    }
  }
  return rows.empty() ? "" : section(heading, rows);
}

std::string globalOptions() {
  return optionSection("Options of every command",
                       [](const Option& option) { return option.group == kGlobal; });
}

}  // namespace

std::string helpText() {
  std::string text = "Usage: mrziphoto COMMAND [LIBRARY] [options]\n\n" + paragraph(kDescription);
  std::vector<Row> rows;
  for (std::size_t i = 0; i < commands().size(); ++i) {
    const Command& command = commands()[i];
    rows.emplace_back(command.name, command.summary);
    if (i + 1 == commands().size() || commands()[i + 1].group != command.group) {
      text += section(command.group, std::exchange(rows, {}));
    }
  }
  return text + globalOptions() + '\n' + paragraph(kFooter) + '\n' + std::string(kExitStatus);
}

std::string helpText(const Command& command) {
  const auto isItsOwn = [&](const Option& option) {
    return option.group != kGlobal && command.takes(option);
  };
  return fmt::format("Usage: mrziphoto {} {} [options]\n\n{}{}{}\nExamples:\n{}\n", command.name,
                     command.words, paragraph(command.summary), optionSection("Options", isItsOwn),
                     globalOptions(), command.examples);
}

}  // namespace mrziphoto::tool

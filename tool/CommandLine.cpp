#include "CommandLine.h"

#include <algorithm>
#include <cstddef>
#include <fmt/format.h>
#include <string>
#include <string_view>
#include <vector>

#include <MRZiPhoto/files/FileManager.h>
#include <MRZiPhoto/values/Log.h>

#include "CommandTable.h"
#include "Help.h"
#include "Options.h"
#include "commands/Commands.h"
#include "commands/Library.h"
#include "output/Failure.h"
#include "output/Messages.h"
#include "output/Wording.h"

namespace mrziphoto::tool {
namespace {

[[noreturn]] void fail(const std::string& sentence) {
  throw Failure(ExitStatus::wrongUse, sentence);
}

/// The command line as it was read, not yet checked as a whole.
struct CommandLine {
  const Command* command = nullptr;
  std::vector<const Option*> given;

  [[nodiscard]] bool has(const Option& option) const {
    return std::ranges::find(given, &option) != given.end();
  }
};

/// Reads all words and options. The first word is the command.
CommandLine readCommandLine(int argc, const char* const* argv, Arguments& arguments) {
  CommandLine line;
  OptionReader reader(argc, argv);
  const auto next = [&] {
    // Before the command is known, any option may be right.
    return line.command != nullptr ? reader.next(line.command->name, line.command->options)
                                   : reader.next("", ~0U);
  };
  while (const auto item = next()) {
    if (!item->option) {
      if (line.command == nullptr) {
        line.command = &commandNamed(item->word);
      } else {
        arguments.words.push_back(item->word);
      }
      continue;
    }
    const Option& option = item->option->option;
    if (line.has(option) && !option.value.empty()) {
      fail(fmt::format("'--{}' stands twice", option.name));
    }
    line.given.push_back(&option);
    option.take(arguments, *item->option);
  }
  return line;
}

/// Throws where the command and its options do not go together.
void expectItsOptions(const CommandLine& line) {
  const Command& command = *line.command;
  for (const Option* option : line.given) {
    if (!command.takes(*option)) {
      fail(fmt::format("'{}' takes no option '--{}'{}", command.name, option->name,
                       seeHelp(command.name)));
    }
  }
  for (const Option& option : options()) {
    if (option.isNeeded && command.takes(option) && !line.has(option)) {
      fail(fmt::format("'{}' needs '--{} {}'{}", command.name, option.name, option.value,
                       seeHelp(command.name)));
    }
  }
}

/// The name of the word at that position among those behind LIBRARY.
std::string_view nameOfWord(const Command& command, std::size_t position) {
  std::string_view rest = command.words;
  constexpr std::string_view kLibraryWord = "[LIBRARY] ";
  if (rest.starts_with(kLibraryWord)) {
    rest.remove_prefix(kLibraryWord.size());
  }
  for (; position > 0; --position) {
    rest.remove_prefix(std::min(rest.find(' ') + 1, rest.size()));
  }
  return rest.substr(0, rest.find(' '));
}

/// Throws for a command line that ends too early. `isLibraryAlone` where its only word was taken
/// for the library.
[[noreturn]] void failWithoutWord(const Command& command, const Arguments& arguments,
                                  bool isLibraryAlone) {
  const std::string library = arguments.library.value_or("");
  if (isLibraryAlone && !FileManager::exists(library)) {
    fail(fmt::format(
        "'{}' is neither a KEY, which is a decimal number, nor a LIBRARY with a KEY behind it{}",
        library, seeHelp(command.name)));
  }
  fail(fmt::format("'{}' lacks its {}{}", command.name, nameOfWord(command, arguments.words.size()),
                   seeHelp(command.name)));
}

/// Sorts the words behind a command into LIBRARY and the others.
void sortWords(const Command& command, Arguments& arguments) {
  std::vector<std::string>& words = arguments.words;
  const bool readsLibrary = (command.options & kLibrary) != 0;
  const bool beginsWithKey = command.fewestWords > 0 && !words.empty() && isKeyText(words.front());
  const bool isFirstTheLibrary =
      readsLibrary && !arguments.library && !words.empty() && !beginsWithKey;
  if (isFirstTheLibrary) {
    arguments.library = words.front();
    words.erase(words.begin());
  }
  if (words.size() < command.fewestWords) {
    failWithoutWord(command, arguments, isFirstTheLibrary && words.empty());
  }
  if (words.size() > command.mostWords) {
    fail(fmt::format("'{}' is one word too many{}", words.at(command.mostWords),
                     seeHelp(command.name)));
  }
  if (readsLibrary && command.fewestWords > 0) {
    expectKeyText(words.front());
  }
  if (arguments.roll) {
    expectKeyText(*arguments.roll);
  }
}

Messages::Loudness loudnessOf(const Arguments& arguments) {
  if (arguments.quiet) {
    return Messages::Loudness::failures;
  }
  return arguments.strict || arguments.verbose ? Messages::Loudness::everything
                                               : Messages::Loudness::usual;
}

}  // namespace

void help(Session& session) {
  const std::vector<std::string>& words = session.arguments.words;
  session.output.text() += words.empty() ? helpText() : helpText(commandNamed(words.front()));
}

void runCommandLine(int argc, const char* const* argv, Session& session) {
  Arguments& arguments = session.arguments;
  const CommandLine line = readCommandLine(argc, argv, arguments);
  if (arguments.help) {
    session.output.text() += line.command == nullptr ? helpText() : helpText(*line.command);
    return;
  }
  if (arguments.version) {
    session.output.text() += "mrziphoto " MRZIPHOTO_VERSION "\n";
    return;
  }
  if (line.command == nullptr) {
    fail("no command is named" + seeHelp(""));
  }
  expectItsOptions(line);
  sortWords(*line.command, arguments);
  session.output.adapt(arguments.color);
  Messages::setLoudness(loudnessOf(arguments));
  setLogSink(Messages::logLine);
  line.command->run(session);
}

}  // namespace mrziphoto::tool

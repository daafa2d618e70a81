#include "CommandLine.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include <MRZiPhoto/platform/Log.h>

#include "Commands.h"
#include "Failure.h"
#include "JpegWriter.h"
#include "Library.h"
#include "Progress.h"
#include "TerminalText.h"

namespace mrziphoto::tool {
namespace {

// The options that a command takes.
enum Option : unsigned {
  kLibrary = 1,
  kFormat = 2,
  kPhotoFilters = 4,
  kFields = 8,
  kOutputFile = 16,
  kSample = 32,
  kAll = 64,
  kSheet = 128,
};

constexpr std::string_view kReading = "Reading a library";
constexpr std::string_view kMore = "More";

struct Command {
  std::string_view name;
  void (*run)(Session& session);
  std::string_view group;
  /// The words behind the name, as the help shows them.
  std::string_view words;
  /// How many of them there are, the library folder apart.
  std::size_t fewestWords;
  std::size_t mostWords;
  unsigned options;
  std::string_view summary;
  std::string_view examples;
};

constexpr std::size_t kManyWords = 1000;
constexpr std::uint32_t kSmallestCell = 16;
constexpr std::uint32_t kLargestCell = 512;

constexpr std::array kCommands{
    Command{"info", info, kReading, "[LIBRARY]", 0, 0, kLibrary | kFormat,
            "Tell which library this is and how much is in it",
            "  mrziphoto info                      about the default library\n"
            "  mrziphoto info ~/Old --format json  the same as JSON, for programs"},
    Command{"photos", photos, kReading, "[LIBRARY]", 0, 0,
            kLibrary | kFormat | kPhotoFilters | kFields, "List the photos",
            "  mrziphoto photos ~/Old --album Holiday\n"
            "  mrziphoto photos ~/Old --keyword Kids --fields key,caption,maker,shutter\n"
            "  mrziphoto photos ~/Old --format jsonl --fields all > photos.jsonl\n"
            "  mrziphoto photos ~/Old --format csv | head\n"
            "\n"
            "  'mrziphoto photo' shows which fields there are. In a table, only a few fields are\n"
            "  shown until --fields asks for more."},
    Command{"rolls", rolls, kReading, "[LIBRARY]", 0, 0, kLibrary | kFormat, "List the film rolls",
            "  mrziphoto rolls ~/Old\n"
            "  mrziphoto photos ~/Old --roll 12    the photos of one of them"},
    Command{"albums", albums, kReading, "[LIBRARY]", 0, 0, kLibrary | kFormat,
            "List the albums, with the keys of their photos",
            "  mrziphoto albums ~/Old --format json"},
    Command{"keywords", keywords, kReading, "[LIBRARY]", 0, 0, kLibrary | kFormat,
            "List the keywords", "  mrziphoto keywords ~/Old --format csv"},
    Command{"photo", photo, kReading, "[LIBRARY] KEY", 1, 1, kLibrary | kFormat,
            "Show everything about one photo",
            "  mrziphoto photo ~/Old 17            photo 17 of that library\n"
            "  mrziphoto photo 17                  photo 17 of the default library"},
    Command{"get", get, kReading, "[LIBRARY] KEY NAME...", 2, kManyWords, kLibrary | kFormat,
            "Show single values of one photo, by their names",
            "  mrziphoto get ~/Old 17 imagePath\n"
            "  mrziphoto get ~/Old 17 cameraMaker shutter imageSize --format json"},
    Command{"thumbnail", thumbnail, kReading, "[LIBRARY] KEY", 1, 1, kLibrary | kOutputFile,
            "Write the thumbnail of one photo as a PNG file",
            "  mrziphoto thumbnail ~/Old 17 -o 17.png"},
    Command{"contact-sheet", contactSheet, kReading, "[LIBRARY]", 0, 0,
            kLibrary | kOutputFile | kPhotoFilters | kSheet,
            "Write the thumbnails of many photos as one JPEG picture",
            "  mrziphoto contact-sheet ~/Old -o all.jpg\n"
            "  mrziphoto contact-sheet ~/Old -o kids.jpg --keyword Kids --columns 6 --size 200"},
    Command{"check", check, kReading, "[LIBRARY]", 0, 0, kLibrary | kFormat | kAll,
            "Look whether the files of all photos are there and can be read",
            "  mrziphoto check ~/Old                  what is wrong, and how many files are right\n"
            "  mrziphoto check ~/Old --all | less     every file that was looked at\n"
            "  mrziphoto check ~/Old --format jsonl   a record for each photo, for programs\n"
            "\n"
            "  The exit status is 1 when a file is missing or cannot be read as an image. Nothing\n"
            "  is decoded. Files in the library's picture folders that no photo names are listed,\n"
            "  too."},
    Command{"dump", dump, kReading, "[LIBRARY]", 0, 0, kLibrary,
            "Show the whole catalogue as its description tells it",
            "  mrziphoto dump ~/Old | less"},
    Command{"watch", watch, kReading, "[LIBRARY]", 0, 0, kLibrary | kFormat,
            "Wait for the library to change, and tell the new counts each time",
            "  mrziphoto watch ~/Old                 one line a change, until Ctrl-C\n"
            "  mrziphoto watch ~/Old --format jsonl  the same for programs"},
    Command{"archive", archive, kMore, "FILE", 1, 1, kFormat,
            "Show what is inside any typed-object archive",
            "  mrziphoto archive ~/Old/Dir.data\n"
            "  mrziphoto archive ~/Old/Albums/Holiday --format json"},
    Command{"sample", sample, kMore, "FOLDER", 1, 1, kSample,
            "Write a made-up library to try things on",
            "  mrziphoto sample /tmp/try --library-version 200\n"
            "  mrziphoto sample /tmp/large --photos 100000 --no-images"},
};
static_assert(std::ranges::adjacent_find(kCommands, {}, &Command::name) == kCommands.end());

constexpr std::string_view kDescription =
    "Opens an iPhoto library folder and tells what is in it. Nothing is written to the folder.";

constexpr std::string_view kFooter =
    "LIBRARY is a library folder. Without it, that is 'iPhoto Library' in the folder 'Pictures' "
    "of\n"
    "your home folder. 'mrziphoto COMMAND --help' explains a command, with examples.\n"
    "\n"
    "Answers go to standard output, everything else to standard error. Exit status:\n"
    "  0  done\n"
    "  1  the library cannot be opened, or what was named is not there, or cannot be written\n"
    "  2  the command line is wrong";

/// The library's log goes to standard error, where a line of the tool's own must be told from it:
/// no line of the log begins as those do, whatever paths and texts of a library stand in it.
void writeLogLine(std::string_view line) {
  std::string text;
  while (!line.empty()) {
    const std::size_t end = std::min(line.find('\n'), line.size());
    const std::string shown = terminalText(line.substr(0, end));
    text += (shown.starts_with("mrziphoto: ") ? " " : "") + shown + '\n';
    line.remove_prefix(std::min(end + 1, line.size()));
  }
  Progress::makeRoom();
  std::fwrite(text.data(), 1, text.size(), stderr);
}

/// Shows the words of a command as the table above spells them.
class HelpFormatter : public CLI::Formatter {
 public:
  explicit HelpFormatter(std::string_view words) : _words(words) { column_width(28); }

  std::string make_usage(const CLI::App* /*app*/, std::string name) const override {
    return "\nUsage: " + name + ' ' + std::string(_words) + " [options]\n";
  }

 private:
  std::string_view _words;
};

/// A command's words as they are parsed. They are taken one by one: a list would take a word in
/// square brackets apart.
struct Words {
  std::string first;
  std::string second;
  std::vector<std::string> others;
};

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

/// An option that takes one of a few words.
template <class T, std::size_t count>
void addChoice(CLI::App& app, const char* name, const char* type,
               const std::array<Choice<T>, count>& choices, T& target, const char* help) {
  std::vector<std::string> words;
  words.reserve(count);
  for (const Choice<T>& choice : choices) {
    words.emplace_back(choice.word);
  }
  const auto choose = [&choices, &target](const std::string& word) {
    target = std::ranges::find(choices, word, &Choice<T>::word)->value;
  };
  app.add_option_function<std::string>(name, choose, help)
      ->option_text(type)
      ->check(CLI::IsMember(words));
}

void addOptions(CLI::App& app, const Command& command, Arguments& arguments) {
  const auto has = [&](Option option) { return (command.options & option) != 0; };
  const auto text = [&](const char* name, const char* type, auto& target, const char* help) {
    return app.add_option(name, target, help)->option_text(type);
  };
  if (has(kLibrary)) {
    text("--library", "FOLDER", arguments.library, "The library folder, if no LIBRARY names it");
  }
  if (has(kFormat)) {
    addChoice(app, "--format", "FORMAT", kFormats, arguments.format,
              "table (the default), json, jsonl or csv");
  }
  if (has(kFields)) {
    text("--fields", "A,B,C", arguments.fields,
         "These fields in this order; 'all' for all of them");
  }
  if (has(kPhotoFilters)) {
    text("--album", "NAME|KEY", arguments.album, "Only the photos of this album, in its order");
    text("--roll", "KEY", arguments.roll, "Only the photos of this film roll, in its order");
    text("--keyword", "TEXT", arguments.keyword, "Only the photos with this keyword");
  }
  if (has(kOutputFile)) {
    text("-o,--output", has(kSheet) ? "FILE.jpg" : "FILE.png", arguments.outputFile,
         "The file to write")
        ->required();
  }
  if (has(kAll)) {
    app.add_flag("--all", arguments.all, "In a table, files with which nothing is wrong as well");
  }
  if (has(kSheet)) {
    text("--columns", "N", arguments.columns, "Thumbnails side by side; chosen to fit by default")
        ->check(CLI::Range(std::uint32_t{1}, std::uint32_t{JpegWriter::kLongestSide}));
    text("--size", "PIXELS", arguments.cellSize,
         "The side of a thumbnail's cell, 16 to 512 (128 by default)")
        ->check(CLI::Range(kSmallestCell, kLargestCell));
  }
  if (has(kSample)) {
    SampleOptions& sample = arguments.sample;
    text("--library-version", "V", sample.libraryVersion,
         "The catalogue version, 15 to 300 (60 by default)")
        ->check(CLI::Range(kOldestSampleVersion, kNewestSampleVersion));
    text("--photos", "N", sample.photos, "How many photos (24 by default)")
        ->check(CLI::Range(std::uint32_t{0}, kMostSamplePhotos));
    text("--seed", "S", sample.seed, "Another number, another library (1 by default)");
    app.add_flag("!--no-images", sample.images, "Leave the picture files out");
    addChoice(app, "--byte-order", "ORDER", kByteOrders, sample.bigEndianArchives,
              "Of typed-object archives: little (the default) or big");
  }
  app.add_flag("-q,--quiet", arguments.quiet, "Drop the log lines of the library");
}

void addWords(CLI::App& app, const Command& command, Words& words) {
  const std::size_t most = command.mostWords + ((command.options & kLibrary) != 0 ? 1 : 0);
  app.add_option("first", words.first)->group("");
  if (most > 1) {
    app.add_option("second", words.second)->group("");
  }
  if (most > 2) {
    app.add_option("others", words.others)->group("");
  }
}

/// Sorts the words of a command into LIBRARY and the others.
void takeWords(const CLI::App& app, const Command& command, Words& words, Arguments& arguments) {
  std::vector<std::string>& all = arguments.words;
  for (const auto& [name, word] : {std::pair{"first", &words.first}, {"second", &words.second}}) {
    const CLI::Option* option = app.get_option_no_throw(name);
    if (option != nullptr && !option->empty()) {
      all.push_back(*word);
    }
  }
  std::ranges::move(words.others, std::back_inserter(all));

  const bool takesLibrary = (command.options & kLibrary) != 0 && !arguments.library;
  const bool beginsWithKey = command.fewestWords > 0 && !all.empty() && isKeyText(all.front());
  if (takesLibrary && !all.empty() && !beginsWithKey) {
    arguments.library = all.front();
    all.erase(all.begin());
  }
  const std::string see = ", see 'mrziphoto " + std::string(command.name) + " --help'";
  if (all.size() < command.fewestWords) {
    throw Failure(ExitStatus::wrongUse, "the command takes " + std::string(command.words) + see);
  }
  if (all.size() > command.mostWords) {
    throw Failure(ExitStatus::wrongUse,
                  "'" + all.at(command.mostWords) + "' is one word too many" + see);
  }
  if ((command.options & kLibrary) != 0 && command.fewestWords > 0) {
    expectKeyText(all.front());
  }
  if (arguments.roll) {
    expectKeyText(*arguments.roll);
  }
}

/// What is wrong with a command line that names no command of ours.
[[noreturn]] void failWithoutCommand(int argc, const char* const* argv) {
  const std::string what = argc < 2 ? std::string("no command is named")
                                    : "there is no command '" + std::string(argv[1]) + '\'';
  throw Failure(ExitStatus::wrongUse, what + ", see 'mrziphoto --help'");
}

std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

}  // namespace

void runCommandLine(int argc, const char* const* argv, Session& session) {
  CLI::App app(std::string(kDescription), "mrziphoto");
  app.footer(std::string(kFooter));
  app.formatter(std::make_shared<HelpFormatter>("COMMAND [LIBRARY]"));
  app.set_help_flag("-h,--help", "Show this help");
  app.set_version_flag("--version", "mrziphoto " MRZIPHOTO_VERSION, "Show the version");
  app.require_subcommand(1);

  Words words;
  for (const Command& command : kCommands) {
    CLI::App* sub = app.add_subcommand(std::string(command.name), std::string(command.summary));
    sub->group(std::string(command.group));
    sub->formatter(std::make_shared<HelpFormatter>(command.words));
    sub->footer("Examples:\n" + std::string(command.examples));
    addOptions(*sub, command, session.arguments);
    addWords(*sub, command, words);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    session.output.text() += app.help();
    return;
  } catch (const CLI::CallForVersion& version) {
    session.output.text() += version.what() + std::string("\n");
    return;
  } catch (const CLI::ParseError& error) {
    if (app.get_subcommands().empty()) {
      failWithoutCommand(argc, argv);
    }
    throw Failure(ExitStatus::wrongUse, firstLine(error.what()));
  }
  const CLI::App* chosen = app.get_subcommands().front();
  const auto* command = std::ranges::find(kCommands, chosen->get_name(), &Command::name);
  takeWords(*chosen, *command, words, session.arguments);
  setLogSink(session.arguments.quiet ? LogSink() : writeLogLine);
  command->run(session);
}

}  // namespace mrziphoto::tool

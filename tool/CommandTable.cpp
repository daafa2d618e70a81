#include "CommandTable.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

#include "commands/Commands.h"
#include "output/Failure.h"
#include "output/Wording.h"

namespace mrziphoto::tool {
namespace {

constexpr std::string_view kReading = "Reading a library";
constexpr std::string_view kMore = "More";

constexpr std::size_t kManyWords = 1000;

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
            "  'mrziphoto photo' shows which fields there are. In a table, only a few\n"
            "  fields are shown until --fields asks for more."},
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
    Command{"thumbnail", thumbnail, kReading, "[LIBRARY] KEY -o FILE", 1, 1, kLibrary | kOutputFile,
            "Write the thumbnail of one photo as a PNG file",
            "  mrziphoto thumbnail ~/Old 17 -o 17.png"},
    Command{"contact-sheet", contactSheet, kReading, "[LIBRARY] -o FILE", 0, 0,
            kLibrary | kOutputFile | kPhotoFilters | kSheet,
            "Write the thumbnails of many photos as one JPEG picture",
            "  mrziphoto contact-sheet ~/Old -o all.jpg\n"
            "  mrziphoto contact-sheet ~/Old -o kids.jpg --keyword Kids --columns 6"},
    Command{"check", check, kReading, "[LIBRARY]", 0, 0, kLibrary | kFormat | kAll,
            "Look whether the files of all photos are there and can be read",
            "  mrziphoto check ~/Old                 what is wrong, and how much is right\n"
            "  mrziphoto check ~/Old --all | less    every file that was looked at\n"
            "  mrziphoto check ~/Old --format jsonl  a record for each photo, for programs\n"
            "\n"
            "  The exit status is 1 when a file is missing or cannot be read as an image.\n"
            "  Nothing is decoded. Files in the library's picture folders that no photo names\n"
            "  are listed, too."},
    Command{"dump", dump, kReading, "[LIBRARY]", 0, 0, kLibrary,
            "Show the whole catalogue as its description tells it",
            "  mrziphoto dump ~/Old | less"},
    Command{"watch", watch, kReading, "[LIBRARY]", 0, 0, kLibrary | kFormat,
            "Wait for the library to change, and tell the new counts",
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
    Command{"help", help, kMore, "[COMMAND]", 0, 1, 0, "Explain a command, or all of it",
            "  mrziphoto help photos"},
};
static_assert(std::ranges::adjacent_find(kCommands, {}, &Command::name) == kCommands.end());

}  // namespace

std::span<const Command> commands() { return kCommands; }

const Command& commandNamed(std::string_view name) {
  const auto* found = std::ranges::find(kCommands, name, &Command::name);
  if (found == kCommands.end()) {
    std::array<std::string_view, kCommands.size()> names;
    std::ranges::transform(kCommands, names.begin(), &Command::name);
    throw Failure(ExitStatus::wrongUse, fmt::format("there is no command '{}'{}", name,
                                                    didYouMean(name, names, seeHelp(""))));
  }
  return *found;
}

}  // namespace mrziphoto::tool

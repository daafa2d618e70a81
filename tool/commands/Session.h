#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <MRZiPhoto/database/TVQiPhotoDatabase.h>
#include <MRZiPhoto/files/FileFailure.h>

#include "../output/Output.h"
#include "../output/RecordWriter.h"
#include "sample/SampleLibrary.h"

namespace mrziphoto::tool {

/// What the command line says, behind the name of the command.
struct Arguments {
  /// The library folder as it was named; nothing for the default library.
  std::optional<std::string> library;
  /// The other words, in order: KEY, NAME..., FILE, FOLDER.
  std::vector<std::string> words;
  Format format = Format::table;
  /// What `--fields` says, with commas.
  std::optional<std::string> fields;
  std::optional<std::string> album;
  std::optional<std::string> roll;
  std::optional<std::string> keyword;
  std::string outputFile;
  /// Rows for all that was looked at, not only for what is wrong.
  bool all = false;
  /// Columns of a contact sheet, and the pixels of a cell's side.
  std::optional<std::uint32_t> columns;
  std::uint32_t cellSize = 128;
  /// Answer what the catalogue reader alone answers, and show all that it logs: no notices, no
  /// status for them.
  bool strict = false;
  /// Follow no path that leads out of the library.
  bool stayInside = false;
  bool quiet = false;
  bool verbose = false;
  Color color = Color::automatic;
  /// Asked for instead of an answer.
  bool help = false;
  bool version = false;
  /// All but the folder, which is the first word.
  SampleOptions sample;
};

/// One run of the tool.
struct Session {
  Arguments arguments;
  Output output;
  /// The library, once a command has opened it: it stays open for as long as the session lasts.
  Ref<TVQiPhotoDatabase> database;
  /// What the command itself found, beside the library's own notices.
  std::vector<Notice> notices;
  /// The sentences of the notices that were told.
  std::set<std::string> toldSentences;
};

}  // namespace mrziphoto::tool

#pragma once

#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Testing.h"

namespace mrziphoto {

struct ToolResult {
  int status = -1;
  std::string out;
  std::string err;
};

/// A word that the shell takes as it is.
inline std::string quoted(const std::string& word) {
  return "'" + replaced(word, "'", "'\\''") + "' ";
}

/// Runs the command line tool with words of the shell's, where $L is a folder. `destination` says
/// where its standard output goes instead of into the result, likewise: ">/dev/full", "| true".
inline ToolResult runLine(const std::string& line, const std::string& folder,
                          const std::string& destination = "") {
  const TemporaryFolder results;
  // The status goes into a file, since that of a pipe is its last program's.
  const std::string command = "L=" + quoted(folder) + "; { " + quoted(MRZIPHOTO_TOOL) + line +
                              "; echo $? >" + quoted(results / "status") + "; } 2>" +
                              quoted(results / "err") +
                              (destination.empty() ? ">" + quoted(results / "out") : destination);
  if (std::system(command.c_str()) == -1) {
    return {};
  }
  return {std::atoi(fileBytes(results / "status").c_str()), fileBytes(results / "out"),
          fileBytes(results / "err")};
}

/// Runs it with these arguments.
inline ToolResult runTool(const Texts& arguments, const std::string& destination = "") {
  std::string line;
  for (const std::string& argument : arguments) {
    line += quoted(argument);
  }
  return runLine(line, "", destination);
}

/// What the tool writes to a terminal of so many columns, standard error included.
inline std::string runToolInTerminal(const Texts& arguments, unsigned short columns) {
  Texts words{MRZIPHOTO_TOOL};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  const winsize size{.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
  int terminal = -1;
  const pid_t process = forkpty(&terminal, nullptr, nullptr, &size);
  if (process == 0) {
    execv(MRZIPHOTO_TOOL, argv.data());
    _exit(127);
  }
  std::string out;
  std::array<char, 4096> piece{};
  for (ssize_t count = 0; (count = read(terminal, piece.data(), piece.size())) > 0;) {
    out.append(piece.data(), static_cast<std::size_t>(count));
  }
  close(terminal);
  waitpid(process, nullptr, 0);
  return out;
}

}  // namespace mrziphoto

#pragma once

#include <array>
#include <cstdlib>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "TemporaryFolder.h"

namespace mrziphoto {

struct ToolResult {
  int status = -1;
  std::string out;
  std::string err;
};

/// Runs the command line tool in a shell. `destination` says where its standard output goes instead
/// of into the result, in the shell's words: ">/dev/full", "| true".
inline ToolResult runTool(const std::vector<std::string>& arguments,
                          const std::string& destination = "") {
  const auto quoted = [](const std::string& word) {
    std::string result = "'";
    for (const char c : word) {
      result += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return result + "' ";
  };
  const TemporaryFolder folder;
  std::string command = "{ " + quoted(MRZIPHOTO_TOOL);
  for (const std::string& argument : arguments) {
    command += quoted(argument);
  }
  // The status goes into a file, since that of a pipe is its last program's.
  command += "; echo $? >" + quoted(folder / "status") + "; } 2>" + quoted(folder / "err") +
             (destination.empty() ? ">" + quoted(folder / "out") : destination);
  if (std::system(command.c_str()) == -1) {
    return {};
  }
  return {std::atoi(fileBytes(folder / "status").c_str()), fileBytes(folder / "out"),
          fileBytes(folder / "err")};
}

/// What the tool writes to a terminal of so many columns, standard error included.
inline std::string runToolInTerminal(const std::vector<std::string>& arguments,
                                     unsigned short columns) {
  std::vector<std::string> words{MRZIPHOTO_TOOL};
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

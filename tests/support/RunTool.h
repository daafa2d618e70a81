#pragma once

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/wait.h>
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
  const auto contents = [](const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
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
  return {std::atoi(contents(folder / "status").c_str()), contents(folder / "out"),
          contents(folder / "err")};
}

}  // namespace mrziphoto

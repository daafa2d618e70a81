#include "Output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>

#include "Failure.h"
#include "Progress.h"
#include "TerminalText.h"

namespace mrziphoto::tool {

Output::Output() { _text.reserve(2 * kPiece); }

void Output::flush() {
  std::string_view rest = _text;
  if (isTerminal()) {
    Progress::makeRoom();
  }
  while (!rest.empty()) {
    const ssize_t written = ::write(STDOUT_FILENO, rest.data(), rest.size());
    if (written >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EPIPE) {
      throw ClosedPipe();
    } else if (errno != EINTR) {
      throw Failure(ExitStatus::notThere,
                    std::string("standard output cannot be written: ") + std::strerror(errno));
    }
  }
  _text.clear();
}

bool Output::isTerminal() { return ::isatty(STDOUT_FILENO) == 1; }

bool Output::errorIsTerminal() { return ::isatty(STDERR_FILENO) == 1; }

void Output::complain(std::string_view sentence) {
  Progress::makeRoom();
  const std::string line = "mrziphoto: " + terminalText(sentence) + '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace mrziphoto::tool

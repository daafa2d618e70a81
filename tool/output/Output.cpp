#include "Output.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/ioctl.h>
#include <unistd.h>

#include "Failure.h"
#include "Progress.h"

namespace mrziphoto::tool {
namespace {

constexpr std::string_view kBold = "\033[1m";
constexpr std::string_view kPlain = "\033[0m";

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

/// What the user's environment says of colours.
bool areColorsWelcome() { return environment("NO_COLOR").empty() && environment("TERM") != "dumb"; }

}  // namespace

Terminal Terminal::at(int descriptor) {
  Terminal terminal{.isThere = ::isatty(descriptor) == 1};
  winsize size{};
  if (terminal.isThere && ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
    terminal.width = size.ws_col;
  }
  return terminal;
}

Output::Output() { _text.reserve(2 * kPiece); }

void Output::adapt(Color color) {
  _terminal = Terminal::at(STDOUT_FILENO);
  _isColored = color == Color::always ||
               (color == Color::automatic && _terminal.isThere && areColorsWelcome());
}

std::string Output::heading(const std::string& text) const {
  return _isColored ? std::string(kBold) + text + std::string(kPlain) : text;
}

void Output::flush() {
  std::string_view rest = _text;
  if (_terminal.isThere) {
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

}  // namespace mrziphoto::tool

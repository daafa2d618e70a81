#include "Progress.h"

#include <cstdio>

#include "Output.h"
#include "TerminalText.h"

namespace mrziphoto::tool {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 1s;
constexpr auto kInterval = 200ms;
constexpr std::string_view kEraseLine = "\r\033[K";

void write(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

}  // namespace

Progress::Progress(std::string_view what)
    : _what(what),
      _isWatched(Output::errorIsTerminal()),
      _nextTime(_isWatched ? Clock::now() + kPatience : Clock::time_point()) {}

Progress::~Progress() {
  if (_isShown) {
    write(kEraseLine);
  }
}

void Progress::show(std::size_t done, std::size_t total) {
  if (!_isWatched || total == 0) {
    return;
  }
  const Clock::time_point now = Clock::now();
  if (now >= _nextTime) {
    _nextTime = now + kInterval;
    _isShown = true;
    write(std::string(kEraseLine) + _what + " ... " + std::to_string(done * 100 / total) + " %");
  }
}

void Progress::note(const std::string& line) { write(terminalText(line) + '\n'); }

}  // namespace mrziphoto::tool

#include "Progress.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <fmt/format.h>
#include <unistd.h>

#include "Messages.h"
#include "Output.h"
#include "TerminalText.h"

namespace mrziphoto::tool {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 1s;
constexpr auto kInterval = 200ms;
constexpr std::string_view kEraseLine = "\r\033[K";
constexpr std::size_t kLongestBar = 30;
constexpr std::size_t kShortestBar = 5;

// There is one terminal, and lines of the log come from any thread.
std::atomic<bool> isLineShown = false;

void write(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

/// "42 s", "7 min" or "3 h".
std::string roughTime(double seconds) {
  struct Unit {
    double seconds;
    const char* name;
  };
  constexpr std::array kUnits{Unit{3600, " h"}, Unit{60, " min"}, Unit{1, " s"}};
  const auto* const unit =
      std::ranges::find_if(kUnits.begin(), kUnits.end() - 1,
                           [=](const Unit& each) { return seconds >= 2 * each.seconds; });
  // A time left of several hundred years is as good as any other.
  const double count = std::min(seconds / unit->seconds, 1e6);
  return std::to_string(std::lround(count)) + unit->name;
}

}  // namespace

std::string progressLine(std::string_view what, std::size_t done, std::size_t total,
                         std::chrono::duration<double> elapsed, std::size_t width) {
  const double rate = static_cast<double>(done) / std::max(elapsed.count(), 1e-9);
  const std::string speed = fmt::format("{} a second", static_cast<std::size_t>(rate));
  if (total == 0) {
    return cutToWidth(fmt::format("{}  {}  {}", what, done, speed), width);
  }
  const double left = static_cast<double>(total - std::min(done, total)) / rate;
  const std::string numbers = fmt::format("{} %  {} of {}  {}  {} left", done * 100 / total, done,
                                          total, speed, roughTime(left));
  std::string line = std::string(what) + "  ";
  const std::size_t used = displayWidth(line) + 4 + numbers.size();
  const std::size_t bar = std::min(width - std::min(width, used), kLongestBar);
  if (bar >= kShortestBar) {
    const std::size_t full = std::min(bar * done / total, bar);
    line += fmt::format("[{:#<{}}{:.<{}}]  ", "", full, "", bar - full);
  }
  return cutToWidth(line + numbers, width);
}

Progress::Progress(std::string_view what)
    : _what(what),
      _isWatched(Messages::loudness() != Messages::Loudness::failures &&
                 Terminal::at(STDERR_FILENO).isThere),
      _begin(_isWatched ? Clock::now() : Clock::time_point()),
      _nextTime(_begin + kPatience) {}

Progress::~Progress() { makeRoom(); }

void Progress::show(std::size_t done, std::size_t total) {
  if (!_isWatched || done == 0) {
    return;
  }
  const Clock::time_point now = Clock::now();
  if (now >= _nextTime) {
    _nextTime = now + kInterval;
    isLineShown = true;
    // A line that fills the terminal to its edge would move on to the next.
    write(std::string(kEraseLine) +
          progressLine(_what, done, total, now - _begin, Terminal::at(STDERR_FILENO).width - 1));
  }
}

void Progress::makeRoom() {
  if (isLineShown.exchange(false)) {
    write(kEraseLine);
  }
}

void Progress::note(const std::string& line) {
  makeRoom();
  write(terminalText(line) + '\n');
}

}  // namespace mrziphoto::tool

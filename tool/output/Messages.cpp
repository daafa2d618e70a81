#include "Messages.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <fmt/format.h>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "Progress.h"
#include "TerminalText.h"

namespace mrziphoto::tool {
namespace {

constexpr std::string_view kMark = "mrziphoto: ";
constexpr std::size_t kMostLinesOfAKind = 10;

std::atomic<Messages::Loudness> currentLoudness = Messages::Loudness::usual;

struct Counts {
  std::mutex mutex;
  std::map<std::string_view, std::size_t> linesOfKind;
};

Counts& counts() {
  static Counts instance;
  return instance;
}

void write(const std::string& lines) {
  Progress::makeRoom();
  std::fwrite(lines.data(), 1, lines.size(), stderr);
}

void say(std::string_view sentence) { write(std::string(kMark) + terminalText(sentence) + '\n'); }

/// Counts one more line of the kind; true while there are few.
bool isAmongFew(std::string_view kind) {
  const std::lock_guard lock(counts().mutex);
  return ++counts().linesOfKind[kind] <= kMostLinesOfAKind ||
         currentLoudness == Messages::Loudness::everything;
}

}  // namespace

void Messages::setLoudness(Loudness loudness) { currentLoudness = loudness; }

Messages::Loudness Messages::loudness() { return currentLoudness; }

void Messages::fail(std::string_view sentence) {
  countLeftOut();
  say(sentence);
}

void Messages::complain(std::string_view kind, std::string_view sentence) {
  if (isAmongFew(kind)) {
    say(sentence);
  }
}

void Messages::notice(std::string_view kind, std::string_view sentence) {
  if (currentLoudness != Loudness::failures) {
    complain(kind, sentence);
  }
}

/// A line of the tool's own must be told from one of the log: no line of the log begins as those
/// do, whatever paths and texts of a library stand in it.
void Messages::logLine(std::string_view line) {
  if (currentLoudness != Loudness::everything) {
    return;
  }
  std::string lines;
  while (!line.empty()) {
    const std::size_t end = std::min(line.find('\n'), line.size());
    const std::string shown = terminalText(line.substr(0, end));
    lines += (shown.starts_with(kMark) ? " " : "") + shown + '\n';
    line.remove_prefix(std::min(end + 1, line.size()));
  }
  write(lines);
}

void Messages::countLeftOut() {
  std::map<std::string_view, std::size_t> lines;
  {
    const std::lock_guard lock(counts().mutex);
    lines = std::exchange(counts().linesOfKind, {});
  }
  if (currentLoudness == Loudness::everything) {
    return;
  }
  for (const auto& [kind, count] : lines) {
    if (count > kMostLinesOfAKind) {
      const std::size_t leftOut = count - kMostLinesOfAKind;
      say(fmt::format("{} more {} like these ({}), which --verbose shows", leftOut,
                      leftOut == 1 ? "line" : "lines", kind));
    }
  }
}

}  // namespace mrziphoto::tool

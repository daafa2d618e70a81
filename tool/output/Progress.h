#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace mrziphoto::tool {

/// One line of `width` columns at most: what is being done, a bar, how much of it is done, how much
/// is done in a second, and the time left at that rate; where `total` is 0, how much is done and
/// how much in a second. `done` is not 0.
[[nodiscard]] std::string progressLine(std::string_view what, std::size_t done, std::size_t total,
                                       std::chrono::duration<double> elapsed, std::size_t width);

/// Tells a person who looks at standard error how far long work has come; silent during the first
/// second, and where standard error is no terminal.
class Progress {
 public:
  /// `what` is being done, for example "Writing".
  explicit Progress(std::string_view what);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  /// Takes the line away again.
  ~Progress();

  /// To be called often; `total` is 0 where it is not known.
  void show(std::size_t done, std::size_t total = 0);

  /// Removes the line until it is shown next. To be called before writing to the terminal.
  static void makeRoom();
  /// A line of its own.
  static void note(const std::string& line);

 private:
  using Clock = std::chrono::steady_clock;

  std::string _what;
  bool _isWatched;
  Clock::time_point _begin;
  Clock::time_point _nextTime;
};

}  // namespace mrziphoto::tool

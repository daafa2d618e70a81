#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace mrziphoto::tool {

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

  /// To be called often.
  void show(std::size_t done, std::size_t total);

  /// A line of its own.
  static void note(const std::string& line);

 private:
  using Clock = std::chrono::steady_clock;

  std::string _what;
  bool _isWatched;
  bool _isShown = false;
  Clock::time_point _nextTime;
};

}  // namespace mrziphoto::tool

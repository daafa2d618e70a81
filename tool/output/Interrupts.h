#pragma once

#include <csignal>

namespace mrziphoto::tool {

// Removes half-written files when a signal ends the program.

/// While it lives, a signal that ends the program removes a file first. There is one at a time.
class RemovedWhenEnded {
 public:
  /// Ignores a path that is longer than the system allows.
  explicit RemovedWhenEnded(const char* path);
  RemovedWhenEnded(const RemovedWhenEnded&) = delete;
  RemovedWhenEnded& operator=(const RemovedWhenEnded&) = delete;
  ~RemovedWhenEnded();
};

/// While it lives, signals wait that can.
class SignalsWait {
 public:
  SignalsWait();
  SignalsWait(const SignalsWait&) = delete;
  SignalsWait& operator=(const SignalsWait&) = delete;
  ~SignalsWait();

 private:
  sigset_t _before{};
};

/// While it lives, signals that ask the program to end are noted only, so that work can be undone.
class NotedSignals {
 public:
  NotedSignals();
  NotedSignals(const NotedSignals&) = delete;
  NotedSignals& operator=(const NotedSignals&) = delete;
  ~NotedSignals();

  /// The signal that came; 0 for none.
  [[nodiscard]] static int noted();
};

/// Ends the program by a signal, as if nobody had handled it.
[[noreturn]] void endBySignal(int signal);

}  // namespace mrziphoto::tool

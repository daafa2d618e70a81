#include "Interrupts.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <unistd.h>
#include <vector>

namespace mrziphoto::tool {
namespace {

// Signals by which others ask a program to end. The system's real-time signals come on top.
constexpr std::array kRequests{SIGHUP,  SIGINT,  SIGQUIT,   SIGUSR1, SIGUSR2, SIGALRM,
                               SIGTERM, SIGXCPU, SIGVTALRM, SIGPROF, SIGIO,   SIGPWR};
// Signals that end a program for what it did.
constexpr std::array kFaults{SIGILL, SIGTRAP, SIGABRT, SIGBUS, SIGFPE, SIGSEGV, SIGSYS, SIGSTKFLT};

struct Replaced {
  int signal;
  struct sigaction before;
};

// All that the handlers use.
std::array<char, 4096> pathToRemove{};
volatile std::sig_atomic_t signalNoted = 0;

std::vector<Replaced>& replaced() {
  static std::vector<Replaced> list;
  return list;
}

/// Handles a signal unless somebody else does, or whoever started the program wants it ignored.
void handle(int signal, void (*handler)(int), int flags) {
  struct sigaction before {};
  if (sigaction(signal, nullptr, &before) != 0 || before.sa_handler != SIG_DFL) {
    return;
  }
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = flags;
  sigfillset(&action.sa_mask);
  if (sigaction(signal, &action, nullptr) == 0) {
    replaced().push_back({signal, before});
  }
}

void handleRequests(void (*handler)(int), int flags) {
  for (const int signal : kRequests) {
    handle(signal, handler, flags);
  }
  for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal) {
    handle(signal, handler, flags);
  }
}

void restore() {
  for (const Replaced& each : replaced()) {
    sigaction(each.signal, &each.before, nullptr);
  }
  replaced().clear();
}

// The signal is blocked meanwhile, and comes once this has returned.
void removeAndEnd(int signal) {
  unlink(pathToRemove.data());
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void note(int signal) { signalNoted = signal; }

}  // namespace

RemovedWhenEnded::RemovedWhenEnded(const char* path) {
  const std::size_t size = std::strlen(path);
  if (size >= pathToRemove.size()) {
    return;
  }
  std::memcpy(pathToRemove.data(), path, size + 1);
  handleRequests(removeAndEnd, 0);
  for (const int signal : kFaults) {
    handle(signal, removeAndEnd, 0);
  }
}

RemovedWhenEnded::~RemovedWhenEnded() {
  restore();
  pathToRemove.fill('\0');
}

SignalsWait::SignalsWait() {
  sigset_t all{};
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, &_before);
}

SignalsWait::~SignalsWait() { sigprocmask(SIG_SETMASK, &_before, nullptr); }

NotedSignals::NotedSignals() {
  signalNoted = 0;
  handleRequests(note, SA_RESTART);
}

NotedSignals::~NotedSignals() { restore(); }

int NotedSignals::noted() { return signalNoted; }

void endBySignal(int signal) {
  std::signal(signal, SIG_DFL);
  std::raise(signal);
  std::_Exit(EXIT_FAILURE);
}

}  // namespace mrziphoto::tool

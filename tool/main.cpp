#include <array>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <new>
#include <unistd.h>

#include "CommandLine.h"
#include "commands/Notices.h"
#include "commands/Session.h"
#include "output/Failure.h"
#include "output/Messages.h"
#include "output/Output.h"

#if defined(__SANITIZE_ADDRESS__)
#define MRZIPHOTO_LEAVES_AT_ONCE 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MRZIPHOTO_LEAVES_AT_ONCE 0
#endif
#endif
#ifndef MRZIPHOTO_LEAVES_AT_ONCE
#define MRZIPHOTO_LEAVES_AT_ONCE 1
#endif

namespace {

using namespace mrziphoto::tool;

/// Files must not be opened in the place of a standard stream that the caller has closed. What
/// stands in for it can neither be read nor written.
void occupyStandardStreams() {
  for (const int descriptor : std::array{STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(descriptor, F_GETFD) == -1) {
      static_cast<void>(::open("/", O_PATH));
    }
  }
}

ExitStatus run(int argc, const char* const* argv, Session& session) {
  try {
    runCommandLine(argc, argv, session);
    session.output.flush();
    const bool isIncomplete = tellNotices(session);
    Messages::countLeftOut();
    return isIncomplete ? ExitStatus::incomplete : ExitStatus::done;
  } catch (const ClosedPipe&) {
    return ExitStatus::done;
  } catch (const Failure& failure) {
    tellNotices(session);
    Messages::fail(failure.what());
    return failure.status();
  } catch (const std::bad_alloc&) {
    Messages::fail("there is not enough memory");
  } catch (const std::exception& error) {
    Messages::fail(error.what());
  }
  return ExitStatus::notThere;
}

}  // namespace

int main(int argc, char** argv) {
  occupyStandardStreams();
  // A closed pipe is then told by the failing write, and so is a file that may grow no further.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  Session session;
  const auto status = static_cast<int>(run(argc, argv, session));
#if MRZIPHOTO_LEAVES_AT_ONCE
  // Freeing a million records would only cost time.
  std::_Exit(status);
#endif
  return status;
}

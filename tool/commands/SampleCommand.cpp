#include <stdexcept>

#include "../output/Failure.h"
#include "../output/Interrupts.h"
#include "../output/Progress.h"
#include "Commands.h"

namespace mrziphoto::tool {
namespace {

struct Ended {
  int signal;
};

}  // namespace

void sample(Session& session) {
  const Arguments& arguments = session.arguments;
  try {
    const NotedSignals signals;
    Progress progress("Writing");
    SampleOptions options = arguments.sample;
    options.folder = arguments.words.front();
    options.progress = [&](std::uint32_t done, std::uint32_t total) {
      progress.show(done, total);
      if (const int signal = NotedSignals::noted(); signal != 0) {
        throw Ended{signal};
      }
    };
    writeSampleLibrary(options);
  } catch (const Ended& ended) {
    endBySignal(ended.signal);
  } catch (const std::runtime_error& error) {
    throw Failure(ExitStatus::notThere, error.what());
  }
}

}  // namespace mrziphoto::tool

#include <stdexcept>

#include "Commands.h"
#include "Failure.h"
#include "Progress.h"

namespace mrziphoto::tool {

void sample(Session& session) {
  const Arguments& arguments = session.arguments;
  Progress progress("Writing");
  SampleOptions options = arguments.sample;
  options.folder = arguments.words.front();
  options.progress = [&](std::uint32_t done, std::uint32_t total) { progress.show(done, total); };
  try {
    writeSampleLibrary(options);
  } catch (const std::runtime_error& error) {
    throw Failure(ExitStatus::notThere, error.what());
  }
}

}  // namespace mrziphoto::tool

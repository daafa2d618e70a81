#include "Log.h"

#include <cstdio>
#include <mutex>

namespace mrziphoto {
namespace {

void writeToStandardError(std::string_view line) {
  std::string text(line);
  text += '\n';
  std::fwrite(text.data(), 1, text.size(), stderr);
}

struct SharedSink {
  std::mutex mutex;
  LogSink sink = writeToStandardError;
};

SharedSink& shared() {
  static SharedSink instance;
  return instance;
}

}  // namespace

LogSink setLogSink(LogSink sink) {
  const std::lock_guard lock(shared().mutex);
  return std::exchange(shared().sink, std::move(sink));
}

void logLine(std::string_view line) {
  LogSink sink;
  {
    const std::lock_guard lock(shared().mutex);
    sink = shared().sink;
  }
  if (sink) {
    sink(line);
  }
}

}  // namespace mrziphoto

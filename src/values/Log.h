#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "Export.h"
#include "Format.h"

namespace mrziphoto {

/// Where log lines go.
using LogSink = std::function<void(std::string_view line)>;

/// Sends the lines of the log to `sink` from now on; an empty sink drops them. Without a sink of
/// the host's they go to standard error. Answers the sink that was set before.
MRZIPHOTO_EXPORT LogSink setLogSink(LogSink sink);

/// Writes one line, as it is, to the log.
MRZIPHOTO_EXPORT void logLine(std::string_view line);

/// Writes one line to the log, formatted as `stringWithFormat` does.
template <class... Arguments>
void log(std::string_view text, const Arguments&... arguments) {
  logLine(stringWithFormat(text, arguments...));
}

}  // namespace mrziphoto

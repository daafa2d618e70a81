#pragma once

#include <string>
#include <vector>

#include <MRZiPhoto/values/Log.h>

namespace mrziphoto {

/// Keeps the lines of the log from the time it is made until it goes.
class CollectedLog {
 public:
  CollectedLog()
      : _before(setLogSink([this](std::string_view line) { _lines.emplace_back(line); })) {}
  ~CollectedLog() { setLogSink(_before); }
  CollectedLog(const CollectedLog&) = delete;
  CollectedLog& operator=(const CollectedLog&) = delete;

  [[nodiscard]] const std::vector<std::string>& lines() const { return _lines; }

 private:
  std::vector<std::string> _lines;
  LogSink _before;
};

}  // namespace mrziphoto

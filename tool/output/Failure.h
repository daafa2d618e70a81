#pragma once

#include <stdexcept>
#include <string>

namespace mrziphoto::tool {

/// What the command line answers to the shell. `incomplete`: done, but something of the library was
/// missing, repaired or left out, which standard error tells.
enum class ExitStatus { done = 0, notThere = 1, wrongUse = 2, incomplete = 3 };

/// A failure that ends the command: one sentence, which names the path or key in question, for
/// standard error.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& sentence)
      : std::runtime_error(sentence), _status(status) {}

  [[nodiscard]] ExitStatus status() const { return _status; }

 private:
  ExitStatus _status;
};

}  // namespace mrziphoto::tool

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mrziphoto::tool {

/// Thrown when nobody reads standard output any more: the command then ends quietly.
class ClosedPipe {};

/// Standard output, written in large pieces.
class Output {
 public:
  Output();

  /// What is not written yet; to be appended to.
  [[nodiscard]] std::string& text() { return _text; }
  /// Writes the text out when a large piece has come together.
  void flushIfLarge() {
    if (_text.size() >= kPiece) {
      flush();
    }
  }
  /// Writes the text out. Throws `Failure` when standard output cannot be written, `ClosedPipe`
  /// when it is a pipe that nobody reads.
  void flush();

  /// True when a person looks at standard output, or at standard error.
  static bool isTerminal();
  static bool errorIsTerminal();
  /// Writes "mrziphoto: " and the sentence to standard error.
  static void complain(std::string_view sentence);

 private:
  static constexpr std::size_t kPiece = std::size_t{256} * 1024;

  std::string _text;
};

}  // namespace mrziphoto::tool

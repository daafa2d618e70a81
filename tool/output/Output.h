#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mrziphoto::tool {

/// Thrown when the reader of standard output has gone; the command then ends quietly.
class ClosedPipe {};

/// When the answer is coloured.
enum class Color { automatic, always, never };

/// The terminal at a standard stream, if there is one.
struct Terminal {
  static constexpr std::size_t kUsualWidth = 80;

  /// False for a file or a pipe.
  bool isThere = false;
  std::size_t width = kUsualWidth;

  static Terminal at(int descriptor);
};

/// Standard output, written in large pieces.
class Output {
 public:
  /// For a file or a pipe, until `adapt` is called.
  Output();

  /// Finds out who reads standard output.
  void adapt(Color color);
  /// The terminal that shows the answer.
  [[nodiscard]] const Terminal& terminal() const { return _terminal; }
  void setTerminal(const Terminal& terminal) { _terminal = terminal; }
  /// The text as a heading, which is bold where the answer is coloured.
  [[nodiscard]] std::string heading(const std::string& text) const;

  /// The text that is not written yet, to be appended to.
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

 private:
  static constexpr std::size_t kPiece = std::size_t{256} * 1024;

  std::string _text;
  Terminal _terminal;
  bool _isColored = false;
};

}  // namespace mrziphoto::tool

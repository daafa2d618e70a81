#pragma once

#include <string_view>

namespace mrziphoto::tool {

/// Standard error: what the tool says beside its answer, and the library's log. All texts are made
/// harmless for terminals. May be called from any thread.
class Messages {
 public:
  Messages() = delete;

  enum class Loudness {
    failures,    // `--quiet`: failures and complaints only
    usual,       // notices and progress as well; a few lines of each kind
    everything,  // `--verbose`, `--strict`: the library's log as well, and every line
  };
  static void setLoudness(Loudness loudness);
  [[nodiscard]] static Loudness loudness();

  /// The last line, which says why the command ends without its answer. Left-out lines are counted
  /// before it.
  static void fail(std::string_view sentence);
  /// Something could not be answered, and the command goes on: one of possibly many lines of that
  /// kind. `kind` says in a few words what they have in common, and lives for ever.
  static void complain(std::string_view kind, std::string_view sentence);
  /// Likewise something that is no fault but worth knowing, which `--quiet` drops.
  static void notice(std::string_view kind, std::string_view sentence);
  /// A line of the library's log.
  static void logLine(std::string_view line);
  /// Says how many lines of each kind were left out; to be called when the command is done.
  static void countLeftOut();
};

}  // namespace mrziphoto::tool

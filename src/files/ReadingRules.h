#pragma once

#include <memory>
#include <optional>
#include <string>

#include "../values/Export.h"
#include "../values/Limits.h"

namespace mrziphoto {

/// How files are read. A thread goes by the rules of the innermost `Scope` on it, and by none
/// without one; `OpenFile`, through which every file of a library is opened, asks for them.
struct MRZIPHOTO_EXPORT ReadingRules {
  /// The limits to go by; nothing for those that are in force anyway.
  std::optional<Limits> limits;
  /// The only folder of which files are opened and folders are listed, with its symbolic links
  /// resolved; empty when all may be.
  std::string onlyInside;
  /// A second thread may help to read a large file. It ends before reading does.
  bool mayStartThreads = false;

  /// True when these rules let the entry at that path be opened, wherever links on the way lead.
  [[nodiscard]] bool allow(const std::string& path) const;

  /// The rules in force on this thread.
  [[nodiscard]] static const ReadingRules& current();

  /// A copy of them for an object that will read later; nullptr when there are none.
  [[nodiscard]] static std::shared_ptr<const ReadingRules> kept();

  class Scope;
};

/// Puts rules in force on this thread for as long as it lives; scopes nest. The rules, which must
/// outlive it, may be absent: then all stays as it is.
class MRZIPHOTO_EXPORT ReadingRules::Scope {
 public:
  explicit Scope(const ReadingRules* rules);
  ~Scope();
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

 private:
  const ReadingRules* _before;
  std::optional<Limits::Scope> _limits;
};

}  // namespace mrziphoto

#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "Options.h"
#include "commands/Session.h"

namespace mrziphoto::tool {

struct Command {
  std::string_view name;
  void (*run)(Session& session);
  /// Under which heading the help lists it.
  std::string_view group;
  /// The words behind the name, as the help shows them.
  std::string_view words;
  /// How many of them there are, the library folder apart.
  std::size_t fewestWords;
  std::size_t mostWords;
  /// The groups of its options, the global ones apart.
  unsigned options;
  std::string_view summary;
  std::string_view examples;

  [[nodiscard]] bool takes(const Option& option) const {
    return (option.group & (options | kGlobal)) != 0;
  }
};

/// All commands, in the order of the help.
[[nodiscard]] std::span<const Command> commands();

/// The command of that name. Throws `Failure` when there is none.
[[nodiscard]] const Command& commandNamed(std::string_view name);

}  // namespace mrziphoto::tool

#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace mrziphoto {

/// Sets an environment variable, or takes it away, until the test is done.
class EnvironmentVariable {
 public:
  EnvironmentVariable(std::string name, const std::optional<std::string>& value)
      : _name(std::move(name)) {
    if (const char* before = std::getenv(_name.c_str())) {
      _before = before;
    }
    set(value);
  }
  ~EnvironmentVariable() { set(_before); }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

 private:
  void set(const std::optional<std::string>& value) {
    if (value) {
      setenv(_name.c_str(), value->c_str(), 1);
    } else {
      unsetenv(_name.c_str());
    }
  }

  std::string _name;
  std::optional<std::string> _before;
};

}  // namespace mrziphoto

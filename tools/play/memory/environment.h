// Environment variables of this process that are changed for a while.
#pragma once

#include <optional>
#include <string>

namespace rdv::play {

// Has the variable at the value it had before when it goes.
class EnvironmentVariable {
 public:
  EnvironmentVariable(std::string name, const std::string& value);
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
  ~EnvironmentVariable();

 private:
  const std::string name_;
  std::optional<std::string> before_;
};

}  // namespace rdv::play

#include "tools/play/memory/environment.h"

#include <cstdlib>
#include <utility>

namespace rdv::play {

EnvironmentVariable::EnvironmentVariable(std::string name, const std::string& value)
    : name_(std::move(name)) {
  if (const char* before = std::getenv(name_.c_str())) before_ = before;
  setenv(name_.c_str(), value.c_str(), 1);
}

EnvironmentVariable::~EnvironmentVariable() {
  if (before_) {
    setenv(name_.c_str(), before_->c_str(), 1);
  } else {
    unsetenv(name_.c_str());
  }
}

}  // namespace rdv::play

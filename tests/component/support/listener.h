// Hears what is sent to a window, as long as it lives.
#pragma once

#include <functional>
#include <map>
#include <vector>

#include "tests/component/support/interception.h"

namespace rdv::test {

class Listener {
 public:
  explicit Listener(HWND window)
      : interception_(window, [this](UINT message, WPARAM wparam, LPARAM, const auto& pass_on) {
          return Hear(message, wparam, pass_on);
        }) {}
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  // The first parameters with which that message came so far.
  std::vector<WPARAM> Heard(UINT message) const {
    const auto found = heard_.find(message);
    return found == heard_.end() ? std::vector<WPARAM>() : found->second;
  }
  // Called with each message before the window gets it.
  std::function<void(UINT)> on_message;
  // From now on the window answers this to the message.
  void Answer(UINT message, LRESULT answer) { answers_[message] = answer; }

 private:
  LRESULT Hear(UINT message, WPARAM wparam, const Interception::PassOn& pass_on) {
    heard_[message].push_back(wparam);
    if (on_message) on_message(message);
    const auto answer = answers_.find(message);
    return answer != answers_.end() ? answer->second : pass_on();
  }

  std::map<UINT, std::vector<WPARAM>> heard_;
  std::map<UINT, LRESULT> answers_;
  const Interception interception_;
};

}  // namespace rdv::test

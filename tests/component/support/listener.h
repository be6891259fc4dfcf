// Hears what is sent to a window, as long as it lives.
#pragma once

// clang-format off
#include <windows.h>
#include <commctrl.h>
// clang-format on

#include <functional>
#include <map>
#include <vector>

namespace rdv::test {

class Listener {
 public:
  explicit Listener(HWND window) : window_(window) {
    SetWindowSubclass(window_, &Procedure, reinterpret_cast<UINT_PTR>(this), 0);
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener() { RemoveWindowSubclass(window_, &Procedure, reinterpret_cast<UINT_PTR>(this)); }

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
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam,
                                    UINT_PTR id, DWORD_PTR /*unused*/) {
    auto& listener = *reinterpret_cast<Listener*>(id);
    listener.heard_[message].push_back(wparam);
    if (listener.on_message) listener.on_message(message);
    const auto answer = listener.answers_.find(message);
    if (answer != listener.answers_.end()) return answer->second;
    return DefSubclassProc(window, message, wparam, lparam);
  }

  const HWND window_;
  std::map<UINT, std::vector<WPARAM>> heard_;
  std::map<UINT, LRESULT> answers_;
};

}  // namespace rdv::test

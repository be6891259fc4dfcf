// A procedure of a test's own before that of a window, for as long as it lives. The platform's
// helpers for that are not by name in every version of the common controls.
#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace rdv::test {

// The latest of several is the first to be asked.
class Interception {
 public:
  using PassOn = std::function<LRESULT()>;
  // The message's result.
  using Handler = std::function<LRESULT(UINT message, WPARAM, LPARAM, const PassOn& pass_on)>;

  Interception(HWND window, Handler handler) : window_(window), handler_(std::move(handler)) {
    Chain& chain = chains_[window];
    chain.links.push_back(this);
    if (chain.links.size() == 1) chain.below = SetProcedure(window, &Procedure);
  }
  Interception(const Interception&) = delete;
  Interception& operator=(const Interception&) = delete;
  ~Interception() {
    Chain& chain = chains_.at(window_);
    std::erase(chain.links, this);
    if (!chain.links.empty()) return;
    if (IsWindow(window_)) SetProcedure(window_, chain.below);
    chains_.erase(window_);
  }

 private:
  struct Chain {
    std::vector<const Interception*> links;
    WNDPROC below = nullptr;
  };

  static WNDPROC SetProcedure(HWND window, WNDPROC procedure) {
    return reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
  }
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const Chain chain = chains_.at(window);
    return Run(chain, chain.links.size(), window, message, wparam, lparam);
  }
  // Of the chain's links only the first `left`.
  static LRESULT Run(const Chain& chain, size_t left, HWND window, UINT message, WPARAM wparam,
                     LPARAM lparam) {
    if (left == 0) return CallWindowProcW(chain.below, window, message, wparam, lparam);
    const Interception& last = *chain.links.at(left - 1);
    return last.handler_(message, wparam, lparam,
                         [&] { return Run(chain, left - 1, window, message, wparam, lparam); });
  }

  static inline std::map<HWND, Chain> chains_;

  const HWND window_;
  const Handler handler_;
};

}  // namespace rdv::test

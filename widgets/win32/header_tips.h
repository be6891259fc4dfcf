// Tips over those columns of a list view's header whose captions do not fit.
#pragma once

#include "widgets/win32/platform.h"
#include "widgets/win32/window_hook.h"

namespace rdv::win32 {

// The list view shows such tips for its cells only.
class HeaderTips {
 public:
  HeaderTips() = default;
  HeaderTips(const HeaderTips&) = delete;
  HeaderTips& operator=(const HeaderTips&) = delete;
  ~HeaderTips();

  // Of this header, which has just been made: the tips, which are made much later, are of the same
  // common controls.
  void Adopt(HWND header);
  // The columns become others, or get another width, caption or font.
  void Outdate() { outdated_ = true; }
  // What the header is told: the tips come and go with the mouse. Where the system makes no window
  // for them there are none.
  void Relay(const HookedMessage& message);
  // Before the header goes.
  void Close();

 private:
  void Make();
  bool HasMoved() const;
  void Follow();

  HWND header_ = nullptr;
  HANDLE controls_ = nullptr;  // the activation context that the header was made in; null: none
  HWND window_ = nullptr;
  HWND root_ = nullptr;  // that the window belongs to
  bool outdated_ = true;
};

}  // namespace rdv::win32

// Tips over those columns of a list view's header whose captions do not fit.
#pragma once

#include "widgets/win32/platform.h"

namespace rdv::win32 {

// The list view shows such tips for its cells only.
class HeaderTips {
 public:
  HeaderTips() = default;
  HeaderTips(const HeaderTips&) = delete;
  HeaderTips& operator=(const HeaderTips&) = delete;
  ~HeaderTips() { Close(); }

  // The columns become others, or get another width, caption or font.
  void Outdate() { outdated_ = true; }
  // What the header is told: the tips come and go with the mouse. Where the system makes no window
  // for them there are none.
  void Relay(HWND header, UINT message, WPARAM wparam, LPARAM lparam);
  // Before the header goes.
  void Close();

 private:
  void Follow(HWND header);

  HWND window_ = nullptr;
  bool outdated_ = true;
};

}  // namespace rdv::win32

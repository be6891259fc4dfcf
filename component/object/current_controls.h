// The system's current common controls, in hosts that would have the older ones.
#pragma once

#include <windows.h>

namespace rdv {

// While it lives, the thread makes windows of the current common controls: buffered and themed, as
// in a host whose own manifest asks for them. Where the system refuses, windows are of the host's
// kind.
class CurrentControls {
 public:
  CurrentControls();
  CurrentControls(const CurrentControls&) = delete;
  CurrentControls& operator=(const CurrentControls&) = delete;
  ~CurrentControls();

 private:
  ULONG_PTR cookie_ = 0;  // 0 where nothing was activated
};

}  // namespace rdv

// The awareness of resolutions that windows are made with and keep.
#pragma once

#include "widgets/win32/platform.h"

namespace rdv::win32 {

// Whether the system allows one to be the parent of the other. Systems that know one awareness only
// always do.
bool ShareAwareness(HWND left, HWND right);

// For its life the thread makes windows of the same awareness as `window`.
class AwarenessOf {
 public:
  explicit AwarenessOf(HWND window);
  AwarenessOf(const AwarenessOf&) = delete;
  AwarenessOf& operator=(const AwarenessOf&) = delete;
  ~AwarenessOf();

 private:
  void* before_ = nullptr;  // null where nothing was changed
};

}  // namespace rdv::win32

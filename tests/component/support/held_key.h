// The state of a key as the thread sees it, for as long as the object lives.
#pragma once

#include "component/com/ole_headers.h"

namespace rdv::test {

class HeldKey {
 public:
  explicit HeldKey(int key) : key_(key) { Set(0x80); }
  HeldKey(const HeldKey&) = delete;
  HeldKey& operator=(const HeldKey&) = delete;
  ~HeldKey() { Set(0); }

 private:
  void Set(BYTE state) const {
    BYTE keys[256] = {};
    GetKeyboardState(keys);
    keys[key_] = state;
    SetKeyboardState(keys);
  }
  const int key_;
};

}  // namespace rdv::test

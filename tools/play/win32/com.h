// The little of COM that the player needs.
#pragma once

// clang-format off
#include <windows.h>
#include <ole2.h>
#include <olectl.h>
#include <ocidl.h>
// clang-format on

#include <cstdio>
#include <stdexcept>
#include <string>

// The platform's interfaces are released, never deleted: none of them has a virtual destructor.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace rdv::play {

// Throws what a call that must not fail has answered.
inline void Check(HRESULT result, const char* call) {
  if (SUCCEEDED(result)) return;
  char code[16];
  std::snprintf(code, sizeof code, "%08lX", static_cast<unsigned long>(result));
  throw std::runtime_error(std::string(call) + " answered " + code);
}

// Owns one reference.
template <class Interface>
class ComPtr {
 public:
  ComPtr() = default;
  ComPtr(const ComPtr&) = delete;
  ComPtr& operator=(const ComPtr&) = delete;
  ~ComPtr() {
    if (held_) held_->Release();
  }

  Interface* get() const { return held_; }
  Interface* operator->() const { return held_; }
  // For a call that gives a reference; nothing may be held yet.
  Interface** Receive() { return &held_; }
  void** ReceiveAny() { return reinterpret_cast<void**>(&held_); }

 private:
  Interface* held_ = nullptr;
};

}  // namespace rdv::play

// The platform's headers for a program that contains controls, and a counted pointer.
#pragma once

// clang-format off
#include <windows.h>
#include <ole2.h>
#include <olectl.h>
#include <ocidl.h>
// clang-format on

#include <utility>

// The platform's interfaces are released, never deleted: none of them has a virtual destructor.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace rdvhost {

template <class Interface>
class Com {
 public:
  Com() = default;
  Com(const Com&) = delete;
  Com& operator=(const Com&) = delete;
  Com(Com&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Com& operator=(Com&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Com() { Reset(); }

  Interface* Get() const { return object_; }
  Interface* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }
  void Reset() {
    if (Interface* object = std::exchange(object_, nullptr)) object->Release();
  }
  void Set(Interface* object) {
    if (object) object->AddRef();
    Reset();
    object_ = object;
  }
  Interface** Receive() {
    Reset();
    return &object_;
  }

  // Empty when `object` is null or lacks the interface.
  static Com From(IUnknown* object, REFIID iid) {
    Com result;
    if (object) object->QueryInterface(iid, reinterpret_cast<void**>(&result.object_));
    return result;
  }

 private:
  Interface* object_ = nullptr;
};

}  // namespace rdvhost

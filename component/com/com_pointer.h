// A counted reference to a COM object.
#pragma once

#include <utility>

#include "component/com/ole_headers.h"

namespace rdv {

template <class Interface>
class ComPointer {
 public:
  ComPointer() = default;
  // Adds a reference of its own.
  explicit ComPointer(Interface* object) : object_(object) {
    if (object_) object_->AddRef();
  }
  ComPointer(const ComPointer& other) : ComPointer(other.object_) {}
  ComPointer(ComPointer&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ComPointer& operator=(ComPointer other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~ComPointer() { Reset(); }

  Interface* Get() const { return object_; }
  Interface* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

  // The pointer is empty before the object is released, whose last release may run code that
  // looks here again.
  void Reset() {
    if (Interface* object = std::exchange(object_, nullptr)) object->Release();
  }

  // Hands the reference over to the caller.
  Interface* Detach() { return std::exchange(object_, nullptr); }

  // For functions that give out a counted reference.
  Interface** Receive() {
    Reset();
    return &object_;
  }
  void** ReceiveUntyped() { return reinterpret_cast<void**>(Receive()); }

  // Empty when the object, which may be null, does not have the interface.
  static ComPointer From(IUnknown* object, REFIID iid) {
    ComPointer result;
    if (object && FAILED(object->QueryInterface(iid, result.ReceiveUntyped()))) {
      result.object_ = nullptr;
    }
    return result;
  }

 private:
  Interface* object_ = nullptr;
};

}  // namespace rdv

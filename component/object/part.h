// A part of the control object: it carries some of the object's interfaces, its identity and
// references are the object's.
#pragma once

#include <utility>

#include "component/com/boundary.h"
#include "component/com/ole_headers.h"

namespace rdv {

class LineConfigObject;

// Holds the object for the length of a call into which a container may release it.
class KeepObject {
 public:
  explicit KeepObject(IUnknown& object) : object_(object) { object_.AddRef(); }
  KeepObject(const KeepObject&) = delete;
  KeepObject& operator=(const KeepObject&) = delete;
  ~KeepObject() { object_.Release(); }

 private:
  IUnknown& object_;
};

template <class... Interfaces>
class Part : public Interfaces... {
 public:
  // `outer` is the object as its clients know it.
  Part(LineConfigObject& object, IUnknown& outer) : object_(object), outer_(outer) {}
  Part(const Part&) = delete;
  Part& operator=(const Part&) = delete;

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    return outer_.QueryInterface(iid, object);
  }
  STDMETHODIMP_(ULONG) AddRef() override { return outer_.AddRef(); }
  STDMETHODIMP_(ULONG) Release() override { return outer_.Release(); }

 protected:
  ~Part() = default;

  // Runs the body of a method that calls the container, which may release the object meanwhile.
  // Nothing thrown leaves it.
  template <class Body>
  HRESULT Guard(Body&& body) noexcept {
    const KeepObject keep(outer_);
    return AtBoundary(std::forward<Body>(body));
  }

  LineConfigObject& object_;
  IUnknown& outer_;
};

}  // namespace rdv

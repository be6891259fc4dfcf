// Where the product's exceptions end and COM's result codes begin.
#pragma once

#include <new>
#include <utility>

#include "component/com/ole_headers.h"
#include "runtime/error.h"

namespace rdv {

// Leaves the error's description and source for the caller that asks for error information, and
// gives the result code that carries its number.
HRESULT LeaveErrorInfo(const RuntimeError& error) noexcept;
// The same for a failure that is nothing but a result code, which it gives back: the system has a
// text for it.
HRESULT LeaveErrorInfo(HRESULT failure) noexcept;

// Runs the body of a COM method. Nothing thrown gets past it.
template <class Body>
HRESULT AtBoundary(Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (const std::bad_alloc&) {
    return LeaveErrorInfo(E_OUTOFMEMORY);
  } catch (const RuntimeError& error) {
    return LeaveErrorInfo(error);
  } catch (...) {
    return LeaveErrorInfo(E_UNEXPECTED);
  }
}

}  // namespace rdv

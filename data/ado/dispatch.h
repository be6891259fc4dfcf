// Late-bound calls to automation objects. Windows only. Every failing call raises RuntimeError with
// what the object says about it.
#pragma once

#include <windows.h>
// The automation headers need the declarations before them.
#include <oleauto.h>

#include <initializer_list>
#include <utility>

#include "runtime/text.h"

namespace rdv::ado {

// A VARIANT that frees what it holds.
class Variant {
 public:
  Variant() { VariantInit(&value_); }
  explicit Variant(int32_t number);
  explicit Variant(double number);
  explicit Variant(TextView text);
  explicit Variant(IDispatch* object);  // takes a reference of its own; may be null
  Variant(Variant&& other) noexcept : Variant() { std::swap(value_, other.value_); }
  Variant& operator=(Variant&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  ~Variant() { VariantClear(&value_); }

  static Variant MakeNull();
  // An argument that the called object may assign to; `target` must outlive it.
  static Variant ReferenceTo(Variant& target);

  const VARIANT& Get() const { return value_; }
  VARIANT* Receive();  // empties it first

 private:
  VARIANT value_;
};

// A reference to an automation object.
class Object {
 public:
  Object() = default;
  explicit Object(const Variant& value);  // null when the value is no object
  Object(Object&& other) noexcept : dispatch_(std::exchange(other.dispatch_, nullptr)) {}
  Object& operator=(Object&& other) noexcept {
    std::swap(dispatch_, other.dispatch_);
    return *this;
  }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  ~Object() {
    if (dispatch_ != nullptr) dispatch_->Release();
  }

  // A new one of the registered class.
  static Object Create(const wchar_t* program_id);

  Variant Call(const wchar_t* method, std::initializer_list<const Variant*> arguments = {}) const;
  Variant Get(const wchar_t* property, std::initializer_list<const Variant*> arguments = {}) const;
  void Put(const wchar_t* property, const Variant& value) const;
  void PutReference(const wchar_t* property, const Object& object) const;

  explicit operator bool() const { return dispatch_ != nullptr; }
  IDispatch* Pointer() const { return dispatch_; }

 private:
  Variant Invoke(const wchar_t* name, WORD kind,
                 std::initializer_list<const Variant*> arguments) const;

  IDispatch* dispatch_ = nullptr;
};

}  // namespace rdv::ado

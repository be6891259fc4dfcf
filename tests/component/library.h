// The component's library file, loaded as a host's process loads it.
#pragma once

#include <string>

#include "component/com_pointer.h"

namespace rdv::test {

class Library {
 public:
  // From beside the test program. Fails the test when the file cannot be loaded.
  Library();
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  static std::wstring Path();

  HRESULT Register() const { return Call("DllRegisterServer"); }
  HRESULT Unregister() const { return Call("DllUnregisterServer"); }
  HRESULT CanUnloadNow() const { return Call("DllCanUnloadNow"); }
  HRESULT GetClassObject(REFCLSID class_id, REFIID iid, void** object) const;

  // A new control, without the registry.
  template <class Interface>
  ComPointer<Interface> Create(REFIID iid) const {
    ComPointer<Interface> object;
    CreateUntyped(iid, object.ReceiveUntyped());
    return object;
  }

 private:
  HRESULT Call(const char* name) const;
  void CreateUntyped(REFIID iid, void** object) const;

  HMODULE module_;
};

// Answers message boxes that would otherwise wait for a user, and remembers what they said.
class BoxAnswerer {
 public:
  BoxAnswerer();
  ~BoxAnswerer();
  static int Count();

 private:
  HHOOK hook_;
};

// Lets posted messages through.
void PumpMessages();

}  // namespace rdv::test

// The component's library file, loaded as a host's process loads it.
#pragma once

#include <string>
#include <vector>

#include "component/com/com_pointer.h"

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

// Message boxes would wait for a user. While one of these lives, every box of the thread is
// answered with OK, and what it said is kept.
class BoxAnswerer {
 public:
  BoxAnswerer();
  BoxAnswerer(const BoxAnswerer&) = delete;
  BoxAnswerer& operator=(const BoxAnswerer&) = delete;
  ~BoxAnswerer();
  const std::vector<std::wstring>& Texts() const { return texts_; }

 private:
  friend class BoxWatch;
  static BoxAnswerer* current_;

  BoxAnswerer* const before_;
  std::vector<std::wstring> texts_;
};

// Sees every box of the thread as long as it lives. One that no BoxAnswerer expects fails the test
// with its text, and is cancelled.
class BoxWatch {
 public:
  BoxWatch();
  BoxWatch(const BoxWatch&) = delete;
  BoxWatch& operator=(const BoxWatch&) = delete;
  ~BoxWatch();

 private:
  static LRESULT CALLBACK OnWindow(int code, WPARAM wparam, LPARAM lparam);

  const HHOOK hook_;
};

// Lets posted messages through.
void PumpMessages();

}  // namespace rdv::test

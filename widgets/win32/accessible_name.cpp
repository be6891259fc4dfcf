#include "widgets/win32/accessible_name.h"

#include <initguid.h>
#include <oleacc.h>

#include <array>

namespace rdv::win32 {
namespace {

constexpr auto kClient = static_cast<DWORD>(OBJID_CLIENT);

template <class Work>
void WithServices(Work&& work) {
  IAccPropServices* services = nullptr;
  if (FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER,
                              IID_IAccPropServices, reinterpret_cast<void**>(&services)))) {
    return;
  }
  work(*services);
  services->Release();
}

void Describe(HWND window, DWORD child, const MSAAPROPID& property, const wchar_t* text) {
  WithServices([&](IAccPropServices& services) {
    services.SetHwndPropStr(window, kClient, child, property, text);
  });
}

}  // namespace

void SetAccessibleName(HWND window, const wchar_t* name) {
  Describe(window, CHILDID_SELF, PROPID_ACC_NAME, name);
}

// The items of a list view are its children, by their place.
void SetAccessibleItemName(HWND list, int item, const wchar_t* name) {
  Describe(list, static_cast<DWORD>(item), PROPID_ACC_NAME, name);
}

void SetAccessibleShortcut(HWND window, const wchar_t* keys) {
  Describe(window, CHILDID_SELF, PROPID_ACC_KEYBOARDSHORTCUT, keys);
}

void ForgetAccessibleTexts(std::span<const HWND> windows) {
  const std::array<MSAAPROPID, 2> properties = {PROPID_ACC_NAME, PROPID_ACC_KEYBOARDSHORTCUT};
  WithServices([&](IAccPropServices& services) {
    for (const HWND window : windows) {
      services.ClearHwndProps(window, kClient, CHILDID_SELF, properties.data(),
                              static_cast<int>(properties.size()));
    }
  });
}

void ForgetAccessibleItems(HWND list, int count) {
  WithServices([&](IAccPropServices& services) {
    for (int item = 1; item <= count; ++item)
      services.ClearHwndProps(list, kClient, static_cast<DWORD>(item), &PROPID_ACC_NAME, 1);
  });
}

}  // namespace rdv::win32

#include "widgets/win32/accessible_name.h"

#include <initguid.h>
#include <oleacc.h>

namespace rdv::win32 {
namespace {

void Describe(HWND window, const MSAAPROPID& property, const wchar_t* text) {
  IAccPropServices* services = nullptr;
  if (FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER,
                              IID_IAccPropServices, reinterpret_cast<void**>(&services)))) {
    return;
  }
  services->SetHwndPropStr(window, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, property, text);
  services->Release();
}

}  // namespace

void SetAccessibleName(HWND window, const wchar_t* name) {
  Describe(window, PROPID_ACC_NAME, name);
}

void SetAccessibleShortcut(HWND window, const wchar_t* keys) {
  Describe(window, PROPID_ACC_KEYBOARDSHORTCUT, keys);
}

}  // namespace rdv::win32

#include "widgets/win32/accessible_name.h"

#include <initguid.h>
#include <oleacc.h>

namespace rdv::win32 {

void SetAccessibleName(HWND window, const wchar_t* name) {
  IAccPropServices* services = nullptr;
  if (FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER,
                              IID_IAccPropServices, reinterpret_cast<void**>(&services)))) {
    return;
  }
  services->SetHwndPropStr(window, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, PROPID_ACC_NAME,
                           name);
  services->Release();
}

}  // namespace rdv::win32

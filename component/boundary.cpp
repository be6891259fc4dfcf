#include "component/boundary.h"

#include "component/com_pointer.h"
#include "component/identifiers.h"
#include "widgets/win32/wide.h"

namespace rdv {

HRESULT LeaveErrorInfo(const RuntimeError& error) {
  ComPointer<ICreateErrorInfo> creator;
  if (SUCCEEDED(CreateErrorInfo(creator.Receive()))) {
    Text description = error.Description();
    Text source = error.Source();
    creator->SetGUID(kLineConfigInterfaceId);
    creator->SetDescription(reinterpret_cast<wchar_t*>(description.data()));
    creator->SetSource(reinterpret_cast<wchar_t*>(source.data()));
    if (const auto info = ComPointer<IErrorInfo>::From(creator.Get(), IID_IErrorInfo)) {
      SetErrorInfo(0, info.Get());
    }
  }
  return MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, error.Number() & 0xFFFF);
}

}  // namespace rdv

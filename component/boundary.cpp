#include "component/boundary.h"

#include "component/com_pointer.h"
#include "component/identifiers.h"
#include "widgets/win32/wide.h"

namespace rdv {
namespace {

// An error of another component carries a result code already. One that got lost, number 0, would
// be read as success.
HRESULT ResultCode(int32_t number) {
  if (number < 0) return number;
  const int32_t code = number & 0xFFFF;
  return code ? MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, code) : E_FAIL;
}

}  // namespace

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
  return ResultCode(error.Number());
}

}  // namespace rdv

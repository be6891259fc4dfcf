#include "component/com/boundary.h"

#include "component/com/com_pointer.h"
#include "component/com/identifiers.h"
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

// Never raises, and takes no memory of the library's own.
void Leave(const wchar_t* description, const wchar_t* source) noexcept {
  ComPointer<ICreateErrorInfo> creator;
  if (FAILED(CreateErrorInfo(creator.Receive()))) return;
  creator->SetGUID(kLineConfigInterfaceId);
  creator->SetDescription(const_cast<wchar_t*>(description));
  creator->SetSource(const_cast<wchar_t*>(source));
  if (const auto info = ComPointer<IErrorInfo>::From(creator.Get(), IID_IErrorInfo)) {
    SetErrorInfo(0, info.Get());
  }
}

}  // namespace

HRESULT LeaveErrorInfo(const RuntimeError& error) noexcept {
  const HRESULT result = ResultCode(error.Number());
  try {
    Leave(win32::Wide(error.Description()), win32::Wide(error.Source()));
  } catch (const std::bad_alloc&) {
    // The result code has to do.
  }
  return result;
}

HRESULT LeaveErrorInfo(HRESULT failure) noexcept {
  wchar_t text[256] = L"";
  constexpr DWORD kWithoutArguments = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  DWORD length = FormatMessageW(kWithoutArguments, nullptr, static_cast<DWORD>(failure), 0, text,
                                256, nullptr);
  while (length > 0 && (text[length - 1] == L'\n' || text[length - 1] == L'\r')) --length;
  text[length] = L'\0';
  if (length == 0) wsprintfW(text, L"Error 0x%08X", static_cast<unsigned>(failure));
  Leave(text, reinterpret_cast<const wchar_t*>(kProductSource.data()));
  return failure;
}

}  // namespace rdv

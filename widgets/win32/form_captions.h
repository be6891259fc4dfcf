// The captions of the form's fixed parts, for its windows and for its picture without windows. The
// letter after an ampersand is underlined and, with Alt, presses the button.
#pragma once

namespace rdv::win32::caption {

inline constexpr const wchar_t* kConfigurationFrame = L"RDV Line Configuration";
inline constexpr const wchar_t* kDefaultsFrame = L"Default values";
inline constexpr const wchar_t* kRestore = L"&Restore Default";
inline constexpr const wchar_t* kOk = L"&OK";
inline constexpr const wchar_t* kCancel = L"&Cancel";
inline constexpr const wchar_t* kApply = L"&Apply";

}  // namespace rdv::win32::caption

// The component's identifiers and names: those of the type library and of its registration.
#pragma once

#include "component/com/ole_headers.h"

namespace rdv {

inline constexpr GUID kTypeLibraryId = {
    0x6B0E2D9A, 0x4C57, 0x4F0B, {0x9A, 0x38, 0x51, 0xC7, 0xE2, 0xF4, 0xD8, 0x01}};
inline constexpr IID kLineConfigInterfaceId = {
    0x6B0E2D9A, 0x4C57, 0x4F0B, {0x9A, 0x38, 0x51, 0xC7, 0xE2, 0xF4, 0xD8, 0x02}};
inline constexpr IID kLineConfigEventsId = {
    0x6B0E2D9A, 0x4C57, 0x4F0B, {0x9A, 0x38, 0x51, 0xC7, 0xE2, 0xF4, 0xD8, 0x03}};
inline constexpr CLSID kLineConfigClassId = {
    0x6B0E2D9A, 0x4C57, 0x4F0B, {0x9A, 0x38, 0x51, 0xC7, 0xE2, 0xF4, 0xD8, 0x05}};

inline constexpr WORD kTypeLibraryMajor = 1;
inline constexpr WORD kTypeLibraryMinor = 0;

inline constexpr DISPID kRemoveMeEvent = 1;

inline constexpr const wchar_t* kClassName = L"TLV_RDV_Line_Config.ucRDVLineConfig";
inline constexpr const wchar_t* kUserClassName = L"Line configuration control";

// The only verb that is the control's own, number 0, as menus show it.
inline constexpr const wchar_t* kEditVerbName = L"&Edit";
inline constexpr DWORD kEditVerbAttributes = OLEVERBATTRIB_ONCONTAINERMENU;

// The control lives inside its container's window, is active whenever it is visible, and wants its
// site before anything else.
inline constexpr DWORD kMiscStatus = OLEMISC_RECOMPOSEONRESIZE | OLEMISC_CANTLINKINSIDE |
                                     OLEMISC_INSIDEOUT | OLEMISC_ACTIVATEWHENVISIBLE |
                                     OLEMISC_SETCLIENTSITEFIRST;

// Resource numbers of component.rc.
inline constexpr WORD kTypeLibraryResource = 1;
inline constexpr WORD kToolboxBitmapResource = 101;

// The default interface, member by member as in the type library.
struct LineConfigInterface : IDispatch {
  virtual HRESULT STDMETHODCALLTYPE ShowControl(SHORT Given_ConfigID, VARIANT_BOOL* Result) = 0;
  virtual HRESULT STDMETHODCALLTYPE AssignIndextoDefaultBox(SHORT Line1LineType,
                                                            SHORT Line5LineType,
                                                            VARIANT* Result) = 0;

 protected:
  ~LineConfigInterface() = default;
};

}  // namespace rdv

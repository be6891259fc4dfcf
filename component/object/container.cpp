#include "component/object/container.h"

namespace rdv {
namespace {

constexpr double kCurrencyUnits = 10000;  // font sizes are fixed-point

// Of the system's colours the containers' colours hold only the names: they may change.
std::optional<win32::WishedColor> ToColor(OLE_COLOR ole_color) {
  COLORREF color = 0;
  if (FAILED(OleTranslateColor(ole_color, nullptr, &color))) return std::nullopt;
  if (constexpr OLE_COLOR kSystem = 0x80000000; (ole_color & kSystem) != 0) {
    return win32::WishedColor::OfSystem(static_cast<int>(ole_color & 0xFF));
  }
  return win32::WishedColor::Fixed(color);
}

DWORD KeyModifiers() {
  constexpr DWORD kShift = 1;
  constexpr DWORD kCtrl = 2;
  constexpr DWORD kAlt = 4;
  return (GetKeyState(VK_SHIFT) < 0 ? kShift : 0) | (GetKeyState(VK_CONTROL) < 0 ? kCtrl : 0) |
         (GetKeyState(VK_MENU) < 0 ? kAlt : 0);
}

}  // namespace

void Container::SetSite(IOleClientSite* site) {
  const int change = ++site_changes_;
  {
    // Their last references may call back.
    const ComPointer<IOleClientSite> former_site = std::move(site_);
    const ComPointer<IDispatch> former_ambients = std::move(ambients_);
    const ComPointer<IOleControlSite> former_control_site = std::move(control_site_);
  }
  const ComPointer<IOleClientSite> held(site);
  auto ambients = ComPointer<IDispatch>::From(site, IID_IDispatch);
  auto control_site = ComPointer<IOleControlSite>::From(site, IID_IOleControlSite);
  // The container may have set another site while it was asked for these.
  if (change != site_changes_) return;
  site_ = held;
  ambients_ = std::move(ambients);
  control_site_ = std::move(control_site);
}

bool Container::UserMode() const {
  return GetTruth(DISPID_AMBIENT_USERMODE, quick_user_mode_.value_or(true));
}

bool Container::TakesInput() const {
  return UserMode() && !GetTruth(DISPID_AMBIENT_UIDEAD, quick_ui_dead_);
}

win32::Appearance Container::Appearance() const {
  win32::Appearance appearance;
  VARIANT value;
  if (GetAmbient(DISPID_AMBIENT_FONT, VT_DISPATCH, value)) {
    TakeFont(ComPointer<IFont>::From(value.pdispVal, IID_IFont).Get(), appearance);
    VariantClear(&value);
  } else {
    TakeFont(quick_font_.Get(), appearance);
  }
  const auto color = [&](DISPID property, std::optional<OLE_COLOR> quick) {
    if (GetAmbient(property, VT_I4, value)) quick = static_cast<OLE_COLOR>(value.lVal);
    return quick ? ToColor(*quick) : std::nullopt;
  };
  appearance.background = color(DISPID_AMBIENT_BACKCOLOR, quick_background_);
  appearance.text_color = color(DISPID_AMBIENT_FORECOLOR, quick_text_color_);
  return appearance;
}

void Container::TellFocus(bool gained) const {
  if (const ComPointer<IOleControlSite> site = control_site_) site->OnFocus(gained);
}

bool Container::OfferKey(MSG* message) const {
  const ComPointer<IOleControlSite> site = control_site_;
  return site && site->TranslateAccelerator(message, KeyModifiers()) == S_OK;
}

void Container::SetQuickAmbients(const QACONTAINER& ambients) {
  quick_user_mode_ = (ambients.dwAmbientFlags & QACONTAINER_USERMODE) != 0;
  quick_ui_dead_ = (ambients.dwAmbientFlags & QACONTAINER_UIDEAD) != 0;
  quick_font_ = ComPointer<IFont>(ambients.pFont);
  quick_background_ = ambients.colorBack;
  quick_text_color_ = ambients.colorFore;
}

void Container::TellControlInfoChanged() const {
  if (const ComPointer<IOleControlSite> site = control_site_) site->OnControlInfoChanged();
}

// On success `value` has the type, and is the caller's to clear. Some containers answer for every
// property, with nothing in it for those that they do not have.
bool Container::GetAmbient(DISPID property, VARTYPE type, VARIANT& value) const {
  VariantInit(&value);
  const ComPointer<IDispatch> ambients = ambients_;
  if (!ambients) return false;
  DISPPARAMS none = {};
  if (FAILED(ambients->Invoke(property, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                              &value, nullptr, nullptr))) {
    VariantInit(&value);
    return false;
  }
  const bool said = value.vt != VT_EMPTY && value.vt != VT_NULL;
  if (said && SUCCEEDED(VariantChangeType(&value, &value, 0, type))) return true;
  VariantClear(&value);
  return false;
}

bool Container::GetTruth(DISPID property, bool otherwise) const {
  VARIANT value;
  if (!GetAmbient(property, VT_BOOL, value)) return otherwise;
  return value.boolVal != VARIANT_FALSE;
}

void Container::TakeFont(IFont* font, win32::Appearance& appearance) const {
  if (!font) return;
  BSTR name = nullptr;
  CY size = {};
  SHORT weight = FW_NORMAL;
  BOOL italic = FALSE;
  SHORT character_set = DEFAULT_CHARSET;
  const bool complete = SUCCEEDED(font->get_Name(&name)) && SUCCEEDED(font->get_Size(&size)) &&
                        SUCCEEDED(font->get_Weight(&weight)) &&
                        SUCCEEDED(font->get_Italic(&italic)) &&
                        SUCCEEDED(font->get_Charset(&character_set));
  if (complete && name && size.int64 > 0) {
    appearance.font =
        win32::FontDescription{.face = name,
                               .points = static_cast<double>(size.int64) / kCurrencyUnits,
                               .weight = weight,
                               .italic = italic != FALSE,
                               .character_set = static_cast<BYTE>(character_set)};
  }
  SysFreeString(name);
}

}  // namespace rdv

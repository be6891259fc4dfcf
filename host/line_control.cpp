#include "host/line_control.h"

namespace rdvhost {
namespace {

constexpr const wchar_t* kControlClass = L"TLV_RDV_Line_Config.ucRDVLineConfig";

}  // namespace

// The steps of placing a control, in the order that suits every control: create, give it its site,
// initialise it, connect to its events, activate it.
HRESULT LineControl::Create() {
  CLSID class_id = {};
  HRESULT result = CLSIDFromProgID(kControlClass, &class_id);
  if (FAILED(result)) return result;
  result = CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, IID_IOleObject,
                            reinterpret_cast<void**>(object_.Receive()));
  if (FAILED(result)) return result;

  *site_.Receive() = new ControlSite(window_, place_);
  site_->on_remove_me = [this] {
    if (on_remove_me) on_remove_me();
  };
  result = object_->SetClientSite(site_.Get());
  if (SUCCEEDED(result)) {
    const auto state = Com<IPersistStreamInit>::From(object_.Get(), IID_IPersistStreamInit);
    if (state) result = state->InitNew();
  }
  if (SUCCEEDED(result)) result = Connect();
  if (SUCCEEDED(result)) {
    RECT place = place_();
    result = object_->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, site_.Get(), 0, window_, &place);
  }
  if (FAILED(result)) Remove();
  return result;
}

// The control names its default event interface itself; the site receives the events.
HRESULT LineControl::Connect() {
  const auto description = Com<IProvideClassInfo2>::From(object_.Get(), IID_IProvideClassInfo2);
  const auto points =
      Com<IConnectionPointContainer>::From(object_.Get(), IID_IConnectionPointContainer);
  if (!description || !points) return E_NOINTERFACE;
  GUID events = {};
  HRESULT result = description->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events);
  if (SUCCEEDED(result)) result = points->FindConnectionPoint(events, events_.Receive());
  if (FAILED(result)) return result;
  return events_->Advise(static_cast<IDispatch*>(site_.Get()), &events_cookie_);
}

void LineControl::Remove() {
  if (!object_) return;
  if (events_) events_->Unadvise(events_cookie_);
  events_.Reset();
  if (const auto placed = Com<IOleInPlaceObject>::From(object_.Get(), IID_IOleInPlaceObject)) {
    placed->InPlaceDeactivate();
  }
  object_->Close(OLECLOSE_NOSAVE);
  object_->SetClientSite(nullptr);
  object_.Reset();
  site_.Reset();
}

bool LineControl::Show(SHORT configuration) {
  const auto control = Com<IDispatch>::From(object_.Get(), IID_IDispatch);
  if (!control) return false;
  wchar_t name[] = L"ShowControl";
  LPOLESTR names[] = {name};
  DISPID method = 0;
  if (FAILED(control->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &method)))
    return false;
  VARIANT argument;
  VariantInit(&argument);
  argument.vt = VT_I2;
  argument.iVal = configuration;
  DISPPARAMS parameters = {&argument, nullptr, 1, 0};
  VARIANT shown;
  VariantInit(&shown);
  const HRESULT result = control->Invoke(method, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                         &parameters, &shown, nullptr, nullptr);
  return SUCCEEDED(result) && shown.vt == VT_BOOL && shown.boolVal != VARIANT_FALSE;
}

void LineControl::Resize() {
  if (const auto placed = Com<IOleInPlaceObject>::From(object_.Get(), IID_IOleInPlaceObject)) {
    const RECT place = place_();
    placed->SetObjectRects(&place, &place);
  }
}

bool LineControl::Translate(MSG& message) {
  const bool is_key = message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST;
  if (!is_key || !site_ || !site_->ActiveObject()) return false;
  Com<IOleInPlaceActiveObject> active;
  active.Set(site_->ActiveObject());
  HWND inside = nullptr;
  if (FAILED(active->GetWindow(&inside))) return false;
  if (message.hwnd != inside && !IsChild(inside, message.hwnd)) return false;
  return active->TranslateAccelerator(&message) == S_OK;
}

void LineControl::GiveFocus() {
  if (!object_) return;
  RECT place = place_();
  object_->DoVerb(OLEIVERB_UIACTIVATE, nullptr, site_.Get(), 0, window_, &place);
}

}  // namespace rdvhost

#include "tools/play/win32/container.h"

#include <cmath>

#include "rules/grid_columns.h"

namespace rdv::play {
namespace {

constexpr const wchar_t* kWindowClass = L"rdvplay.Host";
constexpr const wchar_t* kControlName = L"TLV_RDV_Line_Config.ucRDVLineConfig";
constexpr DWORD kWindowStyle = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN;

int Pixels(Twips length) {
  return static_cast<int>(std::lround(length / kTwipsPerPixel));
}

}  // namespace

HostWindow::HostWindow() {
  WNDCLASSEXW description = {};
  description.cbSize = sizeof description;
  description.lpfnWndProc = &DefWindowProcW;  // the focus after a box is the control's own affair
  description.hInstance = GetModuleHandleW(nullptr);
  description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  description.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
  description.lpszClassName = kWindowClass;
  RegisterClassExW(&description);  // fails, as it should, for all windows but the first

  const Size size = DesignSize(kGridContent);
  RECT place = {0, 0, Pixels(size.width), Pixels(size.height)};
  AdjustWindowRect(&place, kWindowStyle, FALSE);
  window_ =
      CreateWindowExW(0, kWindowClass, kHostTitle, kWindowStyle, 0, 0, place.right - place.left,
                      place.bottom - place.top, nullptr, nullptr, description.hInstance, nullptr);
  if (!window_) throw std::runtime_error("the host's window cannot be created");
  ShowWindow(window_, SW_SHOW);
  SetActiveWindow(window_);
}

Container::Container(std::function<void()> on_remove_me) : site_(window_.Handle()) {
  CreateControl();
  ListenTo(std::move(on_remove_me));
  RECT place = {};
  GetClientRect(Window(), &place);
  Check(control_->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, &site_, 0, Window(), &place),
        "IOleObject::DoVerb");
}

Container::~Container() {
  events_->Unadvise(connection_);
  ComPtr<IOleInPlaceObject> in_place;
  if (SUCCEEDED(control_->QueryInterface(IID_IOleInPlaceObject, in_place.ReceiveAny()))) {
    in_place->InPlaceDeactivate();
  }
  control_->Close(OLECLOSE_NOSAVE);
  control_->SetClientSite(nullptr);
}

void Container::CreateControl() {
  CLSID id = {};
  Check(CLSIDFromProgID(kControlName, &id), "CLSIDFromProgID (is the component registered?)");
  ComPtr<IClassFactory> factory;
  Check(
      CoGetClassObject(id, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory, factory.ReceiveAny()),
      "CoGetClassObject");
  Check(factory->CreateInstance(nullptr, IID_IOleObject, control_.ReceiveAny()),
        "IClassFactory::CreateInstance");
  Check(control_->SetClientSite(&site_), "IOleObject::SetClientSite");
  ComPtr<IPersistStreamInit> persistence;
  Check(control_->QueryInterface(IID_IPersistStreamInit, persistence.ReceiveAny()),
        "QueryInterface (IPersistStreamInit)");
  Check(persistence->InitNew(), "IPersistStreamInit::InitNew");
}

void Container::ListenTo(std::function<void()> on_remove_me) {
  ComPtr<IProvideClassInfo2> class_info;
  Check(control_->QueryInterface(IID_IProvideClassInfo2, class_info.ReceiveAny()),
        "QueryInterface (IProvideClassInfo2)");
  IID events = {};
  Check(class_info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events),
        "IProvideClassInfo2::GetGUID");
  ComPtr<IConnectionPointContainer> points;
  Check(control_->QueryInterface(IID_IConnectionPointContainer, points.ReceiveAny()),
        "QueryInterface (IConnectionPointContainer)");
  Check(points->FindConnectionPoint(events, events_.Receive()),
        "IConnectionPointContainer::FindConnectionPoint");
  sink_ = std::make_unique<EventSink>(events, std::move(on_remove_me));
  Check(events_->Advise(sink_.get(), &connection_), "IConnectionPoint::Advise");
}

VARIANT Container::Call(const wchar_t* method, const std::vector<int16_t>& arguments) {
  ComPtr<IDispatch> dispatch;
  Check(control_->QueryInterface(IID_IDispatch, dispatch.ReceiveAny()),
        "QueryInterface (IDispatch)");
  std::wstring name = method;
  LPOLESTR names[] = {name.data()};
  DISPID member = 0;
  Check(dispatch->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &member),
        "IDispatch::GetIDsOfNames");

  std::vector<VARIANT> values;
  for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument) {
    VARIANT& value = values.emplace_back();
    VariantInit(&value);
    value.vt = VT_I2;
    value.iVal = *argument;
  }
  DISPPARAMS parameters = {};
  parameters.rgvarg = values.data();
  parameters.cArgs = static_cast<UINT>(values.size());
  VARIANT result;
  VariantInit(&result);
  Check(dispatch->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                         &result, nullptr, nullptr),
        "IDispatch::Invoke");
  return result;
}

}  // namespace rdv::play

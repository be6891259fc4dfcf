#include "tests/component/support/strict_container.h"

#include <gtest/gtest.h>

#include "component/com/identifiers.h"

namespace rdv::test {
namespace {

const struct {
  const IID& iid;
  const char* name;
} kInterfaces[] = {
    {IID_IUnknown, "IUnknown"},
    {IID_IOleClientSite, "IOleClientSite"},
    {IID_IOleWindow, "IOleWindow"},
    {IID_IOleInPlaceSite, "IOleInPlaceSite"},
    {IID_IOleInPlaceSiteEx, "IOleInPlaceSiteEx"},
    {IID_IOleControlSite, "IOleControlSite"},
    {IID_IDispatch, "IDispatch"},
    {IID_IPropertyNotifySink, "IPropertyNotifySink"},
    {IID_IAdviseSink, "IAdviseSink"},
    {kLineConfigEventsId, "__ucRDVLineConfig"},
    {IID_IOleInPlaceUIWindow, "IOleInPlaceUIWindow"},
    {IID_IOleInPlaceFrame, "IOleInPlaceFrame"},
};

std::string NameOf(REFIID iid) {
  for (const auto& each : kInterfaces) {
    if (each.iid == iid) return each.name;
  }
  return "an interface that no container is asked for";
}

std::string AmbientName(DISPID property) {
  switch (property) {
    case DISPID_AMBIENT_USERMODE:
      return "UserMode";
    case DISPID_AMBIENT_UIDEAD:
      return "UIDead";
    case DISPID_AMBIENT_FONT:
      return "Font";
    case DISPID_AMBIENT_BACKCOLOR:
      return "BackColor";
    case DISPID_AMBIENT_FORECOLOR:
      return "ForeColor";
    default:
      return std::to_string(property);
  }
}

}  // namespace

// One interface of the site: identity and references are the container's.
template <class Interface>
class StrictContainer::SitePart : public Interface {
 public:
  explicit SitePart(StrictContainer& owner) : owner_(owner) {}
  virtual ~SitePart() = default;

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    return owner_.Query(iid, object);
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++owner_.references_; }
  STDMETHODIMP_(ULONG) Release() override { return --owner_.references_; }

 protected:
  StrictContainer& owner_;
};

class StrictContainer::ClientSite final : public SitePart<IOleClientSite> {
 public:
  using SitePart::SitePart;
  STDMETHODIMP SaveObject() override { return owner_.Call("IOleClientSite.SaveObject"); }
  STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker** moniker) override {
    *moniker = nullptr;
    return owner_.Call("IOleClientSite.GetMoniker", E_NOTIMPL);
  }
  STDMETHODIMP GetContainer(IOleContainer** container) override {
    *container = nullptr;
    return owner_.Call("IOleClientSite.GetContainer", E_NOINTERFACE);
  }
  STDMETHODIMP ShowObject() override { return owner_.Call("IOleClientSite.ShowObject"); }
  STDMETHODIMP OnShowWindow(BOOL) override { return owner_.Call("IOleClientSite.OnShowWindow"); }
  STDMETHODIMP RequestNewObjectLayout() override {
    return owner_.Call("IOleClientSite.RequestNewObjectLayout", E_NOTIMPL);
  }
};

class StrictContainer::InPlaceSite final : public SitePart<IOleInPlaceSite> {
 public:
  using SitePart::SitePart;
  STDMETHODIMP GetWindow(HWND* window) override {
    return owner_.GiveWindow("IOleInPlaceSite.GetWindow", window);
  }
  STDMETHODIMP ContextSensitiveHelp(BOOL) override {
    return owner_.Call("IOleInPlaceSite.ContextSensitiveHelp", E_NOTIMPL);
  }
  STDMETHODIMP CanInPlaceActivate() override {
    return owner_.Call("IOleInPlaceSite.CanInPlaceActivate");
  }
  STDMETHODIMP OnInPlaceActivate() override {
    return owner_.Call("IOleInPlaceSite.OnInPlaceActivate");
  }
  STDMETHODIMP OnUIActivate() override { return owner_.Call("IOleInPlaceSite.OnUIActivate"); }
  STDMETHODIMP GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document,
                                LPRECT place, LPRECT clip, LPOLEINPLACEFRAMEINFO info) override;
  STDMETHODIMP Scroll(SIZE) override { return owner_.Call("IOleInPlaceSite.Scroll", E_NOTIMPL); }
  STDMETHODIMP OnUIDeactivate(BOOL) override {
    return owner_.Call("IOleInPlaceSite.OnUIDeactivate");
  }
  STDMETHODIMP OnInPlaceDeactivate() override {
    return owner_.Call("IOleInPlaceSite.OnInPlaceDeactivate");
  }
  STDMETHODIMP DiscardUndoState() override {
    return owner_.Call("IOleInPlaceSite.DiscardUndoState", E_NOTIMPL);
  }
  STDMETHODIMP DeactivateAndUndo() override {
    return owner_.Call("IOleInPlaceSite.DeactivateAndUndo", E_NOTIMPL);
  }
  STDMETHODIMP OnPosRectChange(LPCRECT) override {
    return owner_.Call("IOleInPlaceSite.OnPosRectChange");
  }
};

class StrictContainer::ControlSite final : public SitePart<IOleControlSite> {
 public:
  using SitePart::SitePart;
  STDMETHODIMP OnControlInfoChanged() override {
    return owner_.Call("IOleControlSite.OnControlInfoChanged");
  }
  STDMETHODIMP LockInPlaceActive(BOOL) override {
    return owner_.Call("IOleControlSite.LockInPlaceActive", E_NOTIMPL);
  }
  STDMETHODIMP GetExtendedControl(IDispatch** control) override {
    *control = nullptr;
    return owner_.Call("IOleControlSite.GetExtendedControl", E_NOTIMPL);
  }
  STDMETHODIMP TransformCoords(POINTL*, POINTF*, DWORD) override {
    return owner_.Call("IOleControlSite.TransformCoords", E_NOTIMPL);
  }
  STDMETHODIMP TranslateAccelerator(MSG*, DWORD) override {
    return owner_.Call("IOleControlSite.TranslateAccelerator", S_FALSE);
  }
  STDMETHODIMP OnFocus(BOOL gained) override {
    return owner_.Call(gained ? "IOleControlSite.OnFocus(TRUE)" : "IOleControlSite.OnFocus(FALSE)");
  }
  STDMETHODIMP ShowPropertyFrame() override {
    return owner_.Call("IOleControlSite.ShowPropertyFrame", E_NOTIMPL);
  }
};

class StrictContainer::Ambients final : public SitePart<IDispatch> {
 public:
  using SitePart::SitePart;
  STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID property, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                      UINT*) override {
    const auto found = owner_.offers_.ambients.find(property);
    const bool known = found != owner_.offers_.ambients.end();
    const HRESULT answer = owner_.Question("Ambient(" + AmbientName(property) + ")",
                                           known ? S_OK : DISP_E_MEMBERNOTFOUND);
    if (FAILED(answer) || !known) return answer;
    if (std::holds_alternative<std::monostate>(found->second)) return answer;
    if (const bool* truth = std::get_if<bool>(&found->second)) {
      result->vt = VT_BOOL;
      result->boolVal = *truth ? VARIANT_TRUE : VARIANT_FALSE;
    } else if (const LONG* number = std::get_if<LONG>(&found->second)) {
      result->vt = VT_I4;
      result->lVal = *number;
    } else {
      result->vt = VT_DISPATCH;
      result->pdispVal = std::get<IDispatch*>(found->second);
      if (result->pdispVal) result->pdispVal->AddRef();
    }
    return answer;
  }
};

class StrictContainer::PropertyNotifySink final : public SitePart<IPropertyNotifySink> {
 public:
  using SitePart::SitePart;
  STDMETHODIMP OnChanged(DISPID) override { return owner_.Call("IPropertyNotifySink.OnChanged"); }
  STDMETHODIMP OnRequestEdit(DISPID) override {
    return owner_.Call("IPropertyNotifySink.OnRequestEdit");
  }
};

class StrictContainer::ViewAdviseSink final : public SitePart<IAdviseSink> {
 public:
  using SitePart::SitePart;
  STDMETHODIMP_(void) OnDataChange(FORMATETC*, STGMEDIUM*) override {
    owner_.Call("IAdviseSink.OnDataChange");
  }
  STDMETHODIMP_(void) OnViewChange(DWORD, LONG) override {
    owner_.Call("IAdviseSink.OnViewChange");
  }
  STDMETHODIMP_(void) OnRename(IMoniker*) override { owner_.Call("IAdviseSink.OnRename"); }
  STDMETHODIMP_(void) OnSave() override { owner_.Call("IAdviseSink.OnSave"); }
  STDMETHODIMP_(void) OnClose() override { owner_.Call("IAdviseSink.OnClose"); }
};

// An identity of its own, as in real containers.
class StrictContainer::Events final : public SitePart<IDispatch> {
 public:
  using SitePart::SitePart;
  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    const bool known = iid == IID_IUnknown || iid == IID_IDispatch || iid == kLineConfigEventsId;
    *object = known ? this : nullptr;
    if (known) AddRef();
    return known ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                      UINT*) override {
    return owner_.Call(member == kRemoveMeEvent ? "event RemoveME" : "an unknown event");
  }
};

// The container's frame or document window, each an object of its own.
class StrictContainer::Surrounding final : public SitePart<IOleInPlaceFrame> {
 public:
  Surrounding(StrictContainer& owner, std::string name) : SitePart(owner), name_(std::move(name)) {}
  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    const bool known = iid == IID_IUnknown || iid == IID_IOleWindow ||
                       iid == IID_IOleInPlaceUIWindow ||
                       (iid == IID_IOleInPlaceFrame && name_ == "frame");
    *object = known ? this : nullptr;
    if (known) AddRef();
    return owner_.Question(name_ + ".QueryInterface(" + NameOf(iid) + ")",
                           known ? S_OK : E_NOINTERFACE);
  }
  STDMETHODIMP GetWindow(HWND* window) override {
    return owner_.GiveWindow(name_ + ".GetWindow", window);
  }
  STDMETHODIMP ContextSensitiveHelp(BOOL) override { return Call("ContextSensitiveHelp"); }
  STDMETHODIMP GetBorder(LPRECT) override { return Call("GetBorder", INPLACE_E_NOTOOLSPACE); }
  STDMETHODIMP RequestBorderSpace(LPCBORDERWIDTHS) override {
    return Call("RequestBorderSpace", INPLACE_E_NOTOOLSPACE);
  }
  STDMETHODIMP SetBorderSpace(LPCBORDERWIDTHS) override { return Call("SetBorderSpace"); }
  STDMETHODIMP SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR) override {
    owner_.active_object_ = object;
    return Call(object ? "SetActiveObject(object)" : "SetActiveObject(null)");
  }
  STDMETHODIMP InsertMenus(HMENU, LPOLEMENUGROUPWIDTHS) override { return Call("InsertMenus"); }
  STDMETHODIMP SetMenu(HMENU, HOLEMENU, HWND) override { return Call("SetMenu"); }
  STDMETHODIMP RemoveMenus(HMENU) override { return Call("RemoveMenus"); }
  STDMETHODIMP SetStatusText(LPCOLESTR) override { return Call("SetStatusText"); }
  STDMETHODIMP EnableModeless(BOOL enable) override {
    return Call(enable ? "EnableModeless(TRUE)" : "EnableModeless(FALSE)");
  }
  STDMETHODIMP TranslateAccelerator(LPMSG, WORD) override {
    return Call("TranslateAccelerator", S_FALSE);
  }

 private:
  HRESULT Call(const char* method, HRESULT usual = S_OK) {
    return owner_.Call(name_ + "." + method, usual);
  }
  const std::string name_;
};

STDMETHODIMP StrictContainer::InPlaceSite::GetWindowContext(IOleInPlaceFrame** frame,
                                                            IOleInPlaceUIWindow** document,
                                                            LPRECT place, LPRECT clip,
                                                            LPOLEINPLACEFRAMEINFO info) {
  *frame = nullptr;
  *document = nullptr;
  *place = *clip = owner_.offers_.place;
  info->fMDIApp = FALSE;
  info->hwndFrame = owner_.window_;
  info->haccel = nullptr;
  info->cAccelEntries = 0;
  const HRESULT answer = owner_.Call("IOleInPlaceSite.GetWindowContext");
  if (FAILED(answer)) return answer;
  if (owner_.offers_.frame) *frame = owner_.frame_.get();
  if (owner_.offers_.document) *document = owner_.document_.get();
  if (*frame) (*frame)->AddRef();
  if (*document) (*document)->AddRef();
  return answer;
}

StrictContainer::StrictContainer(Offers offers)
    : offers_(std::move(offers)),
      window_(CreateWindowExW(0, L"STATIC", L"Strict container", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                              0, 0, 1000, 500, nullptr, nullptr, nullptr, nullptr)),
      client_site_(std::make_unique<ClientSite>(*this)),
      in_place_site_(std::make_unique<InPlaceSite>(*this)),
      control_site_(std::make_unique<ControlSite>(*this)),
      ambients_(std::make_unique<Ambients>(*this)),
      property_sink_(std::make_unique<PropertyNotifySink>(*this)),
      view_sink_(std::make_unique<ViewAdviseSink>(*this)),
      events_(std::make_unique<Events>(*this)),
      frame_(std::make_unique<Surrounding>(*this, "frame")),
      document_(std::make_unique<Surrounding>(*this, "document")) {}

StrictContainer::~StrictContainer() {
  if (IsWindow(window_)) DestroyWindow(window_);
}

IOleClientSite* StrictContainer::Site() {
  return client_site_.get();
}
IAdviseSink* StrictContainer::ViewSink() {
  return view_sink_.get();
}
IDispatch* StrictContainer::EventSink() {
  return events_.get();
}
IPropertyNotifySink* StrictContainer::PropertySink() {
  return property_sink_.get();
}

void StrictContainer::Announce(std::vector<std::string> calls, std::vector<std::string> questions) {
  announced_ = std::move(calls);
  came_ = 0;
  announced_questions_ = {questions.begin(), questions.end()};
  asked_.clear();
}

void StrictContainer::CheckAllCame() {
  for (; came_ < announced_.size(); ++came_) {
    ADD_FAILURE() << "did not come: " << announced_[came_];
  }
  for (const std::string& question : announced_questions_) {
    EXPECT_TRUE(asked_.count(question)) << "was not asked: " << question;
  }
  Announce({}, {});
}

void StrictContainer::Misbehave(
    std::function<std::optional<HRESULT>(const std::string& name)> inside) {
  misbehaviour_ = std::move(inside);
}

int StrictContainer::Count(const std::string& name) const {
  const auto found = counts_.find(name);
  return found == counts_.end() ? 0 : found->second;
}

int StrictContainer::Succeeded(const std::string& name) const {
  const auto found = successes_.find(name);
  return found == successes_.end() ? 0 : found->second;
}

std::set<std::string> StrictContainer::Names() const {
  std::set<std::string> names;
  for (const auto& [name, count] : counts_) names.insert(name);
  return names;
}

IUnknown* StrictContainer::Find(REFIID iid) {
  const std::string name = NameOf(iid);
  if (iid == IID_IUnknown || iid == IID_IOleClientSite) return client_site_.get();
  if (!offers_.interfaces.count(name)) return nullptr;
  if (iid == IID_IOleInPlaceSite || iid == IID_IOleWindow) return in_place_site_.get();
  if (iid == IID_IOleControlSite) return control_site_.get();
  if (iid == IID_IDispatch) return ambients_.get();
  if (iid == IID_IPropertyNotifySink) return property_sink_.get();
  if (iid == IID_IAdviseSink) return view_sink_.get();
  return nullptr;
}

HRESULT StrictContainer::Query(REFIID iid, void** object) {
  IUnknown* found = Find(iid);
  *object = nullptr;
  const HRESULT answer =
      Question("QueryInterface(" + NameOf(iid) + ")", found ? S_OK : E_NOINTERFACE);
  // A misbehaving container succeeds without giving anything.
  if (FAILED(answer) || !found || answer == S_FALSE) return SUCCEEDED(answer) ? S_OK : answer;
  found->AddRef();
  *object = found;
  return S_OK;
}

HRESULT StrictContainer::GiveWindow(const std::string& who, HWND* window) {
  *window = nullptr;
  const HRESULT answer = Call(who);
  if (answer == S_OK) *window = window_;
  return answer == S_FALSE ? S_OK : answer;
}

HRESULT StrictContainer::Call(const std::string& name, HRESULT usual) {
  if (!misbehaviour_) {
    if (came_ < announced_.size() && announced_[came_] == name) {
      ++came_;
    } else {
      ADD_FAILURE() << "came unannounced: " << name;
    }
  }
  return Answer(name, usual);
}

HRESULT StrictContainer::Question(const std::string& name, HRESULT usual) {
  if (!misbehaviour_) {
    EXPECT_TRUE(announced_questions_.count(name)) << "was asked unannounced: " << name;
    asked_.insert(name);
  }
  return Answer(name, usual);
}

HRESULT StrictContainer::Answer(const std::string& name, HRESULT usual) {
  ++counts_[name];
  HRESULT answer = usual;
  if (misbehaviour_) {
    if (const auto other = misbehaviour_(name)) answer = *other;
  }
  if (SUCCEEDED(answer)) ++successes_[name];
  return answer;
}

}  // namespace rdv::test

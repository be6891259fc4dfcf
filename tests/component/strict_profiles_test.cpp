// The control in containers that go through their steps in the order of the usual ones. Every call
// and question that the control has for its container is in these tables.
#include <gtest/gtest.h>

#include "component/com/com_pointer.h"
#include "tests/component/support/ole_test.h"
#include "tests/component/support/strict_host.h"
#include "tests/support/site_files.h"
#include "tools/site_folder/site_folder.h"
#include "widgets/control_ids.h"

namespace rdv::test {
namespace {

const std::vector<std::string> kSiteQuestions = {"QueryInterface(IDispatch)",
                                                 "QueryInterface(IOleControlSite)"};
const std::vector<std::string> kLook = {"Ambient(Font)", "Ambient(BackColor)",
                                        "Ambient(ForeColor)"};
const std::vector<std::string> kPlaceQuestions = {"QueryInterface(IOleInPlaceSite)",
                                                  "Ambient(UserMode)"};
// Whether the user may do anything. In design mode the first says it all.
const std::vector<std::string> kInputQuestions = {"Ambient(UserMode)", "Ambient(UIDead)"};

std::vector<std::string> operator+(std::vector<std::string> left,
                                   const std::vector<std::string>& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

const std::vector<std::string> kActivation = {
    "IOleInPlaceSite.CanInPlaceActivate", "IOleInPlaceSite.OnInPlaceActivate",
    "IOleInPlaceSite.GetWindow", "IOleInPlaceSite.GetWindowContext", "IOleClientSite.ShowObject"};

class StrictContainers : public OleTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OleTest::SetUp());
    OLECHAR face[] = L"Courier New";
    FONTDESC font = {sizeof(FONTDESC), face, {}, FW_BOLD, DEFAULT_CHARSET, FALSE, FALSE, FALSE};
    font.cySize.int64 = 12 * 10000;
    ASSERT_EQ(OleCreateFontIndirect(&font, IID_IFont, font_.ReceiveUntyped()), S_OK);
    font_object_ = ComPointer<IDispatch>::From(font_.Get(), IID_IDispatch);
  }
  void TearDown() override {
    font_object_.Reset();
    font_.Reset();
  }

  Offers Form(bool user_mode) const {
    return {
        .interfaces = {"IOleInPlaceSite", "IOleControlSite", "IDispatch", "IPropertyNotifySink"},
        .ambients = {{DISPID_AMBIENT_USERMODE, user_mode},
                     {DISPID_AMBIENT_FONT, font_object_.Get()},
                     {DISPID_AMBIENT_BACKCOLOR, static_cast<LONG>(RGB(200, 220, 240))},
                     {DISPID_AMBIENT_FORECOLOR, static_cast<LONG>(RGB(20, 0, 90))}},
        .frame = true,
        .document = true};
  }

  ComPointer<IFont> font_;
  ComPointer<IDispatch> font_object_;
};

void TakeSite(StrictHost& host) {
  EXPECT_EQ(host.object->SetClientSite(host.container.Site()), S_OK);
}

void LetGo(StrictHost& host) {
  EXPECT_EQ(host.object->SetClientSite(nullptr), S_OK);
}

void ConnectEvents(StrictHost& host) {
  EXPECT_EQ(host.Point(kLineConfigEventsId)->Advise(host.container.EventSink(), &host.event_cookie),
            S_OK);
}

void CloseUnsaved(StrictHost& host) {
  EXPECT_EQ(host.object->Close(OLECLOSE_NOSAVE), S_OK);
}

void ExpectNothingHeld(StrictHost& host) {
  host.object.Reset();
  EXPECT_EQ(host.container.ReferencesLeft(), 0u);
  EXPECT_EQ(host.library.CanUnloadNow(), S_OK);
}

void Resize(StrictHost& host, LONG width, LONG height) {
  SIZEL size = {width, height};
  EXPECT_EQ(host.object->SetExtent(DVASPECT_CONTENT, &size), S_OK);
}

// Into a metafile, as designers and printers do. The result, unless nothing can be painted here.
void Draw(StrictHost& host) {
  if (!CanPaint()) return;
  const HDC metafile = CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr);
  const RECTL bounds = {0, 0, 400, 200};
  EXPECT_EQ(host.As<IViewObject2>(IID_IViewObject2)
                ->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, metafile, &bounds, nullptr,
                       nullptr, 0),
            S_OK);
  const HENHMETAFILE picture = CloseEnhMetaFile(metafile);
  EXPECT_GT(GetEnhMetaFileBits(picture, 0, nullptr), 1000u);
  DeleteEnhMetaFile(picture);
}

std::vector<std::string> DrawQuestions() {
  return CanPaint() ? kLook : std::vector<std::string>();
}

// A property bag that has nothing and takes nothing.
class EmptyBag final : public IPropertyBag {
 public:
  STDMETHODIMP QueryInterface(REFIID, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }
  STDMETHODIMP Read(LPCOLESTR, VARIANT*, IErrorLog*) override { return E_INVALIDARG; }
  STDMETHODIMP Write(LPCOLESTR, VARIANT*) override {
    ADD_FAILURE() << "the control has no properties to write";
    return E_FAIL;
  }
};

const std::vector<std::string> kUserInterface = {
    "IOleInPlaceSite.OnUIActivate", "frame.SetActiveObject(object)", "frame.SetBorderSpace",
    "document.SetActiveObject(object)", "document.SetBorderSpace"};
const std::vector<std::string> kNoUserInterface = {"frame.SetActiveObject(null)",
                                                   "document.SetActiveObject(null)",
                                                   "IOleInPlaceSite.OnUIDeactivate"};
// With the focus inside so far.
const std::vector<std::string> kOutOfPlace = {"IOleControlSite.OnFocus(FALSE)",
                                              "IOleInPlaceSite.OnInPlaceDeactivate"};

// Placed on a form, resized, drawn and saved; never activated.
TEST_F(StrictContainers, ADesignerOfFormsInDesignMode) {
  StrictHost host(Form(false));
  EmptyBag bag;
  Walk(host,
       {{"site", TakeSite, {}, kSiteQuestions},
        {"new state",
         [](StrictHost& at) {
           EXPECT_EQ(at.As<IPersistPropertyBag>(IID_IPersistPropertyBag)->InitNew(), S_OK);
         },
         {},
         {}},
        {"view sink",
         [](StrictHost& at) {
           EXPECT_EQ(at.As<IViewObject2>(IID_IViewObject2)
                         ->SetAdvise(DVASPECT_CONTENT, 0, at.container.ViewSink()),
                     S_OK);
         },
         {},
         {}},
        {"size", [](StrictHost& at) { Resize(at, 20000, 9000); }, {"IAdviseSink.OnViewChange"}, {}},
        {"same size", [](StrictHost& at) { Resize(at, 20000, 9000); }, {}, {}},
        {"picture", Draw, {}, DrawQuestions()},
        {"another font",
         [](StrictHost& at) {
           EXPECT_EQ(at.Control()->OnAmbientPropertyChange(DISPID_AMBIENT_FONT), S_OK);
         },
         {"IAdviseSink.OnViewChange"},
         {}},
        {"no data in a designer",
         [](StrictHost& at) {
           VARIANT_BOOL shown = VARIANT_TRUE;
           EXPECT_EQ(at.As<LineConfigInterface>(kLineConfigInterfaceId)->ShowControl(1, &shown),
                     S_OK);
           EXPECT_EQ(shown, VARIANT_FALSE);
         },
         {},
         {"Ambient(UserMode)"}},
        {"saved",
         [&bag](StrictHost& at) {
           EXPECT_EQ(at.As<IPersistPropertyBag>(IID_IPersistPropertyBag)->Save(&bag, TRUE, TRUE),
                     S_OK);
         },
         {},
         {}},
        {"closed", CloseUnsaved, {}, {}},
        {"no view sink",
         [](StrictHost& at) {
           EXPECT_EQ(at.As<IViewObject2>(IID_IViewObject2)->SetAdvise(DVASPECT_CONTENT, 0, nullptr),
                     S_OK);
         },
         {},
         {}},
        {"let go", LetGo, {}, {}}});
  ExpectNothingHeld(host);
}

// A designer that does activate what lies on its form: it lies there, and does nothing.
TEST_F(StrictContainers, ADesignerOfFormsThatActivatesInDesignMode) {
  StrictHost host(Form(false));
  Walk(host, {{"site", TakeSite, {}, kSiteQuestions},
              {"activated", [](StrictHost& at) { EXPECT_EQ(at.Verb(OLEIVERB_UIACTIVATE), S_OK); },
               kActivation, kPlaceQuestions + kLook},
              {"not live",
               [](StrictHost& at) {
                 EXPECT_FALSE(IsWindowEnabled(at.Form()));
                 MSG event = {};
                 event.message = WM_SYSCHAR;
                 event.wParam = L'r';
                 EXPECT_EQ(at.Control()->OnMnemonic(&event), S_OK);
                 event.wParam = L'c';
                 EXPECT_EQ(at.Control()->OnMnemonic(&event), S_OK);
                 EXPECT_EQ(at.Press(VK_TAB), S_FALSE);
               },
               {},
               {"Ambient(UserMode)"}},
              {"no focus by force",
               [](StrictHost& at) {
                 SetFocus(at.Child(control_id::cmdOK));
                 EXPECT_FALSE(IsChild(at.Form(), GetFocus()));
               },
               {},
               {}},
              {"let go", LetGo, {"IOleInPlaceSite.OnInPlaceDeactivate"}, {}}});
  ExpectNothingHeld(host);
}

// A running form: state from its file, events frozen while it loads, active at once.
TEST_F(StrictContainers, ADesignerOfFormsInRunMode) {
  const SiteFiles files("plain");
  const SiteFolder found(files.Folder().u16string());
  StrictHost host(Form(true));
  EmptyBag bag;
  Walk(host,
       {{"site", TakeSite, {}, kSiteQuestions},
        {"state",
         [&bag](StrictHost& at) {
           EXPECT_EQ(at.As<IPersistPropertyBag>(IID_IPersistPropertyBag)->Load(&bag, nullptr),
                     S_OK);
         },
         {},
         {}},
        {"frozen",
         [](StrictHost& at) { EXPECT_EQ(at.Control()->FreezeEvents(TRUE), S_OK); },
         {},
         {}},
        {"size", [](StrictHost& at) { Resize(at, 24000, 10000); }, {}, {}},
        {"events", ConnectEvents, {}, {}},
        {"active", [](StrictHost& at) { EXPECT_EQ(at.Verb(OLEIVERB_INPLACEACTIVATE), S_OK); },
         kActivation, kPlaceQuestions + kInputQuestions + kLook},
        {"cancelled while frozen",
         [](StrictHost& at) { SendMessageW(at.Child(control_id::cmdCancel), BM_CLICK, 0, 0); },
         kUserInterface + std::vector<std::string>{"IOleControlSite.OnFocus(TRUE)"},
         kInputQuestions},
        {"thawed",
         [](StrictHost& at) { EXPECT_EQ(at.Control()->FreezeEvents(FALSE), S_OK); },
         {"event RemoveME"},
         {}},
        {"shown",
         [](StrictHost& at) {
           VARIANT_BOOL shown = VARIANT_FALSE;
           EXPECT_EQ(at.As<LineConfigInterface>(kLineConfigInterfaceId)->ShowControl(1, &shown),
                     S_OK);
           EXPECT_EQ(shown, VARIANT_TRUE);
         },
         {},
         {"Ambient(UserMode)"}},
        {"a key past the last stop",
         [](StrictHost& at) {
           SetFocus(at.Child(control_id::cmdCancel));
           EXPECT_EQ(at.Press(VK_TAB), S_FALSE);
         },
         {"IOleControlSite.TranslateAccelerator"},
         kInputQuestions},
        {"cancelled",
         [](StrictHost& at) { SendMessageW(at.Child(control_id::cmdCancel), BM_CLICK, 0, 0); },
         {"event RemoveME"},
         {}},
        {"perhaps halted",
         [](StrictHost& at) {
           EXPECT_EQ(at.Control()->OnAmbientPropertyChange(DISPID_AMBIENT_UIDEAD), S_OK);
         },
         {},
         kInputQuestions + kLook},
        {"an editor opens",
         [](StrictHost& at) {
           SetFocus(at.Child(control_id::LVRDVLineConfig));
           PumpMessages();
           SendMessageW(at.Child(control_id::LVRDVLineConfig), WM_KEYDOWN, VK_DOWN, 0);
           EXPECT_EQ(at.Press(VK_F2), S_OK);
           PumpMessages();
           CONTROLINFO info = {};
           info.cb = sizeof info;
           EXPECT_EQ(at.Control()->GetControlInfo(&info), S_OK);
           EXPECT_EQ(info.dwFlags, static_cast<DWORD>(CTRLINFO_EATS_RETURN | CTRLINFO_EATS_ESCAPE));
         },
         {"IOleControlSite.OnControlInfoChanged"},
         kInputQuestions},
        {"the editor closes",
         [](StrictHost& at) { EXPECT_EQ(at.Press(VK_ESCAPE), S_OK); },
         {"IOleControlSite.OnControlInfoChanged"},
         kInputQuestions},
        {"no events",
         [](StrictHost& at) {
           EXPECT_EQ(at.Point(kLineConfigEventsId)->Unadvise(at.event_cookie), S_OK);
         },
         {},
         {}},
        {"out of the interface",
         [](StrictHost& at) { EXPECT_EQ(at.InPlace()->UIDeactivate(), S_OK); },
         kNoUserInterface,
         {}},
        {"out of place",
         [](StrictHost& at) { EXPECT_EQ(at.InPlace()->InPlaceDeactivate(), S_OK); },
         kOutOfPlace,
         {}},
        {"closed", CloseUnsaved, {}, {}},
        {"let go", LetGo, {}, {}}});
  ExpectNothingHeld(host);
}

// A form in a 64-bit office program: drawn first, shown by the Show verb, moved by its rectangles,
// hidden by a verb; loads from a stream after it has its site.
TEST_F(StrictContainers, AFormOfA64BitOfficeProgram) {
  StrictHost host(Form(true));
  ComPointer<IStream> stream;
  ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive()), S_OK);
  Walk(host,
       {{"status",
         [](StrictHost& at) {
           DWORD status = 0;
           EXPECT_EQ(at.object->GetMiscStatus(DVASPECT_CONTENT, &status), S_OK);
           EXPECT_EQ(status, 131473u);
         },
         {},
         {}},
        {"site", TakeSite, {}, kSiteQuestions},
        {"state twice",
         [&](StrictHost& at) {
           const auto state = at.As<IPersistStreamInit>(IID_IPersistStreamInit);
           EXPECT_EQ(state->Load(stream.Get()), S_OK);
           EXPECT_EQ(state->Load(stream.Get()), S_OK);
           EXPECT_EQ(state->Save(stream.Get(), TRUE), S_OK);
         },
         {},
         {}},
        {"names",
         [](StrictHost& at) { EXPECT_EQ(at.object->SetHostNames(L"Forms", L"Form"), S_OK); },
         {},
         {}},
        {"size", [](StrictHost& at) { Resize(at, 24000, 10000); }, {}, {}},
        {"picture", Draw, {}, DrawQuestions()},
        {"property sink",
         [](StrictHost& at) {
           EXPECT_EQ(
               at.Point(IID_IPropertyNotifySink)->Advise(at.container.Site(), &at.property_cookie),
               S_OK);
         },
         {},
         {"QueryInterface(IPropertyNotifySink)"}},
        {"shown", [](StrictHost& at) { EXPECT_EQ(at.Verb(OLEIVERB_SHOW), S_OK); }, kActivation,
         kPlaceQuestions + kInputQuestions + kLook},
        {"moved",
         [](StrictHost& at) {
           const RECT place = {5, 5, 1000, 480};
           EXPECT_EQ(at.InPlace()->SetObjectRects(&place, &place), S_OK);
           RECT client = {};
           GetClientRect(at.Form(), &client);
           EXPECT_EQ(client.right, 995);
         },
         {},
         {}},
        {"interface", [](StrictHost& at) { EXPECT_EQ(at.Verb(OLEIVERB_UIACTIVATE), S_OK); },
         kUserInterface + std::vector<std::string>{"IOleControlSite.OnFocus(TRUE)"},
         kInputQuestions},
        {"hidden",
         [](StrictHost& at) { EXPECT_EQ(at.Verb(OLEIVERB_HIDE), S_OK); },
         kNoUserInterface + std::vector<std::string>{"IOleControlSite.OnFocus(FALSE)"},
         {}},
        {"no property sink",
         [](StrictHost& at) {
           EXPECT_EQ(at.Point(IID_IPropertyNotifySink)->Unadvise(at.property_cookie), S_OK);
         },
         {},
         {}},
        {"closed", CloseUnsaved, {"IOleInPlaceSite.OnInPlaceDeactivate"}, {}},
        {"let go", LetGo, {}, {}}});
  ExpectNothingHeld(host);
}

void QuickActivate(StrictHost& host, IFont* font) {
  QACONTAINER given = {};
  given.cbSize = sizeof given;
  given.pClientSite = host.container.Site();
  given.pAdviseSink = reinterpret_cast<IAdviseSinkEx*>(host.container.ViewSink());
  given.pPropertyNotifySink = host.container.PropertySink();
  given.pUnkEventSink = host.container.EventSink();
  given.dwAmbientFlags = QACONTAINER_USERMODE;
  given.colorBack = RGB(1, 2, 3);
  given.colorFore = RGB(9, 8, 7);
  given.pFont = font;
  QACONTROL answer = {};
  answer.cbSize = sizeof answer;
  EXPECT_EQ(host.As<IQuickActivate>(IID_IQuickActivate)->QuickActivate(&given, &answer), S_OK);
  EXPECT_EQ(answer.dwMiscStatus, kMiscStatus);
  EXPECT_NE(answer.dwEventCookie, 0u);
  EXPECT_NE(answer.dwPropNotifyCookie, 0u);
  host.event_cookie = answer.dwEventCookie;
  host.property_cookie = answer.dwPropNotifyCookie;
}

// The font is asked for what it is: it names the one that stands for the wished one here.
void ExpectFont(HWND window, IFont* font) {
  BSTR name = nullptr;
  SHORT weight = 0;
  EXPECT_EQ(font->get_Name(&name), S_OK);
  EXPECT_EQ(font->get_Weight(&weight), S_OK);
  LOGFONTW has = {};
  GetObjectW(reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0)), sizeof has, &has);
  EXPECT_STREQ(has.lfFaceName, name);
  EXPECT_EQ(has.lfWeight, weight);
  SysFreeString(name);
}

// Forms of managed programs tell all in one call, with fonts and colours, and have no ambient
// properties of their own then; a failure in that call would make them drop the control.
TEST_F(StrictContainers, AManagedForm) {
  StrictHost host({.interfaces = {"IOleInPlaceSite", "IOleControlSite", "IPropertyNotifySink"}});
  const auto property_questions =
      std::vector<std::string>{"QueryInterface(IPropertyNotifySink)"} + kSiteQuestions;
  Walk(host,
       {{"all at once",
         [this](StrictHost& at) { QuickActivate(at, font_.Get()); },
         {},
         property_questions},
        {"new state",
         [](StrictHost& at) {
           EXPECT_EQ(at.As<IPersistStreamInit>(IID_IPersistStreamInit)->InitNew(), S_OK);
         },
         {},
         {}},
        {"frozen",
         [](StrictHost& at) { EXPECT_EQ(at.Control()->FreezeEvents(TRUE), S_OK); },
         {},
         {}},
        {"size",
         [](StrictHost& at) {
           Resize(at, 24000, 10000);
           SIZEL size = {};
           EXPECT_EQ(at.object->GetExtent(DVASPECT_CONTENT, &size), S_OK);
           EXPECT_EQ(size.cx, 24000);
         },
         {"IAdviseSink.OnViewChange"},
         {}},
        {"active",
         [](StrictHost& at) { EXPECT_EQ(at.Verb(OLEIVERB_INPLACEACTIVATE), S_OK); },
         kActivation,
         {"QueryInterface(IOleInPlaceSite)"}},
        {"has the font",
         [this](StrictHost& at) { ExpectFont(at.Child(control_id::cmdOK), font_.Get()); },
         {},
         {}},
        {"thawed",
         [](StrictHost& at) { EXPECT_EQ(at.Control()->FreezeEvents(FALSE), S_OK); },
         {},
         {}},
        {"interface",
         [](StrictHost& at) { EXPECT_EQ(at.Verb(OLEIVERB_UIACTIVATE), S_OK); },
         {"IOleInPlaceSite.OnUIActivate", "frame.SetActiveObject(object)", "frame.SetBorderSpace",
          "IOleControlSite.OnFocus(TRUE)"},
         {}},
        {"keys",
         [](StrictHost& at) {
           EXPECT_EQ(at.Press(VK_DOWN), S_OK);
           EXPECT_EQ(at.Press(VK_ESCAPE), S_FALSE);
         },
         {"IOleControlSite.TranslateAccelerator"},
         {}},
        {"event",
         [](StrictHost& at) { SendMessageW(at.Child(control_id::cmdCancel), BM_CLICK, 0, 0); },
         {"event RemoveME"},
         {}},
        {"sinks away",
         [](StrictHost& at) {
           EXPECT_EQ(at.Point(kLineConfigEventsId)->Unadvise(at.event_cookie), S_OK);
           EXPECT_EQ(at.Point(IID_IPropertyNotifySink)->Unadvise(at.property_cookie), S_OK);
         },
         {},
         {}},
        {"closed",
         CloseUnsaved,
         std::vector<std::string>{"frame.SetActiveObject(null)", "IOleInPlaceSite.OnUIDeactivate"} +
             kOutOfPlace,
         {}},
        {"let go", LetGo, {}, {}}});
  ExpectNothingHeld(host);
}

// State before the site, no ambient properties, and no deactivation before the end.
TEST_F(StrictContainers, AWindowOfTheTemplateLibrary) {
  StrictHost host({.interfaces = {"IOleInPlaceSite", "IOleControlSite"}});
  Walk(host, {{"new state",
               [](StrictHost& at) {
                 EXPECT_EQ(at.As<IPersistStreamInit>(IID_IPersistStreamInit)->InitNew(), S_OK);
               },
               {},
               {}},
              {"site", TakeSite, {}, kSiteQuestions},
              {"names",
               [](StrictHost& at) { EXPECT_EQ(at.object->SetHostNames(L"AXWIN", nullptr), S_OK); },
               {},
               {}},
              {"size", [](StrictHost& at) { Resize(at, 7726, 3000); }, {}, {}},
              {"active",
               [](StrictHost& at) { EXPECT_EQ(at.Verb(OLEIVERB_INPLACEACTIVATE), S_OK); },
               kActivation,
               {"QueryInterface(IOleInPlaceSite)"}},
              {"size again", [](StrictHost& at) { Resize(at, 8000, 4000); }, {}, {}},
              {"place",
               [](StrictHost& at) {
                 const RECT place = {0, 0, 900, 430};
                 EXPECT_EQ(at.InPlace()->SetObjectRects(&place, &place), S_OK);
               },
               {},
               {}},
              {"closed", CloseUnsaved, {"IOleInPlaceSite.OnInPlaceDeactivate"}, {}},
              {"let go", LetGo, {}, {}}});
  ExpectNothingHeld(host);
}

}  // namespace
}  // namespace rdv::test

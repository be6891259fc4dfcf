// Containers that answer nothing, answer with nothing, call back from inside every call, let go of
// the control there, or destroy its windows. The control must not crash, must tell of the end of
// whatever it told had begun, and must leave nothing behind.
#include <gtest/gtest.h>

#include "tests/component/support/ole_test.h"
#include "tests/component/support/strict_host.h"
#include "widgets/control_ids.h"

namespace rdv::test {
namespace {

Offers Everything() {
  return {.interfaces = {"IOleInPlaceSite", "IOleControlSite", "IDispatch", "IPropertyNotifySink"},
          .ambients = {{DISPID_AMBIENT_USERMODE, true},
                       {DISPID_AMBIENT_BACKCOLOR, static_cast<LONG>(RGB(200, 220, 240))}},
          .frame = true,
          .document = true};
}

// All that a container does with a control. Any of it may fail or lead to nothing here, and the
// control may be gone at any point: the container has let go of it then.
void LiveThrough(StrictHost& host) {
  const auto step = [&](const std::function<void()>& act) {
    if (!host.object) return;
    act();
    PumpMessages();
  };
  step([&] {
    const ComPointer<IOleObject> object = host.object;
    object->SetClientSite(host.container.Site());
  });
  step([&] {
    if (const auto view = host.As<IViewObject2>(IID_IViewObject2)) {
      view->SetAdvise(DVASPECT_CONTENT, 0, host.container.ViewSink());
    }
  });
  step([&] {
    if (const auto point = host.Point(kLineConfigEventsId)) {
      point->Advise(host.container.EventSink(), &host.event_cookie);
    }
  });
  step([&] {
    SIZEL size = {24000, 10000};
    host.object->SetExtent(DVASPECT_CONTENT, &size);
  });
  step([&] { host.Verb(OLEIVERB_UIACTIVATE); });
  step([&] { host.Verb(OLEIVERB_UIACTIVATE); });
  step([&] { host.Control()->OnAmbientPropertyChange(DISPID_UNKNOWN); });
  step([&] { SetFocus(host.Child(control_id::cmdCancel)); });
  step([&] { host.Press(VK_TAB); });
  step([&] { SendMessageW(host.Child(control_id::cmdCancel), BM_CLICK, 0, 0); });
  step([&] { host.InPlace()->UIDeactivate(); });
  step([&] { host.Verb(OLEIVERB_UIACTIVATE); });
  step([&] { host.InPlace()->InPlaceDeactivate(); });
  step([&] { host.Verb(OLEIVERB_SHOW); });
}

// As a host does that takes a control away, whenever that is.
void TakeAway(StrictHost& host) {
  const ComPointer<IOleObject> object = std::move(host.object);
  if (!object) return;
  object->Close(OLECLOSE_NOSAVE);
  object->SetClientSite(nullptr);
}

// The names of all calls and questions that come when nothing is wrong.
std::set<std::string> AllNames() {
  StrictHost host(Everything());
  host.container.Misbehave([](const std::string&) { return std::nullopt; });
  LiveThrough(host);
  TakeAway(host);
  return host.container.Names();
}

void ExpectAllEnded(StrictHost& host, const std::string& what) {
  const StrictContainer& container = host.container;
  EXPECT_EQ(container.Succeeded("IOleInPlaceSite.OnInPlaceActivate"),
            container.Count("IOleInPlaceSite.OnInPlaceDeactivate"))
      << what;
  EXPECT_EQ(container.Succeeded("IOleInPlaceSite.OnUIActivate"),
            container.Count("IOleInPlaceSite.OnUIDeactivate"))
      << what;
  // Whatever the container answered to that: it has heard it.
  EXPECT_EQ(container.Count("IOleControlSite.OnFocus(TRUE)"),
            container.Count("IOleControlSite.OnFocus(FALSE)"))
      << what;
  EXPECT_EQ(container.ActiveObject(), nullptr) << what;
  EXPECT_EQ(container.ReferencesLeft(), 0u) << what;
  EXPECT_EQ(host.library.CanUnloadNow(), S_OK) << what;
}

class HostileContainers : public OleTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OleTest::SetUp());
    names_ = AllNames();
    // Otherwise the tests would prove nothing.
    ASSERT_GE(names_.size(), 20u);
  }

  // Does `act` once, inside the first call of each name in turn.
  void InsideEachCall(const std::function<std::optional<HRESULT>(StrictHost&)>& act) {
    for (const std::string& name : names_) {
      StrictHost host(Everything());
      bool done = false;
      host.container.Misbehave([&](const std::string& called) -> std::optional<HRESULT> {
        if (called != name || std::exchange(done, true)) return std::nullopt;
        return act(host);
      });
      LiveThrough(host);
      TakeAway(host);
      PumpMessages();
      EXPECT_TRUE(done) << name;
      ExpectAllEnded(host, name);
    }
  }

  std::set<std::string> names_;
};

TEST_F(HostileContainers, TheUsualLifeBringsEveryCallAndEndsAll) {
  StrictHost host(Everything());
  host.container.Misbehave([](const std::string&) { return std::nullopt; });
  LiveThrough(host);
  TakeAway(host);
  ExpectAllEnded(host, "nothing wrong");
  for (const char* name : {"IOleInPlaceSite.CanInPlaceActivate",
                           "IOleInPlaceSite.OnInPlaceActivate",
                           "IOleInPlaceSite.GetWindow",
                           "IOleInPlaceSite.GetWindowContext",
                           "IOleClientSite.ShowObject",
                           "IOleInPlaceSite.OnUIActivate",
                           "frame.SetActiveObject(object)",
                           "frame.SetBorderSpace",
                           "document.SetActiveObject(object)",
                           "document.SetBorderSpace",
                           "IOleControlSite.OnFocus(TRUE)",
                           "IOleControlSite.OnFocus(FALSE)",
                           "IOleControlSite.TranslateAccelerator",
                           "event RemoveME",
                           "frame.SetActiveObject(null)",
                           "IOleInPlaceSite.OnUIDeactivate",
                           "IOleInPlaceSite.OnInPlaceDeactivate",
                           "QueryInterface(IOleInPlaceSite)",
                           "QueryInterface(IOleControlSite)",
                           "QueryInterface(IDispatch)",
                           "Ambient(UserMode)",
                           "Ambient(UIDead)",
                           "Ambient(Font)",
                           "IAdviseSink.OnViewChange"}) {
    EXPECT_TRUE(names_.count(name)) << name;
  }
}

TEST_F(HostileContainers, AnswerEachCallThatItIsNotImplemented) {
  for (const std::string& name : names_) {
    StrictHost host(Everything());
    host.container.Misbehave([&](const std::string& called) -> std::optional<HRESULT> {
      if (called != name) return std::nullopt;
      return E_NOTIMPL;
    });
    LiveThrough(host);
    TakeAway(host);
    ExpectAllEnded(host, name);
  }
}

TEST_F(HostileContainers, AnswerEverythingThatItIsNotImplemented) {
  StrictHost host(Everything());
  host.container.Misbehave([](const std::string&) { return E_NOTIMPL; });
  LiveThrough(host);
  EXPECT_EQ(host.Form(), nullptr);
  TakeAway(host);
  ExpectAllEnded(host, "everything");
}

// Some containers answer for every ambient property, with nothing in it.
TEST_F(HostileContainers, AnswerForAmbientPropertiesWithNothingInThem) {
  StrictHost host({.interfaces = {"IOleInPlaceSite", "IDispatch"},
                   .ambients = {{DISPID_AMBIENT_USERMODE, std::monostate()},
                                {DISPID_AMBIENT_FONT, std::monostate()},
                                {DISPID_AMBIENT_BACKCOLOR, std::monostate()}}});
  host.container.Misbehave([](const std::string&) { return std::nullopt; });
  ASSERT_EQ(host.object->SetClientSite(host.container.Site()), S_OK);
  EXPECT_EQ(host.Verb(OLEIVERB_UIACTIVATE), S_OK);
  // Nothing said is not design mode.
  EXPECT_TRUE(IsWindowEnabled(host.Form()));
  EXPECT_EQ(host.container.Count("IOleInPlaceSite.OnUIActivate"), 1);
  TakeAway(host);
  ExpectAllEnded(host, "nothing said");
}

// A success of another kind, for which the container gives null: windows, interfaces, values.
TEST_F(HostileContainers, SucceedWithoutGivingAnything) {
  for (const std::string& name : names_) {
    StrictHost host(Everything());
    host.container.Misbehave([&](const std::string& called) -> std::optional<HRESULT> {
      if (called != name) return std::nullopt;
      return S_FALSE;
    });
    LiveThrough(host);
    TakeAway(host);
    ExpectAllEnded(host, name);
  }
}

TEST_F(HostileContainers, ActivateFromInsideEachCall) {
  InsideEachCall([](StrictHost& host) -> std::optional<HRESULT> {
    if (host.object) host.Verb(OLEIVERB_UIACTIVATE);
    return std::nullopt;
  });
}

TEST_F(HostileContainers, DeactivateTheInterfaceFromInsideEachCall) {
  InsideEachCall([](StrictHost& host) -> std::optional<HRESULT> {
    if (host.object) host.InPlace()->UIDeactivate();
    return std::nullopt;
  });
}

TEST_F(HostileContainers, DeactivateFromInsideEachCall) {
  InsideEachCall([](StrictHost& host) -> std::optional<HRESULT> {
    if (host.object) host.InPlace()->InPlaceDeactivate();
    return std::nullopt;
  });
}

TEST_F(HostileContainers, DeactivateAndActivateFromInsideEachCall) {
  InsideEachCall([](StrictHost& host) -> std::optional<HRESULT> {
    if (host.object) host.InPlace()->InPlaceDeactivate();
    if (host.object) host.Verb(OLEIVERB_UIACTIVATE);
    return std::nullopt;
  });
}

TEST_F(HostileContainers, TakeTheSiteAwayInsideEachCall) {
  InsideEachCall([](StrictHost& host) -> std::optional<HRESULT> {
    if (host.object) host.object->SetClientSite(nullptr);
    return std::nullopt;
  });
}

TEST_F(HostileContainers, LetGoOfTheControlInsideEachCall) {
  InsideEachCall([](StrictHost& host) -> std::optional<HRESULT> {
    TakeAway(host);
    return std::nullopt;
  });
}

// Not even a close before the last release.
TEST_F(HostileContainers, ReleaseTheControlInsideEachCall) {
  InsideEachCall([](StrictHost& host) -> std::optional<HRESULT> {
    host.object.Reset();
    return std::nullopt;
  });
}

TEST_F(HostileContainers, DestroyTheirWindowInsideEachCall) {
  InsideEachCall([](StrictHost& host) -> std::optional<HRESULT> {
    DestroyWindow(host.container.Window());
    return std::nullopt;
  });
}

// Would go on for ever if the control followed.
TEST_F(HostileContainers, ActivateAgainWheneverTheControlLeaves) {
  StrictHost host(Everything());
  int depth = 0;
  host.container.Misbehave([&](const std::string& called) -> std::optional<HRESULT> {
    const bool leaving = called == "IOleInPlaceSite.OnUIDeactivate" ||
                         called == "IOleInPlaceSite.OnInPlaceDeactivate" ||
                         called == "frame.SetActiveObject(null)";
    if (leaving && host.object && depth < 100) {
      ++depth;
      host.Verb(OLEIVERB_UIACTIVATE);
    }
    return std::nullopt;
  });
  LiveThrough(host);
  TakeAway(host);
  ExpectAllEnded(host, "activation without end");
  EXPECT_LT(depth, 100);
}

TEST_F(HostileContainers, KeepEventsFrozenToTheEnd) {
  StrictHost host(Everything());
  host.container.Misbehave([](const std::string&) { return std::nullopt; });
  for (int time = 0; time < 3; ++time) host.Control()->FreezeEvents(TRUE);
  LiveThrough(host);
  TakeAway(host);
  EXPECT_EQ(host.container.Count("event RemoveME"), 0);
  ExpectAllEnded(host, "frozen");
}

TEST_F(HostileContainers, LoadTwiceWithASite) {
  StrictHost host(Everything());
  host.container.Misbehave([](const std::string&) { return std::nullopt; });
  ComPointer<IStream> stream;
  ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive()), S_OK);
  ASSERT_EQ(host.object->SetClientSite(host.container.Site()), S_OK);
  const auto state = host.As<IPersistStreamInit>(IID_IPersistStreamInit);
  EXPECT_EQ(state->Load(stream.Get()), S_OK);
  EXPECT_EQ(state->Load(stream.Get()), S_OK);
  EXPECT_EQ(host.Verb(OLEIVERB_SHOW), S_OK);
  EXPECT_EQ(state->InitNew(), S_OK);
  EXPECT_NE(host.Form(), nullptr);
  TakeAway(host);
}

// A form in a window that was destroyed without a word is made anew, in the window that is there.
TEST_F(HostileContainers, DestroyTheFormAndActivateAgain) {
  StrictHost host(Everything());
  host.container.Misbehave([](const std::string&) { return std::nullopt; });
  ASSERT_EQ(host.object->SetClientSite(host.container.Site()), S_OK);
  ASSERT_EQ(host.Verb(OLEIVERB_UIACTIVATE), S_OK);
  const HWND first = host.Form();
  DestroyWindow(first);
  EXPECT_EQ(host.Form(), nullptr);
  EXPECT_EQ(host.Verb(OLEIVERB_UIACTIVATE), S_OK);
  ASSERT_NE(host.Form(), nullptr);
  EXPECT_EQ(GetParent(host.Form()), host.container.Window());
  EXPECT_TRUE(IsWindowVisible(host.Form()));
  TakeAway(host);
  ExpectAllEnded(host, "made anew");
}

}  // namespace
}  // namespace rdv::test

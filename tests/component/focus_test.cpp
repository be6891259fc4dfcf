// Where the keyboard is: whatever the container did before, a window inside that gets the focus
// brings the container's keyboard with it, and a control that leaves its place keeps neither.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

// clang-format off
#include <windows.h>
#include <commctrl.h>
// clang-format on

#include "tests/component/support/interception.h"
#include "tests/component/support/ole_test.h"
#include "tests/component/support/placed_control.h"
#include "tests/component/support/strict_host.h"
#include "widgets/control_ids.h"

namespace rdv::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Does `act` whenever the window gets the focus, as containers do that hand it on.
class WhenFocused {
 public:
  WhenFocused(HWND window, std::function<void()> act)
      : act_(std::move(act)),
        interception_(window, [this](UINT message, WPARAM, LPARAM, const auto& pass_on) {
          if (message != WM_SETFOCUS) return pass_on();
          ++times_;
          act_();
          return LRESULT{0};
        }) {}
  int Times() const { return times_; }

 private:
  const std::function<void()> act_;
  int times_ = 0;
  const Interception interception_;
};

class Focus : public OleTest {
 protected:
  static ComPointer<IOleInPlaceObject> InPlace(PlacedControl& placed) {
    return placed.As<IOleInPlaceObject>(IID_IOleInPlaceObject);
  }

  // The keyboard is the control's, and the container has heard so.
  static void HaveKeyboard(PlacedControl& placed) {
    // What the display has to say of windows that are gone may come late, and take the focus along.
    for (int attempt = 0; attempt < 100; ++attempt) {
      PumpMessages();
      SetForegroundWindow(placed.container.Window());
      ASSERT_EQ(placed.Verb(OLEIVERB_UIACTIVATE), S_OK);
      PumpMessages();
      if (IsChild(placed.Form(), GetFocus())) break;
      Sleep(10);
    }
    ASSERT_TRUE(IsChild(placed.Form(), GetFocus()));
    placed.container.TakeCalls();
  }

  static std::vector<std::string> CallsWhenFocused(PlacedControl& placed, int id) {
    SetFocus(placed.Child(id));
    PumpMessages();
    return placed.container.TakeCalls();
  }
};

TEST_F(Focus, TakesTheKeyboardAgainWhenItMovesInsideAfterTheContainerTookThat) {
  PlacedControl placed;
  HaveKeyboard(placed);
  InPlace(placed)->UIDeactivate();
  PumpMessages();
  EXPECT_THAT(placed.container.TakeCalls(), ElementsAre("SetActiveObject(null)", "OnUIDeactivate"));
  ASSERT_TRUE(IsChild(placed.Form(), GetFocus()));
  // It never left: nothing to tell of it.
  EXPECT_THAT(CallsWhenFocused(placed, control_id::cmdCancel),
              ElementsAre("OnUIActivate", "SetActiveObject(object)"));
  EXPECT_THAT(CallsWhenFocused(placed, control_id::LVRDVLineConfig), IsEmpty());
}

TEST_F(Focus, APressWhereItIsTakesTheKeyboardAgain) {
  PlacedControl placed;
  HaveKeyboard(placed);
  const HWND grid = placed.Child(control_id::LVRDVLineConfig);
  ASSERT_EQ(GetFocus(), grid);
  InPlace(placed)->UIDeactivate();
  PumpMessages();
  placed.container.TakeCalls();
  SendMessageW(grid, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(30, 60));
  SendMessageW(grid, WM_LBUTTONUP, 0, MAKELPARAM(30, 60));
  PumpMessages();
  EXPECT_THAT(placed.container.TakeCalls(), ElementsAre("OnUIActivate", "SetActiveObject(object)"));
}

TEST_F(Focus, APressOfTheMouseOnAnyWindowInsideTakesTheKeyboardAgain) {
  for (const int id : {control_id::LVRDVLineConfig, control_id::fraDefault}) {
    PlacedControl placed;
    HaveKeyboard(placed);
    InPlace(placed)->UIDeactivate();
    PumpMessages();
    placed.container.TakeCalls();
    RECT place = {};
    GetWindowRect(placed.Child(id), &place);
    SetForegroundWindow(placed.container.Window());
    ASSERT_TRUE(SetCursorPos((place.left + place.right) / 2, place.bottom - 8));
    INPUT inputs[2] = {};
    inputs[0].type = inputs[1].type = INPUT_MOUSE;
    inputs[0].mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
    inputs[1].mi.dwFlags = MOUSEEVENTF_LEFTUP;
    ASSERT_EQ(SendInput(2, inputs, sizeof(INPUT)), 2u);
    PumpMessages();
    EXPECT_THAT(placed.container.TakeCalls(),
                ElementsAre("OnUIActivate", "SetActiveObject(object)"))
        << id;
  }
}

// Every way out of the container's window.
const std::pair<const char*, std::function<void(PlacedControl&)>> kWaysOut[] = {
    {"hidden", [](PlacedControl& placed) { placed.Verb(OLEIVERB_HIDE); }},
    {"deactivated",
     [](PlacedControl& placed) {
       placed.As<IOleInPlaceObject>(IID_IOleInPlaceObject)->InPlaceDeactivate();
     }},
    {"closed", [](PlacedControl& placed) { placed.object->Close(OLECLOSE_NOSAVE); }},
    {"without a site", [](PlacedControl& placed) { placed.object->SetClientSite(nullptr); }}};

bool StaysInPlace(const char* way) {
  return std::string(way) == "hidden";
}

TEST_F(Focus, GoesToTheContainersWindowWhenTheControlLeaves) {
  for (const auto& [what, leave] : kWaysOut) {
    PlacedControl placed;
    HaveKeyboard(placed);
    leave(placed);
    EXPECT_EQ(GetFocus(), placed.container.Window()) << what;
    PumpMessages();
    EXPECT_EQ(GetFocus(), placed.container.Window()) << what;
    std::vector<std::string> calls = {"SetActiveObject(null)", "OnUIDeactivate", "OnFocus(FALSE)"};
    if (!StaysInPlace(what)) calls.push_back("OnInPlaceDeactivate");
    EXPECT_EQ(placed.container.TakeCalls(), calls) << what;
  }
}

TEST_F(Focus, StaysWhereItIsWhenAControlWithoutItLeaves) {
  for (const auto& [what, leave] : kWaysOut) {
    PlacedControl placed;
    const HWND other = CreateWindowExW(0, L"BUTTON", L"", WS_CHILD | WS_VISIBLE, 0, 0, 9, 9,
                                       placed.container.Window(), nullptr, nullptr, nullptr);
    HaveKeyboard(placed);
    SetFocus(other);
    PumpMessages();
    EXPECT_THAT(placed.container.TakeCalls(),
                ElementsAre("OnFocus(FALSE)", "SetActiveObject(null)", "OnUIDeactivate"))
        << what;
    leave(placed);
    PumpMessages();
    EXPECT_EQ(GetFocus(), other) << what;
    std::vector<std::string> calls;
    if (!StaysInPlace(what)) calls.push_back("OnInPlaceDeactivate");
    EXPECT_EQ(placed.container.TakeCalls(), calls) << what;
  }
}

TEST_F(Focus, IsGivenUpWhereTheContainersWindowDoesNotTakeIt) {
  PlacedControl placed;
  HaveKeyboard(placed);
  const HWND form = placed.Form();
  EnableWindow(placed.container.Window(), FALSE);
  placed.Verb(OLEIVERB_HIDE);
  EXPECT_FALSE(GetFocus() == form || IsChild(form, GetFocus()));
}

TEST_F(Focus, IsGivenUpWhereTheContainerHandsItBackToTheControl) {
  PlacedControl placed;
  HaveKeyboard(placed);
  const HWND form = placed.Form();
  const HWND button = placed.Child(control_id::cmdOK);
  for (const HWND window : {form, button}) {
    const WhenFocused container(placed.container.Window(), [window] { SetFocus(window); });
    placed.Verb(OLEIVERB_HIDE);
    EXPECT_EQ(container.Times(), 1);
    EXPECT_FALSE(GetFocus() == form || IsChild(form, GetFocus()));
    PumpMessages();
    EXPECT_THAT(placed.container.TakeCalls(),
                ElementsAre("SetActiveObject(null)", "OnUIDeactivate", "OnFocus(FALSE)"));
    HaveKeyboard(placed);
  }
}

// The control is on its way out: it does not turn round.
TEST_F(Focus, TheContainersAttemptToActivateTheLeavingControlIsRefused) {
  PlacedControl placed;
  HaveKeyboard(placed);
  HRESULT answer = S_OK;
  const WhenFocused container(placed.container.Window(),
                              [&] { answer = placed.Verb(OLEIVERB_UIACTIVATE); });
  placed.Verb(OLEIVERB_HIDE);
  EXPECT_EQ(container.Times(), 1);
  EXPECT_TRUE(FAILED(answer));
  EXPECT_FALSE(IsWindowVisible(placed.Form()));
  EXPECT_EQ(placed.Verb(OLEIVERB_UIACTIVATE), S_OK);
}

TEST_F(Focus, TheContainerMayEndTheControlWhenItGetsItBack) {
  const Library library;
  {
    PlacedControl placed;
    HaveKeyboard(placed);
    const WhenFocused container(placed.container.Window(), [&] { placed.Remove(); });
    placed.Verb(OLEIVERB_HIDE);
    EXPECT_EQ(container.Times(), 1);
    EXPECT_EQ(placed.container.ReferencesLeft(), 0u);
  }
  {
    PlacedControl placed;
    HaveKeyboard(placed);
    {
      const WhenFocused container(placed.container.Window(),
                                  [&] { DestroyWindow(placed.container.Window()); });
      placed.Verb(OLEIVERB_HIDE);
    }
    PumpMessages();
    EXPECT_THAT(placed.container.TakeCalls(), ElementsAre("SetActiveObject(null)", "OnUIDeactivate",
                                                          "OnFocus(FALSE)", "OnInPlaceDeactivate"));
  }
  EXPECT_EQ(library.CanUnloadNow(), S_OK);
}

TEST_F(Focus, TakesTheKeyboardAgainInASecondPlace) {
  PlacedControl placed;
  for (const LONG leave : {OLEIVERB_HIDE, OLEIVERB_DISCARDUNDOSTATE}) {
    HaveKeyboard(placed);
    if (leave == OLEIVERB_HIDE) {
      placed.Verb(OLEIVERB_HIDE);
    } else {
      InPlace(placed)->InPlaceDeactivate();
    }
    placed.Verb(OLEIVERB_SHOW);
    // Also while what the first place left to be told is still on its way.
    if (leave == OLEIVERB_HIDE) PumpMessages();
    placed.container.TakeCalls();
    EXPECT_THAT(CallsWhenFocused(placed, control_id::cmdOK),
                ElementsAre("OnUIActivate", "SetActiveObject(object)", "OnFocus(TRUE)"));
    placed.Verb(OLEIVERB_HIDE);
  }
}

TEST_F(Focus, AsksAgainForTheKeyboardThatTheContainerRefused) {
  StrictHost host({.interfaces = {"IOleInPlaceSite", "IOleControlSite"}});
  int asked = 0;
  host.container.Misbehave([&](const std::string& name) -> std::optional<HRESULT> {
    if (name != "IOleInPlaceSite.OnUIActivate" || asked++ > 0) return std::nullopt;
    return E_FAIL;
  });
  ASSERT_EQ(host.object->SetClientSite(host.container.Site()), S_OK);
  ASSERT_EQ(host.Verb(OLEIVERB_INPLACEACTIVATE), S_OK);
  SetFocus(host.Child(control_id::cmdOK));
  PumpMessages();
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(host.container.ActiveObject(), nullptr);
  SetFocus(host.Child(control_id::cmdCancel));
  PumpMessages();
  EXPECT_EQ(asked, 2);
  EXPECT_NE(host.container.ActiveObject(), nullptr);
  SetFocus(host.Child(control_id::cmdOK));
  PumpMessages();
  EXPECT_EQ(asked, 2);
  host.object->Close(OLECLOSE_NOSAVE);
  // It came and went once, however often the keyboard was asked for.
  EXPECT_EQ(host.container.Count("IOleControlSite.OnFocus(TRUE)"), 1);
  EXPECT_EQ(host.container.Count("IOleControlSite.OnFocus(FALSE)"), 1);
  host.object->SetClientSite(nullptr);
}

class HeldStill : public Focus {
 protected:
  static void Hold(PlacedControl& placed, bool still) {
    placed.container.ui_dead = still;
    EXPECT_EQ(
        placed.As<IOleControl>(IID_IOleControl)->OnAmbientPropertyChange(DISPID_AMBIENT_UIDEAD),
        S_OK);
    PumpMessages();
  }

  static HRESULT PressTab(PlacedControl& placed) {
    MSG event = {};
    event.hwnd = placed.Form();
    event.message = WM_KEYDOWN;
    event.wParam = VK_TAB;
    return placed.As<IOleInPlaceActiveObject>(IID_IOleInPlaceActiveObject)
        ->TranslateAccelerator(&event);
  }

  // The event that its mnemonic raises.
  static int CancelledByMnemonic(PlacedControl& placed) {
    const int before = placed.container.Events();
    MSG event = {};
    event.message = WM_SYSCHAR;
    event.wParam = L'c';
    EXPECT_EQ(placed.As<IOleControl>(IID_IOleControl)->OnMnemonic(&event), S_OK);
    return placed.container.Events() - before;
  }
};

TEST_F(HeldStill, TakesNoInputUntilTheContainerSaysSo) {
  PlacedControl placed;
  HaveKeyboard(placed);
  ASSERT_EQ(PressTab(placed), S_OK);
  Hold(placed, true);
  EXPECT_TRUE(IsWindowVisible(placed.Form()));
  EXPECT_FALSE(IsWindowEnabled(placed.Form()));
  EXPECT_EQ(GetFocus(), placed.container.Window());
  EXPECT_THAT(placed.container.TakeCalls(), ElementsAre("OnFocus(FALSE)"));
  EXPECT_EQ(PressTab(placed), S_FALSE);
  EXPECT_EQ(CancelledByMnemonic(placed), 0);
  EXPECT_THAT(CallsWhenFocused(placed, control_id::cmdOK), IsEmpty());
  EXPECT_FALSE(IsChild(placed.Form(), GetFocus()));

  Hold(placed, false);
  EXPECT_TRUE(IsWindowEnabled(placed.Form()));
  EXPECT_THAT(CallsWhenFocused(placed, control_id::cmdOK), ElementsAre("OnFocus(TRUE)"));
  EXPECT_EQ(PressTab(placed), S_OK);
  EXPECT_EQ(CancelledByMnemonic(placed), 1);
}

TEST_F(HeldStill, IsPlacedButHasNoKeyboardWhereItStartsSo) {
  PlacedControl placed;
  placed.container.ui_dead = true;
  EXPECT_EQ(placed.Verb(OLEIVERB_UIACTIVATE), S_OK);
  PumpMessages();
  EXPECT_THAT(placed.container.TakeCalls(), ElementsAre("CanInPlaceActivate", "OnInPlaceActivate",
                                                        "GetWindowContext", "ShowObject"));
  EXPECT_TRUE(IsWindowVisible(placed.Form()));
  EXPECT_FALSE(IsWindowEnabled(placed.Form()));
  Hold(placed, false);
  EXPECT_THAT(CallsWhenFocused(placed, control_id::cmdOK),
              ElementsAre("OnUIActivate", "SetActiveObject(object)", "OnFocus(TRUE)"));
}

TEST_F(HeldStill, AFlagOfQuickActivationSaysSoToo) {
  PlacedControl placed({.ambients = false});
  QACONTAINER given = {};
  given.cbSize = sizeof given;
  given.pClientSite = placed.container.Site();
  given.dwAmbientFlags = QACONTAINER_USERMODE | QACONTAINER_UIDEAD;
  QACONTROL answer = {};
  answer.cbSize = sizeof answer;
  ASSERT_EQ(placed.As<IQuickActivate>(IID_IQuickActivate)->QuickActivate(&given, &answer), S_OK);
  EXPECT_EQ(placed.Verb(OLEIVERB_INPLACEACTIVATE), S_OK);
  EXPECT_FALSE(IsWindowEnabled(placed.Form()));
}

}  // namespace
}  // namespace rdv::test

// Where the keyboard is: whatever the container did before, a window inside that gets the focus
// brings the container's keyboard with it, and a control that leaves its place keeps neither.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/component/ole_test.h"
#include "tests/component/placed_control.h"
#include "tests/component/strict_host.h"
#include "widgets/win32/control_ids.h"

namespace rdv::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Focus : public OleTest {
 protected:
  static ComPointer<IOleInPlaceObject> InPlace(PlacedControl& placed) {
    return placed.As<IOleInPlaceObject>(IID_IOleInPlaceObject);
  }

  // The keyboard is the control's, and the container has heard so.
  static void HaveKeyboard(PlacedControl& placed) {
    ASSERT_EQ(placed.Verb(OLEIVERB_UIACTIVATE), S_OK);
    PumpMessages();
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
  // It came once, however often the keyboard was asked for.
  EXPECT_EQ(host.container.Count("IOleControlSite.OnFocus(TRUE)"), 1);
  host.object->Close(OLECLOSE_NOSAVE);
  host.object->SetClientSite(nullptr);
}

}  // namespace
}  // namespace rdv::test

// Keys that a container hands to the control.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

// clang-format off
#include <windows.h>
#include <commctrl.h>
// clang-format on

#include "tests/component/support/held_key.h"
#include "tests/component/support/listener.h"
#include "tests/component/support/ole_test.h"
#include "tests/component/support/placed_control.h"
#include "widgets/control_ids.h"

namespace rdv::test {
namespace {

class Keyboard : public OleTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OleTest::SetUp());
    placed_ = std::make_unique<PlacedControl>();
    placed_->Verb(OLEIVERB_UIACTIVATE);
  }

  HRESULT Press(UINT message, WPARAM key) {
    MSG event = {};
    event.hwnd = GetFocus();
    event.message = message;
    event.wParam = key;
    return placed_->As<IOleInPlaceActiveObject>(IID_IOleInPlaceActiveObject)
        ->TranslateAccelerator(&event);
  }
  int Focus() { return GetDlgCtrlID(GetFocus()); }

  std::unique_ptr<PlacedControl> placed_;
};

TEST_F(Keyboard, StartsInTheGrid) {
  EXPECT_EQ(Focus(), control_id::LVRDVLineConfig);
}

TEST_F(Keyboard, TabWalksTheStopsAndLeavesAtTheEnd) {
  // The unit-type list's focus is in the text part inside it.
  EXPECT_EQ(Press(WM_KEYDOWN, VK_TAB), S_OK);
  EXPECT_EQ(GetDlgCtrlID(GetParent(GetFocus())), control_id::cmbRDVType);
  EXPECT_EQ(Press(WM_KEYDOWN, VK_TAB), S_OK);
  EXPECT_EQ(Focus(), control_id::cmdShowDefaults);
  EXPECT_EQ(Press(WM_KEYDOWN, VK_TAB), S_OK);
  EXPECT_EQ(Focus(), control_id::cmdOK);
  EXPECT_EQ(Press(WM_KEYDOWN, VK_TAB), S_OK);
  EXPECT_EQ(Focus(), control_id::cmdCancel);
  placed_->container.TakeCalls();
  // Apply is disabled: the container is offered the key that would leave.
  EXPECT_EQ(Press(WM_KEYDOWN, VK_TAB), S_FALSE);
  const auto calls = placed_->container.TakeCalls();
  ASSERT_FALSE(calls.empty());
  EXPECT_EQ(calls.back(), "TranslateAccelerator");
}

TEST_F(Keyboard, ShiftTabWalksBackAndLeavesAtTheStart) {
  SetFocus(placed_->Child(control_id::cmdOK));
  const HeldKey shift(VK_SHIFT);
  EXPECT_EQ(Press(WM_KEYDOWN, VK_TAB), S_OK);
  EXPECT_EQ(Focus(), control_id::cmdShowDefaults);
  EXPECT_EQ(Press(WM_KEYDOWN, VK_TAB), S_OK);
  EXPECT_EQ(GetDlgCtrlID(GetParent(GetFocus())), control_id::cmbRDVType);
  EXPECT_EQ(Press(WM_KEYDOWN, VK_TAB), S_OK);
  EXPECT_EQ(Focus(), control_id::LVRDVLineConfig);
  EXPECT_EQ(Press(WM_KEYDOWN, VK_TAB), S_FALSE);
}

TEST_F(Keyboard, ShiftTabComesInAtTheLastStop) {
  SetFocus(placed_->container.Window());
  PumpMessages();
  MSG tab = {};
  tab.message = WM_KEYDOWN;
  tab.wParam = VK_TAB;
  const HeldKey shift(VK_SHIFT);
  EXPECT_EQ(placed_->object->DoVerb(OLEIVERB_UIACTIVATE, &tab, nullptr, 0, nullptr, nullptr), S_OK);
  // Apply comes after it, and is disabled.
  EXPECT_EQ(Focus(), control_id::cmdCancel);
}

TEST_F(Keyboard, ArrowsStayInTheGrid) {
  EXPECT_EQ(Press(WM_KEYDOWN, VK_DOWN), S_OK);
  EXPECT_EQ(Focus(), control_id::LVRDVLineConfig);
}

TEST_F(Keyboard, EscapeOutsideAnEditorIsTheContainers) {
  placed_->container.TakeCalls();
  EXPECT_EQ(Press(WM_KEYDOWN, VK_ESCAPE), S_FALSE);
}

TEST_F(Keyboard, EnterPressesTheButtonWithTheFocus) {
  SetFocus(placed_->Child(control_id::cmdCancel));
  EXPECT_EQ(Press(WM_KEYDOWN, VK_RETURN), S_OK);
  EXPECT_EQ(placed_->container.Events(), 1);
}

TEST_F(Keyboard, MnemonicsPressButtons) {
  CONTROLINFO info = {};
  info.cb = sizeof info;
  const auto control = placed_->As<IOleControl>(IID_IOleControl);
  ASSERT_EQ(control->GetControlInfo(&info), S_OK);
  EXPECT_EQ(info.cAccel, 4);
  EXPECT_EQ(info.dwFlags, 0u);
  // The table stays the control's: a container that asks again gets the same.
  CONTROLINFO again = {};
  again.cb = sizeof again;
  ASSERT_EQ(control->GetControlInfo(&again), S_OK);
  EXPECT_EQ(again.hAccel, info.hAccel);
  MSG event = {};
  event.message = WM_SYSCHAR;
  event.wParam = L'c';
  EXPECT_EQ(control->OnMnemonic(&event), S_OK);
  EXPECT_EQ(placed_->container.Events(), 1);
  event.wParam = L'O';
  EXPECT_EQ(control->OnMnemonic(&event), S_OK);
  EXPECT_EQ(placed_->container.Events(), 2);
  event.wParam = L'x';
  EXPECT_EQ(control->OnMnemonic(&event), S_OK);
  EXPECT_EQ(placed_->container.Events(), 2);
}

// The letters that the control answers to are those that the user sees.
TEST_F(Keyboard, MnemonicsAreUnderlined) {
  std::wstring underlined;
  for (const int id : {control_id::cmdShowDefaults, control_id::cmdOK, control_id::cmdCancel,
                       control_id::cmdApply}) {
    wchar_t painted[64] = L"";
    InternalGetWindowText(placed_->Child(id), painted, 64);
    const std::wstring caption = painted;
    const size_t mark = caption.find(L'&');
    ASSERT_LT(mark + 1, caption.size()) << id;
    underlined += caption[mark + 1];
  }
  CONTROLINFO info = {};
  info.cb = sizeof info;
  ASSERT_EQ(placed_->As<IOleControl>(IID_IOleControl)->GetControlInfo(&info), S_OK);
  ACCEL keys[8] = {};
  const int count = CopyAcceleratorTableW(info.hAccel, keys, 8);
  std::wstring answered;
  for (int index = 0; index < count; ++index) answered += static_cast<wchar_t>(keys[index].key);
  EXPECT_EQ(answered, underlined);
}

// Wine keeps no such state: what is said about it is heard here.
TEST_F(Keyboard, CuesAreShownWhereTheContainerShowsThem) {
  Listener container(placed_->container.Window());
  const Listener form(placed_->Form());
  placed_->As<IOleInPlaceObject>(IID_IOleInPlaceObject)->InPlaceDeactivate();
  container.Answer(WM_QUERYUISTATE, UISF_HIDEACCEL);
  placed_->Verb(OLEIVERB_UIACTIVATE);
  EXPECT_THAT(form.Heard(WM_UPDATEUISTATE),
              testing::ElementsAre(MAKEWPARAM(UIS_SET, UISF_HIDEACCEL),
                                   MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS)));
}

TEST_F(Keyboard, WalkingShowsWhereTheFocusIs) {
  const Listener unit_type(placed_->Child(control_id::cmbRDVType));
  EXPECT_EQ(Press(WM_KEYDOWN, VK_TAB), S_OK);
  EXPECT_THAT(unit_type.Heard(WM_CHANGEUISTATE),
              testing::Contains(WPARAM{MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS)}));
}

// The widest texts do not fit their columns, whose widths are fixed: pointing at them shows all.
TEST_F(Keyboard, TextsThatAreCutOffAreShownAsTips) {
  const HWND grid = placed_->Child(control_id::LVRDVLineConfig);
  EXPECT_NE(SendMessageW(grid, LVM_GETEXTENDEDLISTVIEWSTYLE, 0, 0) & LVS_EX_LABELTIP, 0);
}

}  // namespace
}  // namespace rdv::test

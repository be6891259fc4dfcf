// What keys, the wheel and the mouse may do: only a choice or a typed character changes data, and
// the keyboard is where the user expects it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/component/support/editor_stand_ins.h"
#include "tests/component/support/held_key.h"
#include "tests/component/support/interception.h"
#include "tests/component/support/loaded_control.h"
#include "tests/component/support/patched_import.h"

namespace rdv::test {
namespace {

using testing::Contains;
using testing::Not;

BOOL CALLBACK AddTips(HWND window, LPARAM list) {
  wchar_t name[32] = L"";
  GetClassNameW(window, name, 32);
  if (lstrcmpiW(name, TOOLTIPS_CLASSW) == 0) {
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
  }
  return TRUE;
}

// Of the columns of a header, when the mouse is over it. `owner`: those of this window only.
std::vector<std::wstring> TipsOver(HWND header, HWND owner = nullptr) {
  SendMessageW(header, WM_MOUSEMOVE, 0, MAKELPARAM(2, 2));
  std::vector<HWND> windows;
  EnumThreadWindows(GetCurrentThreadId(), AddTips, reinterpret_cast<LPARAM>(&windows));
  std::erase_if(windows, [&](HWND each) { return owner && GetWindow(each, GW_OWNER) != owner; });
  std::vector<std::wstring> tips;
  for (const HWND window : windows) {
    const LRESULT count = SendMessageW(window, TTM_GETTOOLCOUNT, 0, 0);
    for (LRESULT index = 0; index < count; ++index) {
      wchar_t text[128] = L"";
      TTTOOLINFOW tool = {};
      tool.cbSize = TTTOOLINFOW_V1_SIZE;
      tool.lpszText = text;
      SendMessageW(window, TTM_ENUMTOOLSW, static_cast<WPARAM>(index),
                   reinterpret_cast<LPARAM>(&tool));
      if (tool.hwnd == header) tips.emplace_back(text);
    }
  }
  return tips;
}

class UserHands : public LoadedControl {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(LoadedControl::SetUp());
    ASSERT_NO_FATAL_FAILURE(PlaceAndLoad());
  }
};

TEST_F(UserHands, TheWheelOverAClosedListChangesNoRow) {
  Open(control_id::cmbSoftStop);
  const auto before = AllTexts();
  const HWND list = GetFocus();
  for (const int notches : {-1, 1, 1})
    SendMessageW(list, WM_MOUSEWHEEL, MAKEWPARAM(0, notches * WHEEL_DELTA), 0);
  PumpMessages();
  EXPECT_EQ(AllTexts(), before);
}

TEST_F(UserHands, LeftAndRightInAClosedListGoToTheNeighbouringCells) {
  Open(control_id::cmbImpedance);
  const auto before = AllTexts();
  EXPECT_EQ(Press(VK_RIGHT), S_OK);
  EXPECT_EQ(Focus(), control_id::cmbSoftStop);
  EXPECT_EQ(Press(VK_LEFT), S_OK);
  EXPECT_EQ(Focus(), control_id::cmbImpedance);
  EXPECT_EQ(AllTexts(), before);
}

TEST_F(UserHands, ATextBoxOpensWithItsTextSelected) {
  Open(control_id::txtEWTOption);
  DWORD first = 1;
  DWORD last = 0;
  SendMessageW(GetFocus(), EM_GETSEL, reinterpret_cast<WPARAM>(&first),
               reinterpret_cast<LPARAM>(&last));
  EXPECT_EQ(first, 0u);
  EXPECT_EQ(static_cast<int>(last), GetWindowTextLengthW(GetFocus()));
  SendMessageW(GetFocus(), WM_CHAR, L'5', 0);
  EXPECT_EQ(Text(row_, column::kEWTOption), L"5");
}

TEST_F(UserHands, TypingWhatIsShownKeepsTheEntryWheneverThePlatformTakesItOff) {
  PlaceAndLoad();
  Open(control_id::cmbStartingNodeNumber);
  const HWND list = placed_->Child(control_id::cmbStartingNodeNumber);
  COMBOBOXINFO parts = {};
  parts.cbSize = sizeof parts;
  if (!GetComboBoxInfo(list, &parts)) GTEST_SKIP() << "lists are stand-ins here";
  SendMessageW(list, CB_SETCURSEL, 0, 0);
  SendMessageW(GetParent(list), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(list), CBN_SELENDOK),
               reinterpret_cast<LPARAM>(list));
  wchar_t text[16] = L"";
  GetWindowTextW(list, text, 16);
  ASSERT_STRNE(text, L"");
  // A platform that takes the selection of a list off only when its owner has heard of what was
  // typed.
  const Interception late(
      GetParent(list), [&](UINT message, WPARAM wparam, LPARAM, const auto& pass_on) {
        const LRESULT result = pass_on();
        if (message == WM_COMMAND && HIWORD(wparam) == CBN_EDITCHANGE)
          SendMessageW(parts.hwndList, LB_SETCURSEL, static_cast<WPARAM>(-1), 0);
        return result;
      });
  SendMessageW(parts.hwndItem, EM_SETSEL, 0, -1);
  for (const wchar_t* unit = text; *unit; ++unit) SendMessageW(parts.hwndItem, WM_CHAR, *unit, 1);
  EXPECT_EQ(SendMessageW(list, CB_GETCURSEL, 0, 0), 0);
}

// Windows marks what it writes into the text part of a list; this Wine only where the list has the
// focus.
class MarksWhatItWrites {
 public:
  explicit MarksWhatItWrites(HWND list)
      : list_(list),
        interception_(GetWindow(list, GW_CHILD),
                      [list](UINT message, WPARAM, LPARAM, const auto& pass_on) {
                        const LRESULT result = pass_on();
                        if (message == WM_SETTEXT)
                          SendMessageW(GetWindow(list, GW_CHILD), EM_SETSEL, 0, -1);
                        return result;
                      }) {}
  void ExpectUnmarked(const wchar_t* text) const {
    wchar_t shown[64] = L"";
    GetWindowTextW(list_, shown, 64);
    EXPECT_STREQ(shown, text);
    const auto marked = static_cast<DWORD>(SendMessageW(list_, CB_GETEDITSEL, 0, 0));
    EXPECT_EQ(LOWORD(marked), HIWORD(marked));
  }

 private:
  const HWND list_;
  const Interception interception_;
};

class TypedLists : public LoadedControl {};

TEST_F(TypedLists, ShowNoHighlightedTextWhereTheyAreSetWithoutTheFocus) {
  ASSERT_EQ(placed_->Verb(OLEIVERB_UIACTIVATE), S_OK);
  const MarksWhatItWrites unit_type(placed_->Child(control_id::cmbRDVType));
  const MarksWhatItWrites node_number(placed_->Child(control_id::cmbStartingNodeNumber));
  const auto methods = placed_->As<LineConfigInterface>(kLineConfigInterfaceId);
  VARIANT nothing;
  VariantInit(&nothing);
  ASSERT_EQ(methods->AssignIndextoDefaultBox(6, 1, &nothing), S_OK);
  unit_type.ExpectUnmarked(L"4 Hybrid Lines 2 MOH Lines");
  ASSERT_NO_FATAL_FAILURE(Load());
  ASSERT_EQ(methods->AssignIndextoDefaultBox(5, 5, &nothing), S_OK);
  unit_type.ExpectUnmarked(L"8 Impedance Lines 2 MOH Lines");
  SetFocus(Grid());
  ASSERT_NO_FATAL_FAILURE(Open(control_id::cmbStartingNodeName));
  node_number.ExpectUnmarked(Text(row_, column::kStartingNodeNumber).c_str());
}

TEST_F(UserHands, EscWhileEditingBringsTheCellsBack) {
  Open(control_id::cmbSoftStop);
  const auto before = AllTexts();
  Press(Text(row_, column::kSoftStop) == L"Disabled" ? VK_DOWN : VK_UP);
  ASSERT_NE(AllTexts(), before);
  EXPECT_EQ(Press(VK_ESCAPE), S_OK);
  EXPECT_EQ(AllTexts(), before);
  EXPECT_EQ(Focus(), control_id::LVRDVLineConfig);
}

TEST_F(UserHands, EnterWhileEditingKeepsWhatWasChosen) {
  Open(control_id::cmbSoftStop);
  Press(Text(row_, column::kSoftStop) == L"Disabled" ? VK_DOWN : VK_UP);
  const auto chosen = AllTexts();
  EXPECT_EQ(Press(VK_RETURN), S_OK);
  EXPECT_EQ(AllTexts(), chosen);
}

TEST_F(UserHands, TabInAnOpenListTakesTheHighlightedEntry) {
  if (!CanPaint()) GTEST_SKIP() << "no list drops down here";
  Open(control_id::cmbSoftStop);
  const std::wstring before = Text(row_, column::kSoftStop);
  const HWND list = GetFocus();
  SendMessageW(list, CB_SHOWDROPDOWN, TRUE, 0);
  SendMessageW(list, WM_KEYDOWN, before == L"Disabled" ? VK_DOWN : VK_UP, 0);
  ASSERT_EQ(Text(row_, column::kSoftStop), before);
  EXPECT_EQ(Press(VK_TAB), S_OK);
  EXPECT_NE(Text(row_, column::kSoftStop), before);
  EXPECT_EQ(Focus(), control_id::txtLabel);
}

// Which key takes an entry is the list's own affair.
TEST_F(UserHands, TabTakesTheHighlightedEntryWhateverEnterDoesInTheList) {
  if (!CanPaint()) GTEST_SKIP() << "no list drops down here";
  for (const int id : {control_id::cmbRDVType, control_id::cmbSoftStop}) {
    SCOPED_TRACE(id);
    const bool in_place = id == control_id::cmbSoftStop;
    if (in_place) Open(id);
    const HWND list = placed_->Child(id);
    if (!in_place) SetFocus(list);
    const HWND keyboard = GetFocus();
    ASSERT_TRUE(keyboard == list || IsChild(list, keyboard));
    const LRESULT before = SendMessageW(list, CB_GETCURSEL, 0, 0);
    SendMessageW(list, CB_SHOWDROPDOWN, TRUE, 0);
    SendMessageW(keyboard, WM_KEYDOWN, before == 0 ? VK_DOWN : VK_UP, 0);
    const LRESULT highlighted = SendMessageW(list, CB_GETCURSEL, 0, 0);
    ASSERT_NE(highlighted, before);
    {
      const Interception deaf(keyboard,
                              [](UINT message, WPARAM wparam, LPARAM, const auto& pass_on) {
                                const bool enter = message == WM_KEYDOWN && wparam == VK_RETURN;
                                return enter ? LRESULT{0} : pass_on();
                              });
      EXPECT_EQ(Press(VK_TAB), S_OK);
    }
    PumpMessages();
    EXPECT_EQ(SendMessageW(list, CB_GETDROPPEDSTATE, 0, 0), 0);
    EXPECT_EQ(SendMessageW(list, CB_GETCURSEL, 0, 0), highlighted);
    EXPECT_NE(Focus(), id);
  }
}

// What the list itself is given of the keys.
struct KeysOfTheList {
  static inline std::vector<WPARAM> typed;
};

LRESULT WINAPI WatchTyping(WNDPROC procedure, HWND window, UINT message, WPARAM wparam,
                           LPARAM lparam) {
  if (message == WM_CHAR) KeysOfTheList::typed.push_back(wparam);
  return PatchedImport<decltype(WatchTyping)>::original(procedure, window, message, wparam, lparam);
}

// The list would search for a row by what is typed; Enter, a blank to it, is followed by its
// character, too.
TEST_F(UserHands, NothingTypedOnTheGridSearchesForARow) {
  const PatchedImport<decltype(WatchTyping)> watch("CallWindowProcW", &WatchTyping);
  KeysOfTheList::typed.clear();
  constexpr WPARAM kCtrlB = 2;
  for (const WPARAM key : std::initializer_list<WPARAM>{L'1', L' ', VK_RETURN, kCtrlB})
    SendMessageW(Grid(), WM_CHAR, key, 1);
  EXPECT_THAT(KeysOfTheList::typed, testing::ElementsAre(kCtrlB));
}

TEST_F(UserHands, EnterOnTheGridOpensTheCell) {
  SelectRow(1);
  SetFocus(Grid());
  EXPECT_EQ(Press(VK_RETURN), S_OK);
  EXPECT_NE(Focus(), control_id::LVRDVLineConfig);
  EXPECT_TRUE(IsChild(placed_->Form(), GetFocus()));
}

TEST_F(UserHands, KeysOfOtherWindowsAreLeftAlone) {
  const HWND neighbour = CreateWindowExW(0, L"EDIT", L"", WS_CHILD | WS_VISIBLE, 0, 0, 10, 10,
                                         placed_->container.Window(), nullptr, nullptr, nullptr);
  SetFocus(neighbour);
  for (const WPARAM key : std::initializer_list<WPARAM>{VK_TAB, VK_DOWN, VK_DELETE, VK_F2})
    EXPECT_EQ(PressIn(neighbour, key), S_FALSE) << key;
  EXPECT_EQ(GetFocus(), neighbour);
}

TEST_F(UserHands, CtrlWithTabF4AndPageKeysIsTheHosts) {
  for (const bool editing : {false, true}) {
    if (editing) Open(control_id::txtLabel);
    const HWND focus = GetFocus();
    const HeldKey ctrl(VK_CONTROL);
    for (const WPARAM key : std::initializer_list<WPARAM>{VK_TAB, VK_F4, VK_PRIOR, VK_NEXT})
      EXPECT_EQ(Press(key), S_FALSE) << key;
    EXPECT_EQ(GetFocus(), focus);
  }
}

TEST_F(UserHands, EditingKeysAreClaimedWhileATextIsEditedOnly) {
  EXPECT_EQ(Press(VK_DELETE), S_FALSE);
  Open(control_id::txtLabel);
  EXPECT_EQ(Press(VK_DELETE), S_OK);
  EXPECT_EQ(Press(VK_BACK), S_OK);
  const HeldKey ctrl(VK_CONTROL);
  for (const WPARAM key : std::initializer_list<WPARAM>{'A', 'C', 'V', 'X', 'Z'})
    EXPECT_EQ(Press(key), S_OK) << key;
  EXPECT_EQ(Press('B'), S_FALSE);
}

TEST_F(UserHands, TheFocusOfTheControlsWindowGoesOnToTheChildThatHadItLast) {
  SetFocus(placed_->Child(control_id::cmdCancel));
  PumpMessages();
  SetFocus(placed_->container.Window());
  PumpMessages();
  SetFocus(placed_->Form());
  EXPECT_EQ(Focus(), control_id::cmdCancel);
}

TEST_F(UserHands, ScrollingLeavesTheFocusOnTheGrid) {
  Open(control_id::cmbSoftStop);
  SendMessageW(Grid(), WM_VSCROLL, SB_LINEDOWN, 0);
  EXPECT_EQ(Focus(), control_id::LVRDVLineConfig);
}

TEST_F(UserHands, APressOnTheHeaderLeavesTheFocusOnTheGridOrWhereItWas) {
  if (!CanPaint()) GTEST_SKIP() << "a pressed header is painted, and nothing can be here";
  const auto header = reinterpret_cast<HWND>(SendMessageW(Grid(), LVM_GETHEADER, 0, 0));
  const auto press = [&] {
    RECT caption = {};
    SendMessageW(header, HDM_GETITEMRECT, column::kLabel - 1, reinterpret_cast<LPARAM>(&caption));
    const LPARAM middle =
        MAKELPARAM((caption.left + caption.right) / 2, (caption.top + caption.bottom) / 2);
    SendMessageW(header, WM_LBUTTONDOWN, MK_LBUTTON, middle);
    SendMessageW(header, WM_LBUTTONUP, 0, middle);
    PumpMessages();
  };
  Open(control_id::cmbSoftStop);
  press();
  EXPECT_EQ(Focus(), control_id::LVRDVLineConfig) << "the cell is closed";
  const HWND ok = placed_->Child(control_id::cmdOK);
  SetFocus(ok);
  press();
  EXPECT_THAT(GetFocus(), testing::AnyOf(ok, Grid()));
}

TEST_F(UserHands, AMessageBoxGivesTheFocusBack) {
  SetFocus(placed_->Child(control_id::cmdCancel));
  PumpMessages();
  std::filesystem::remove(files_->DatabaseFile());
  const BoxAnswerer boxes;
  VARIANT_BOOL shown = VARIANT_TRUE;
  placed_->As<LineConfigInterface>(kLineConfigInterfaceId)->ShowControl(1, &shown);
  EXPECT_FALSE(boxes.Texts().empty());
  EXPECT_EQ(Focus(), control_id::cmdCancel);
}

TEST_F(UserHands, TheHostsOwnWindowsEndUiActivation) {
  const HWND neighbour = CreateWindowExW(0, L"EDIT", L"", WS_CHILD | WS_VISIBLE, 0, 0, 10, 10,
                                         placed_->container.Window(), nullptr, nullptr, nullptr);
  placed_->container.TakeCalls();
  SetFocus(neighbour);
  PumpMessages();
  EXPECT_THAT(placed_->container.TakeCalls(), Contains("OnUIDeactivate"));
  EXPECT_EQ(placed_->container.ActiveObject(), nullptr);
  EXPECT_EQ(GetFocus(), neighbour);
  SetFocus(Grid());
  PumpMessages();
  EXPECT_THAT(placed_->container.TakeCalls(), Contains("OnUIActivate"));
}

TEST_F(UserHands, AHostThatComesBackWithItsOwnWindowEndsUiActivation) {
  const HWND neighbour = CreateWindowExW(0, L"EDIT", L"", WS_CHILD | WS_VISIBLE, 0, 0, 10, 10,
                                         placed_->container.Window(), nullptr, nullptr, nullptr);
  SetFocus(nullptr);
  SetFocus(neighbour);
  placed_->container.TakeCalls();
  const auto active = placed_->As<IOleInPlaceActiveObject>(IID_IOleInPlaceActiveObject);
  EXPECT_EQ(active->OnFrameWindowActivate(FALSE), S_OK);
  EXPECT_THAT(placed_->container.TakeCalls(), Not(Contains("OnUIDeactivate")));
  EXPECT_EQ(active->OnFrameWindowActivate(TRUE), S_OK);
  EXPECT_THAT(placed_->container.TakeCalls(), Contains("OnUIDeactivate"));
  SetFocus(Grid());
  PumpMessages();
  placed_->container.TakeCalls();
  EXPECT_EQ(active->OnDocWindowActivate(TRUE), S_OK);
  EXPECT_THAT(placed_->container.TakeCalls(), Not(Contains("OnUIDeactivate")));
}

TEST_F(UserHands, AnotherProgramOnlyBorrowsTheKeyboard) {
  placed_->container.TakeCalls();
  SetFocus(nullptr);
  PumpMessages();
  EXPECT_THAT(placed_->container.TakeCalls(), Not(Contains("OnUIDeactivate")));
}

TEST_F(UserHands, HidingKeepsTheWindowAndShowingShowsIt) {
  const HWND form = placed_->Form();
  EXPECT_EQ(placed_->Verb(OLEIVERB_HIDE), S_OK);
  EXPECT_EQ(placed_->Form(), form);
  EXPECT_FALSE(IsWindowVisible(form));
  EXPECT_EQ(placed_->container.ActiveObject(), nullptr);
  EXPECT_EQ(placed_->Verb(OLEIVERB_SHOW), S_OK);
  EXPECT_EQ(placed_->Form(), form);
  EXPECT_TRUE(IsWindowVisible(form));
}

TEST_F(UserHands, CaptionsThatDoNotFitTheirColumnsAreShownAsTips) {
  if (!CanPaint()) GTEST_SKIP() << "nothing is painted here";
  const auto header = reinterpret_cast<HWND>(SendMessageW(Grid(), LVM_GETHEADER, 0, 0));
  constexpr WPARAM kStartingNode = column::kStartingNode - 1;
  SendMessageW(Grid(), LVM_SETCOLUMNWIDTH, kStartingNode, 20);
  EXPECT_THAT(TipsOver(header), Contains(L"Starting Node"));
  SendMessageW(Grid(), LVM_SETCOLUMNWIDTH, kStartingNode, 1000);
  EXPECT_THAT(TipsOver(header), Not(Contains(L"Starting Node")));
}

// Tips belong to the window around the control, before which they are shown and with which they go.
TEST_F(UserHands, TipsGoWithTheControlIntoAnotherWindow) {
  if (!CanPaint()) GTEST_SKIP() << "nothing is painted here";
  const auto header = [this] {
    return reinterpret_cast<HWND>(SendMessageW(Grid(), LVM_GETHEADER, 0, 0));
  };
  SendMessageW(Grid(), LVM_SETCOLUMNWIDTH, column::kStartingNode - 1, 20);
  ASSERT_THAT(TipsOver(header(), placed_->container.Window()), Contains(L"Starting Node"));
  const HWND other = CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, 1300, 500,
                                     nullptr, nullptr, nullptr, nullptr);
  placed_->As<IOleInPlaceObject>(IID_IOleInPlaceObject)->InPlaceDeactivate();
  placed_->container.place_in = other;
  ASSERT_EQ(placed_->Verb(OLEIVERB_INPLACEACTIVATE), S_OK);
  EXPECT_THAT(TipsOver(header(), other), Contains(L"Starting Node"));
  placed_->Remove();
  DestroyWindow(other);
}

}  // namespace
}  // namespace rdv::test

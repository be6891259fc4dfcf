// The grid and the lists as windows: what they pass on to the platform's own, what they do when
// those refuse, and how they look. Windows only.
#ifdef _WIN32

#include <gmock/gmock.h>

#include "tests/support/control_fixture.h"
#include "tests/support/import_patch.h"
#include "tests/support/window_probe.h"
#include "widgets/win32/combo_box_window.h"
#include "widgets/win32/line_grid_window.h"

namespace rdv::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr int kQuotedRow = 3;  // of configuration 1 of the site "plain": its label has quotes

class GridWindow : public ControlTest {
 protected:
  void SetUp() override {
    ControlTest::SetUp();
    if (!MakesDropDownLists()) GTEST_SKIP() << kNoDropDownLists;
    UseSite("plain");
    Create();
    ASSERT_TRUE(control().ShowControl(1));
  }

  HWND Grid() const { return dynamic_cast<win32::LineGridWindow&>(grid()).Handle(); }
  HWND Header() const { return reinterpret_cast<HWND>(SendMessageW(Grid(), LVM_GETHEADER, 0, 0)); }
  HWND FormWindow() const { return GetParent(GetParent(Grid())); }
  static HWND WindowOf(Editor& list) { return dynamic_cast<win32::ComboBoxWindow&>(list).Handle(); }

  LRESULT Send(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const {
    return SendMessageW(Grid(), message, wparam, lparam);
  }
  RECT RowPlace(int row) const {
    RECT place = {};
    place.left = LVIR_BOUNDS;
    Send(LVM_GETITEMRECT, static_cast<WPARAM>(row - 1), reinterpret_cast<LPARAM>(&place));
    return place;
  }
  LPARAM Middle(int row, int column) const {
    const RECT place = RowPlace(row);
    LONG x = place.left;
    for (int before = 1; before < column; ++before) x += ColumnPixels(before);
    return MAKELPARAM(x + ColumnPixels(column) / 2, (place.top + place.bottom) / 2);
  }
  LONG ColumnPixels(int column) const {
    return static_cast<LONG>(Send(LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column - 1)));
  }
  void FillBeyondTheWindow() {
    for (int row = 11; row <= 40; ++row) AddRow(grid(), RowKey(100 + row), CellsOf(grid(), 1));
  }
  bool AnyEditorVisible() const {
    const auto editors = form().Editors();
    return std::any_of(editors.begin(), editors.end(),
                       [](const Editor* editor) { return editor->Visible(); });
  }
  std::vector<int> SelectedRows() const {
    std::vector<int> rows;
    for (int row = 1; row <= grid().RowCount(); ++row) {
      if (grid().Selected(row)) rows.push_back(row);
    }
    return rows;
  }
};

TEST_F(GridWindow, IsAReportWhoseWholeRowsAreSelectedTogetherAndNeverSorted) {
  const auto style = static_cast<DWORD>(GetWindowLongW(Grid(), GWL_STYLE));
  EXPECT_EQ(style & LVS_TYPEMASK, static_cast<DWORD>(LVS_REPORT));
  EXPECT_NE(style & LVS_SHOWSELALWAYS, 0u);
  EXPECT_EQ(style & (LVS_SINGLESEL | LVS_EDITLABELS | LVS_SORTASCENDING | LVS_SORTDESCENDING), 0u);
  const auto extended = static_cast<DWORD>(Send(LVM_GETEXTENDEDLISTVIEWSTYLE));
  EXPECT_NE(extended & LVS_EX_FULLROWSELECT, 0u);
  EXPECT_NE(extended & LVS_EX_LABELTIP, 0u);
  EXPECT_EQ(extended & LVS_EX_HEADERDRAGDROP, 0u);
}

TEST_F(GridWindow, HasLeftAlignedColumns) {
  for (WPARAM index = 0; index < 20; ++index) {
    LVCOLUMNW column = {};
    column.mask = LVCF_FMT;
    Send(LVM_GETCOLUMNW, index, reinterpret_cast<LPARAM>(&column));
    EXPECT_EQ(column.fmt & LVCFMT_JUSTIFYMASK, LVCFMT_LEFT) << index;
  }
}

TEST_F(GridWindow, HasRowsThatAnOpenEditorDoesNotLeave) {
  Click(4, column::kVolume);
  RECT editor = {};
  GetWindowRect(WindowOf(form().cmbVolume), &editor);
  MapWindowPoints(nullptr, Grid(), reinterpret_cast<POINT*>(&editor), 2);
  EXPECT_GE(editor.top, RowPlace(4).top);
  EXPECT_LE(editor.bottom, RowPlace(5).top);
}

TEST_F(GridWindow, AScrollMessageHidesTheEditorAndScrollsTheList) {
  FillBeyondTheWindow();
  Click(1, column::kVolume);
  ASSERT_TRUE(AnyEditorVisible());
  Send(WM_VSCROLL, SB_LINEDOWN);
  EXPECT_FALSE(AnyEditorVisible());
  EXPECT_EQ(Send(LVM_GETTOPINDEX), 1);
  Click(5, column::kVolume);
  ChangeColumnWidth(column::kLabel, 9000);
  Click(5, column::kVolume);
  Send(WM_HSCROLL, SB_LINERIGHT);
  EXPECT_FALSE(AnyEditorVisible());
  EXPECT_LT(RowPlace(1).left, 0);
}

TEST_F(GridWindow, TheWheelHidesTheEditorAndScrollsTheList) {
  FillBeyondTheWindow();
  Click(1, column::kVolume);
  ASSERT_TRUE(AnyEditorVisible());
  Send(WM_MOUSEWHEEL, MAKEWPARAM(0, -WHEEL_DELTA), 0);
  EXPECT_FALSE(AnyEditorVisible());
  EXPECT_GT(Send(LVM_GETTOPINDEX), 0);
}

// What the grid's own procedure was called with.
std::vector<std::pair<UINT, WPARAM>> passed_on;
HWND watched = nullptr;

LRESULT WINAPI Watch(WNDPROC procedure, HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (window == watched) passed_on.emplace_back(message, wparam);
  return ImportPatch<decltype(Watch)>::original(procedure, window, message, wparam, lparam);
}

TEST_F(GridWindow, TheListGetsWhatTheControlDoesNotAnswer) {
  const ImportPatch<decltype(Watch)> watch(GetModuleHandleW(nullptr), "CallWindowProcW", &Watch);
  watched = Grid();
  const auto passes = [&](UINT message, WPARAM wparam) {
    passed_on.clear();
    Send(message, wparam, 1);
    return std::find(passed_on.begin(), passed_on.end(), std::pair(message, wparam)) !=
           passed_on.end();
  };
  EXPECT_TRUE(passes(WM_CHAR, 1)) << "ctrl+a";
  EXPECT_TRUE(passes(WM_MOUSEWHEEL, MAKEWPARAM(0, WHEEL_DELTA)));
  EXPECT_TRUE(passes(WM_MOUSEMOVE, 0));
  EXPECT_TRUE(passes(WM_MOUSELEAVE, 0));
  EXPECT_TRUE(passes(WM_VSCROLL, SB_ENDSCROLL));
  for (const int key : {VK_DOWN, VK_HOME, VK_F5, VK_DELETE, VK_ADD}) {
    EXPECT_TRUE(passes(WM_KEYDOWN, static_cast<WPARAM>(key))) << key;
  }
  for (const int key : {VK_F2, VK_RETURN}) {
    EXPECT_FALSE(passes(WM_KEYDOWN, static_cast<WPARAM>(key))) << "opens a cell: " << key;
  }
  EXPECT_FALSE(passes(WM_CHAR, VK_RETURN)) << "has opened a cell";
  // The list would search, or select.
  EXPECT_FALSE(passes(WM_CHAR, L'5'));
  EXPECT_FALSE(passes(WM_CHAR, L' '));
  EXPECT_FALSE(passes(WM_KEYDOWN, VK_SPACE));
  watched = nullptr;
}

TEST_F(GridWindow, APressOfAnyButtonBeginsWithHiddenEditors) {
  struct Button {
    UINT down, up;
    WPARAM held;
  };
  for (const Button& button :
       {Button{WM_LBUTTONDOWN, WM_LBUTTONUP, MK_LBUTTON},
        Button{WM_RBUTTONDOWN, WM_RBUTTONUP, MK_RBUTTON},
        Button{WM_MBUTTONDOWN, WM_MBUTTONUP, MK_MBUTTON},
        Button{WM_XBUTTONDOWN, WM_XBUTTONUP, MAKEWPARAM(MK_XBUTTON1, XBUTTON1)},
        Button{WM_LBUTTONDBLCLK, WM_LBUTTONUP, MK_LBUTTON},
        Button{WM_MBUTTONDBLCLK, WM_MBUTTONUP, MK_MBUTTON}}) {
    Click(1, column::kVolume);
    ASSERT_TRUE(AnyEditorVisible());
    Send(button.down, button.held, Middle(2, column::kLine));
    EXPECT_FALSE(AnyEditorVisible()) << button.down;
    Send(button.up, 0, Middle(2, column::kLine));
    EXPECT_THAT(SelectedRows(), ElementsAre(2)) << button.down;
  }
}

// The box of a press has taken the release. The pointer is over another row when the list hears of
// the mouse again.
TEST_F(GridWindow, AReleaseThatABoxHasTakenCountsWhereTheButtonWasPressedAndOnce) {
  const auto labels = Column(column::kLabel);
  Send(WM_LBUTTONDOWN, MK_LBUTTON, Middle(kQuotedRow, column::kLabel));
  ASSERT_FALSE(Messages().empty());
  int releases = 0;
  const auto on_mouse_up = grid().on_mouse_up;
  grid().on_mouse_up = [&](Twips x, Twips y) {
    ++releases;
    EXPECT_EQ(grid().HitTest(x, y), kQuotedRow);
    on_mouse_up(x, y);
  };
  Send(WM_MOUSEMOVE, 0, Middle(5, column::kLabel));
  Send(WM_MOUSEMOVE, 0, Middle(6, column::kLabel));
  Send(WM_LBUTTONUP, 0, Middle(6, column::kLabel));
  EXPECT_EQ(releases, 1);
  EXPECT_EQ(Focus(), "txtLabel");
  EXPECT_THAT(SelectedRows(), ElementsAre(kQuotedRow));
  for (int row = 1; row <= grid().RowCount(); ++row) {
    if (row == kQuotedRow) continue;
    EXPECT_EQ(Cell(row, column::kLabel), labels[static_cast<size_t>(row - 1)]);
  }
}

TEST_F(GridWindow, AnotherPressFindsALostReleaseDone) {
  Send(WM_LBUTTONDOWN, MK_LBUTTON, Middle(kQuotedRow, column::kLabel));
  std::vector<int> released;
  grid().on_mouse_up = [&](Twips x, Twips y) {
    released.push_back(grid().HitTest(x, y).value_or(0));
  };
  Send(WM_LBUTTONDOWN, MK_LBUTTON, Middle(5, column::kLabel));
  EXPECT_THAT(released, ElementsAre(kQuotedRow));
  Send(WM_LBUTTONUP, 0, Middle(5, column::kLabel));
  EXPECT_THAT(released, ElementsAre(kQuotedRow, 5));
}

// As one that has no memory left.
UINT refused = 0;
WNDPROC procedure_before = nullptr;

LRESULT CALLBACK Refuse(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == refused) return -1;
  return CallWindowProcW(procedure_before, window, message, wparam, lparam);
}

class Refusing {
 public:
  Refusing(HWND window, UINT message) : window_(window) {
    refused = message;
    procedure_before = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Refuse)));
  }
  Refusing(const Refusing&) = delete;
  Refusing& operator=(const Refusing&) = delete;
  ~Refusing() {
    SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure_before));
  }

 private:
  const HWND window_;
};

std::string ProcedureIn(const std::vector<Message>& messages) {
  if (messages.size() != 1) return std::to_string(messages.size()) + " messages";
  const std::string text = ToUtf8(messages[0].text);
  return text.substr(text.rfind(" - ") + 3);
}

TEST_F(GridWindow, AListViewThatTakesNoColumnFailsTheLoad) {
  {
    const Refusing refusing(Grid(), LVM_INSERTCOLUMNW);
    EXPECT_FALSE(control().ShowControl(1));
    EXPECT_EQ(ProcedureIn(Messages()), "FormatLVControl");
  }
  EXPECT_TRUE(control().ShowControl(1));
  EXPECT_EQ(grid().ColumnCount(), 20);
  EXPECT_EQ(grid().RowCount(), 10);
}

TEST_F(GridWindow, AListViewThatTakesNoRowKeepsNoKeyOfIt) {
  {
    const Refusing refusing(Grid(), LVM_INSERTITEMW);
    control().ShowControl(1);
    EXPECT_EQ(grid().RowCount(), 0);
    EXPECT_EQ(grid().FindRow(u"a1"), std::nullopt);
  }
  Messages();
  EXPECT_TRUE(control().ShowControl(1));
}

TEST_F(GridWindow, AListThatTakesNoEntryFailsTheLoad) {
  const Refusing refusing(WindowOf(form().cmbRDVType), CB_ADDSTRING);
  EXPECT_FALSE(control().ShowControl(1));
  EXPECT_EQ(ProcedureIn(Messages()), "LoadDefaultRDVType");
}

TEST_F(GridWindow, AListDropsToThirtyEntriesAtMost) {
  Click(2, column::kStartingNode);
  for (ComboBox* list : {&form().cmbNISOption, &form().cmbStartingNodeNumber}) {
    list->SetVisible(true);
    const HWND window = WindowOf(*list);
    SendMessageW(window, CB_SHOWDROPDOWN, TRUE, 0);
    COMBOBOXINFO parts = {};
    parts.cbSize = sizeof parts;
    ASSERT_TRUE(GetComboBoxInfo(window, &parts));
    RECT inside = {};
    GetClientRect(parts.hwndList, &inside);
    const auto height = SendMessageW(parts.hwndList, LB_GETITEMHEIGHT, 0, 0);
    const auto shown = std::min<LRESULT>(list->ListCount(), 30);
    EXPECT_EQ(inside.bottom / height, shown);
    SendMessageW(window, CB_SHOWDROPDOWN, FALSE, 0);
  }
}

TEST_F(GridWindow, ResizingLeavesNoTextHighlighted) {
  const HWND unit_type = WindowOf(form().cmbRDVType);
  const auto highlighted = [&] {
    const auto range = static_cast<DWORD>(SendMessageW(unit_type, CB_GETEDITSEL, 0, 0));
    return HIWORD(range) - LOWORD(range);
  };
  ASSERT_FALSE(form().cmbRDVType.Text().empty());
  EXPECT_EQ(highlighted(), 0) << "after it was selected";
  RECT place = {};
  GetClientRect(FormWindow(), &place);
  for (const int more : {100, 50}) {
    SetWindowPos(FormWindow(), nullptr, 0, 0, place.right + more, place.bottom + more,
                 SWP_NOZORDER | SWP_NOACTIVATE);
    EXPECT_EQ(highlighted(), 0) << more;
  }
  // What the user has highlighted himself stays.
  SendMessageW(unit_type, CB_SETEDITSEL, 0, MAKELPARAM(2, 5));
  SetWindowPos(FormWindow(), nullptr, 0, 0, place.right, place.bottom,
               SWP_NOZORDER | SWP_NOACTIVATE);
  EXPECT_EQ(highlighted(), 3);
}

// What a window holds for its owner any process of the desktop can change, and it can put any
// window into a message: neither is followed.
TEST_F(GridWindow, WhatOthersHavePlantedInWindowsIsNotFollowed) {
  constexpr LONG_PTR kPlanted = 0x4141410;  // leads to no memory of this process
  const HWND foreign = CreateWindowExW(0, L"BUTTON", L"", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                                       nullptr, nullptr);
  SetWindowLongPtrW(foreign, GWLP_USERDATA, kPlanted);
  const LONG_PTR own = SetWindowLongPtrW(FormWindow(), GWLP_USERDATA, kPlanted);
  const HWND frame = GetParent(Grid());
  for (const HWND window : {FormWindow(), frame}) {
    SendMessageW(window, WM_COMMAND, MAKEWPARAM(1, BN_CLICKED), reinterpret_cast<LPARAM>(foreign));
    NMHDR header = {.hwndFrom = foreign, .idFrom = 1, .code = NM_CLICK};
    SendMessageW(window, WM_NOTIFY, 1, reinterpret_cast<LPARAM>(&header));
    SendMessageW(window, WM_CTLCOLORSTATIC, 0, reinterpret_cast<LPARAM>(foreign));
    SendMessageW(window, WM_SYSCOLORCHANGE, 0, 0);
  }
  // The control goes on as before.
  form().cmbRDVType.SetListIndex(0);
  EXPECT_EQ(form().cmbRDVType.ListIndex(), 0);
  EXPECT_TRUE(IsWindow(FormWindow()));
  SetWindowLongPtrW(FormWindow(), GWLP_USERDATA, own);
  DestroyWindow(foreign);
}

// Of the grid and its header, at the moment when each is destroyed.
std::map<HWND, WNDPROC> procedures_at_the_end;

LRESULT CALLBACK KeepProcedure(int code, WPARAM wparam, LPARAM lparam) {
  const auto& call = *reinterpret_cast<const CWPSTRUCT*>(lparam);
  if (code == HC_ACTION && call.message == WM_DESTROY &&
      procedures_at_the_end.contains(call.hwnd)) {
    procedures_at_the_end[call.hwnd] =
        reinterpret_cast<WNDPROC>(GetWindowLongPtrW(call.hwnd, GWLP_WNDPROC));
  }
  return CallNextHookEx(nullptr, code, wparam, lparam);
}

WNDPROC ProcedureOfClass(const wchar_t* name) {
  const HWND window =
      CreateWindowExW(0, name, L"", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
  const auto procedure = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC));
  DestroyWindow(window);
  return procedure;
}

TEST_F(GridWindow, AContainerThatDestroysTheWindowsFirstFindsTheirOwnProceduresBack) {
  const HWND list = Grid();
  const HWND header = Header();
  procedures_at_the_end = {{list, nullptr}, {header, nullptr}};
  const HHOOK hook =
      SetWindowsHookExW(WH_CALLWNDPROC, &KeepProcedure, nullptr, GetCurrentThreadId());
  DestroyWindow(FormWindow());
  UnhookWindowsHookEx(hook);
  EXPECT_EQ(procedures_at_the_end[list], ProcedureOfClass(WC_LISTVIEWW));
  EXPECT_EQ(procedures_at_the_end[header], ProcedureOfClass(WC_HEADERW));
}

}  // namespace
}  // namespace rdv::test

#endif

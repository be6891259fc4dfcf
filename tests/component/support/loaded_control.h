// A control in a container, with the lines of a site's first configuration in it.
#pragma once

#include <gtest/gtest.h>

// clang-format off
#include <windows.h>
#include <commctrl.h>
// clang-format on

#include <memory>
#include <string>
#include <vector>

#include "rules/grid_columns.h"
#include "tests/component/support/grid_text.h"
#include "tests/component/support/ole_test.h"
#include "tests/component/support/placed_control.h"
#include "tests/support/site_files.h"
#include "tools/site_folder/site_folder.h"
#include "widgets/control_ids.h"

namespace rdv::test {

class LoadedControl : public OleTest {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(OleTest::SetUp());
    files_ = std::make_unique<SiteFiles>("plain");
    found_ = std::make_unique<SiteFolder>(files_->Folder().u16string());
    placed_ = std::make_unique<PlacedControl>();
    // All columns in sight.
    placed_->container.place = {0, 0, 1300, 500};
  }
  void TearDown() override { placed_.reset(); }

  void Load() {
    VARIANT_BOOL shown = VARIANT_FALSE;
    ASSERT_EQ(placed_->As<LineConfigInterface>(kLineConfigInterfaceId)->ShowControl(1, &shown),
              S_OK);
    ASSERT_EQ(shown, VARIANT_TRUE);
  }
  void PlaceAndLoad() {
    ASSERT_EQ(placed_->Verb(OLEIVERB_UIACTIVATE), S_OK);
    ASSERT_NO_FATAL_FAILURE(Load());
    SetFocus(Grid());
    PumpMessages();
  }

  HWND Grid() { return placed_->Child(control_id::LVRDVLineConfig); }
  // Of the window with the focus; a list that can be typed into has it in its text part.
  int Focus() {
    const int id = GetDlgCtrlID(GetFocus());
    return id > control_id::cmdApply ? GetDlgCtrlID(GetParent(GetFocus())) : id;
  }
  HRESULT PressIn(HWND window, WPARAM key) {
    MSG event = {};
    event.hwnd = window;
    event.message = WM_KEYDOWN;
    event.wParam = key;
    return placed_->As<IOleInPlaceActiveObject>(IID_IOleInPlaceActiveObject)
        ->TranslateAccelerator(&event);
  }
  HRESULT Press(WPARAM key) { return PressIn(GetFocus(), key); }

  int Rows() { return static_cast<int>(SendMessageW(Grid(), LVM_GETITEMCOUNT, 0, 0)); }
  std::wstring Text(int row, int column) { return GridText(Grid(), row, column); }
  void SetText(int row, int column, std::wstring text) {
    LVITEMW item = {};
    item.iSubItem = column - 1;
    item.pszText = text.data();
    SendMessageW(Grid(), LVM_SETITEMTEXTW, static_cast<WPARAM>(row - 1),
                 reinterpret_cast<LPARAM>(&item));
  }
  std::vector<std::wstring> AllTexts() {
    std::vector<std::wstring> texts;
    for (int row = 1; row <= Rows(); ++row) {
      for (int column = 1; column <= kColumnCount; ++column) texts.push_back(Text(row, column));
    }
    return texts;
  }
  void SelectRow(int row) {
    LVITEMW item = {};
    item.state = item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    SendMessageW(Grid(), LVM_SETITEMSTATE, static_cast<WPARAM>(row - 1),
                 reinterpret_cast<LPARAM>(&item));
  }
  // The editor by keyboard, in a row that has all of them.
  void Open(int editor) {
    int row = 1;
    while (row < Rows() && Text(row, column::kLineTypeCode) != L"6") ++row;
    ASSERT_EQ(Text(row, column::kLineTypeCode), L"6");
    row_ = row;
    SelectRow(row);
    SetFocus(Grid());
    ASSERT_EQ(Press(VK_F2), S_OK);
    for (int tabs = 0; tabs < kColumnCount && Focus() != editor; ++tabs) Press(VK_TAB);
    ASSERT_EQ(Focus(), editor);
    PumpMessages();
  }

  int row_ = 0;  // of the open editor
  std::unique_ptr<SiteFiles> files_;
  std::unique_ptr<SiteFolder> found_;
  std::unique_ptr<PlacedControl> placed_;
};

}  // namespace rdv::test

// The user at the grid: its list view and its column headers.
#pragma once

#include <windows.h>

#include <vector>

#include "tools/play/driver.h"
#include "tools/play/win32/control_windows.h"

namespace rdv::play {

class GridUser {
 public:
  explicit GridUser(const ControlWindows& windows);

  Refusal ClickCell(int row, int column, MousePress press);
  Refusal ClickAt(Twips x, Twips y, MousePress press);
  Refusal PressKey(char16_t key);
  Refusal PressGridKey(GridKey key);
  Refusal ClickHeader(int column);
  Refusal ResizeColumn(int column, Twips width);
  Refusal ScrollHorizontally(Twips distance) { return Scroll(WM_HSCROLL, ToPixels(distance), 0); }
  Refusal ScrollVertically(Twips distance) { return Scroll(WM_VSCROLL, 0, ToPixels(distance)); }

  std::vector<RowSeen> Rows() const;
  GeometrySeen Geometry() const;

 private:
  LRESULT Send(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const {
    return SendMessageW(grid_, message, wparam, lparam);
  }
  int RowCount() const;
  int ColumnCount() const;
  int ColumnWidth(int column) const;
  RECT RowPlace(int row) const;
  RECT HeaderItemPlace(int column) const;
  int HeaderHeight() const;
  bool InSight(POINT point) const;
  Text Cell(int row, int column) const;
  Refusal WhyNotThatColumn(int column) const;
  bool CanBeDragged(const RECT& column) const;
  void DragDivider(const RECT& column, int width);
  void Press(POINT point, MousePress press);
  Refusal Scroll(UINT message, int right, int down);

  const ControlWindows& windows_;
  const HWND grid_;
  const HWND header_;
};

}  // namespace rdv::play

// The windows of a control without the control: what the platform itself keeps of such windows when
// they are gone is seen by making and destroying these.
#pragma once

#include <string>
#include <vector>

#include "component/com/ole_headers.h"

namespace rdv::test {

// As a form's windows are when they are looked at: classes, styles, places, contents.
class BareWindows {
 public:
  explicit BareWindows(HWND form);

  // Makes them once more in a container's window of the given size, and destroys all.
  void MakeAndDestroy(bool visible) const;
  int Count() const { return static_cast<int>(windows_.size()); }

 private:
  struct Window {
    int parent;  // index; -1 = the form itself
    std::wstring window_class;
    std::wstring text;
    DWORD style;
    DWORD extended_style;
    RECT place;
    DWORD list_style;
    std::vector<std::wstring> entries;  // of a drop-down list
    std::vector<int> columns;           // widths, of a grid
    std::vector<std::vector<std::wstring>> rows;
  };

  void Look(HWND window, int parent);
  static void LookAtEntries(HWND list, Window& window);
  static void LookAtCells(HWND grid, Window& window);
  static void Fill(HWND made, const Window& window);

  std::vector<Window> windows_;
};

}  // namespace rdv::test

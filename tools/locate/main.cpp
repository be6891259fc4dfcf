// rdvlocate: tells where on the screen a part of the control lies, so that a real mouse can be
// moved there; the control may be shown by any program.
//
//   rdvlocate cell ROW COLUMN     a cell of the line grid, all twenty columns counted
//   rdvlocate text ROW COLUMN     what that cell shows, instead of where it lies
//   rdvlocate entry TEXT          an entry of the drop-down list that is open
//   rdvlocate window ID           a child window that can be used now, by its identifier
//
// Prints "X Y" in pixels, a text in UTF-8. Exit status: 0 found, 1 not on screen now, 2 wrong
// arguments.
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <optional>

#include "tools/locate/other_program.h"
#include "widgets/control_ids.h"

namespace {

constexpr int kFound = 0;
constexpr int kNotOnScreen = 1;
constexpr int kWrongArguments = 2;

int Number(const wchar_t* text) {
  return static_cast<int>(std::wcstol(text, nullptr, 10));
}

int Tell(const std::optional<rdv::ScreenPoint>& point) {
  if (!point) return kNotOnScreen;
  std::printf("%ld %ld\n", point->x, point->y);
  return kFound;
}

int Tell(const std::optional<std::wstring>& text) {
  if (!text) return kNotOnScreen;
  char utf8[1024] = {};
  WideCharToMultiByte(CP_UTF8, 0, text->c_str(), -1, utf8, sizeof utf8, nullptr, nullptr);
  std::printf("%s\n", utf8);
  return kFound;
}

int Locate(int count, wchar_t** arguments) {
  const wchar_t* what = count > 1 ? arguments[1] : L"";
  if (count == 4 && (std::wcscmp(what, L"cell") == 0 || std::wcscmp(what, L"text") == 0)) {
    const HWND grid = rdv::FindControlWindow(rdv::control_id::LVRDVLineConfig);
    if (!grid) return kNotOnScreen;
    const int row = Number(arguments[2]);
    const int column = Number(arguments[3]);
    return *what == L'c' ? Tell(rdv::MiddleOfCell(grid, row, column))
                         : Tell(rdv::TextOfCell(grid, row, column));
  }
  if (count == 3 && std::wcscmp(what, L"entry") == 0) {
    return Tell(rdv::MiddleOfDroppedEntry(arguments[2]));
  }
  if (count == 3 && std::wcscmp(what, L"window") == 0) {
    return Tell(rdv::MiddleOfWindow(rdv::FindControlWindow(Number(arguments[2]))));
  }
  std::fputs("usage: rdvlocate cell ROW COLUMN | text ROW COLUMN | entry TEXT | window ID\n",
             stderr);
  return kWrongArguments;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  return Locate(count, arguments);
}

#include "tools/play/win32/control_windows.h"

#include <cmath>
#include <stdexcept>

#include "widgets/form_table.h"

namespace rdv::play {
namespace {

struct Search {
  int id;
  HWND found;
};

BOOL CALLBACK MatchId(HWND window, LPARAM context) {
  auto& search = *reinterpret_cast<Search*>(context);
  if (GetDlgCtrlID(window) != search.id) return TRUE;
  search.found = window;
  return FALSE;
}

}  // namespace

int ToPixels(Twips length) {
  return static_cast<int>(std::lround(length / kTwipsPerPixel));
}

Twips ToTwips(int pixels) {
  return pixels * kTwipsPerPixel;
}

HWND ControlWindows::Frame() const {
  return WithId(control_id::fraConfiguration);
}

HWND ControlWindows::Grid() const {
  return WithId(control_id::LVRDVLineConfig);
}

HWND ControlWindows::Named(std::string_view name) const {
  return WithId(EntryOf(name).id);
}

Rectangle ControlWindows::PlaceInFrame(HWND window) const {
  RECT place = {};
  GetWindowRect(window, &place);
  MapWindowPoints(nullptr, Frame(), reinterpret_cast<POINT*>(&place), 2);
  return {ToTwips(place.left), ToTwips(place.top), ToTwips(place.right - place.left),
          ToTwips(place.bottom - place.top)};
}

Refusal ControlWindows::WhyOutOfReach(HWND window) const {
  if (!IsWindowVisible(window)) return refusal::kHidden;
  for (HWND each = window; each != host_; each = GetParent(each)) {
    if (!IsWindowEnabled(each)) return refusal::kDisabled;
  }
  return std::nullopt;
}

std::optional<std::string> ControlWindows::Focused() const {
  const HWND focus = GetFocus();
  for (const WidgetEntry& entry : kFormTable) {
    if (entry.kind == WidgetKind::Frame) continue;
    // The text part of a list is a window of its own.
    const HWND candidate = WithId(entry.id);
    if (focus == candidate || IsChild(candidate, focus)) return std::string(entry.name);
  }
  return std::nullopt;
}

HWND ControlWindows::WithId(int id) const {
  Search search = {id, nullptr};
  EnumChildWindows(host_, &MatchId, reinterpret_cast<LPARAM>(&search));
  if (!search.found) throw std::runtime_error("a window of the control is missing");
  return search.found;
}

void Click(HWND window, POINT point, WPARAM held, const ButtonMessages& button) {
  const LPARAM at = MAKELPARAM(point.x, point.y);
  SendMessageW(window, button.down, MAKEWPARAM(held | button.held, button.further), at);
  SendMessageW(window, button.up, MAKEWPARAM(held, button.further), at);
}

void HandlePendingMessages() {
  MSG message = {};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

}  // namespace rdv::play

#include "tools/play/win32/control_windows.h"

#include <array>
#include <cmath>
#include <stdexcept>

#include "widgets/win32/control_ids.h"

namespace rdv::play {
namespace {

struct NamedId {
  std::string_view name;
  int id;
};

constexpr std::array<NamedId, 18> kWindows = {{
    {"LVRDVLineConfig", control_id::LVRDVLineConfig},
    {"cmbPartition", control_id::cmbPartition},
    {"cmbStartingNodeName", control_id::cmbStartingNodeName},
    {"cmbStartingNodeNumber", control_id::cmbStartingNodeNumber},
    {"cmbVolume", control_id::cmbVolume},
    {"cmbModeType", control_id::cmbModeType},
    {"cmbModeNumber", control_id::cmbModeNumber},
    {"cmbNISOption", control_id::cmbNISOption},
    {"txtEWTOption", control_id::txtEWTOption},
    {"cmbLineType", control_id::cmbLineType},
    {"cmbImpedance", control_id::cmbImpedance},
    {"cmbSoftStop", control_id::cmbSoftStop},
    {"txtLabel", control_id::txtLabel},
    {"cmbRDVType", control_id::cmbRDVType},
    {"cmdShowDefaults", control_id::cmdShowDefaults},
    {"cmdOK", control_id::cmdOK},
    {"cmdCancel", control_id::cmdCancel},
    {"cmdApply", control_id::cmdApply},
}};

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
  for (const NamedId& window : kWindows) {
    if (window.name == name) return WithId(window.id);
  }
  throw std::logic_error("unknown window");
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
  for (const NamedId& window : kWindows) {
    // The text part of a list is a window of its own.
    const HWND candidate = WithId(window.id);
    if (focus == candidate || IsChild(candidate, focus)) return std::string(window.name);
  }
  return std::nullopt;
}

HWND ControlWindows::WithId(int id) const {
  Search search = {id, nullptr};
  EnumChildWindows(host_, &MatchId, reinterpret_cast<LPARAM>(&search));
  if (!search.found) throw std::runtime_error("a window of the control is missing");
  return search.found;
}

void Click(HWND window, POINT point, WPARAM held) {
  const LPARAM at = MAKELPARAM(point.x, point.y);
  SendMessageW(window, WM_LBUTTONDOWN, held | MK_LBUTTON, at);
  SendMessageW(window, WM_LBUTTONUP, held, at);
}

void HandlePendingMessages() {
  MSG message = {};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

}  // namespace rdv::play

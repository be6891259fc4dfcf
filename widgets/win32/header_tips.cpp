#include "widgets/win32/header_tips.h"

#include <array>

namespace rdv::win32 {
namespace {

using Caption = std::array<wchar_t, 128>;

Caption CaptionOf(HWND header, int column) {
  Caption caption = {};
  HDITEMW item = {};
  item.mask = HDI_TEXT;
  item.pszText = caption.data();
  item.cchTextMax = static_cast<int>(caption.size());
  SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&item));
  // The system may give a text of its own instead of filling the one that it was given.
  if (item.pszText && item.pszText != caption.data()) {
    lstrcpynW(caption.data(), item.pszText, static_cast<int>(caption.size()));
  }
  return caption;
}

int TextWidth(HWND header, const Caption& text) {
  const HDC context = GetDC(header);
  const HGDIOBJ before =
      SelectObject(context, reinterpret_cast<HFONT>(SendMessageW(header, WM_GETFONT, 0, 0)));
  SIZE extent = {};
  GetTextExtentPoint32W(context, text.data(), lstrlenW(text.data()), &extent);
  SelectObject(context, before);
  ReleaseDC(header, context);
  return extent.cx;
}

TTTOOLINFOW ToolOf(HWND header, int column) {
  TTTOOLINFOW tool = {};
  tool.cbSize = TTTOOLINFOW_V1_SIZE;  // which every version of the common controls knows
  tool.hwnd = header;
  tool.uId = static_cast<UINT_PTR>(column);
  return tool;
}

}  // namespace

HeaderTips::~HeaderTips() {
  Close();
  if (controls_) ReleaseActCtx(controls_);
}

void HeaderTips::Adopt(HWND header) {
  if (controls_) ReleaseActCtx(controls_);
  if (!GetCurrentActCtx(&controls_)) controls_ = nullptr;
  header_ = header;
}

// The system makes the tips belong to the window that the header lies in, at whatever depth, and
// destroys them with it. A host may have taken the control out of that and into another.
bool HeaderTips::HasMoved() const {
  return !IsWindow(window_) || GetAncestor(header_, GA_ROOT) != root_;
}

void HeaderTips::Make() {
  ULONG_PTR cookie = 0;
  const bool active = controls_ && ActivateActCtx(controls_, &cookie);
  window_ = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX, 0, 0,
                            0, 0, header_, nullptr, nullptr, nullptr);
  if (active) DeactivateActCtx(0, cookie);
  root_ = GetAncestor(header_, GA_ROOT);
}

// A tool for each column that needs one. Only when the mouse is there: a header tells of a change
// before it has made it.
void HeaderTips::Follow() {
  outdated_ = false;
  if (!window_) Make();
  if (!window_) return;
  const auto columns = static_cast<int>(SendMessageW(header_, HDM_GETITEMCOUNT, 0, 0));
  const auto margin = static_cast<int>(SendMessageW(header_, HDM_GETBITMAPMARGIN, 0, 0));
  for (int column = 0; column < columns; ++column) {
    TTTOOLINFOW tool = ToolOf(header_, column);
    SendMessageW(window_, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    SendMessageW(header_, HDM_GETITEMRECT, static_cast<WPARAM>(column),
                 reinterpret_cast<LPARAM>(&tool.rect));
    const LONG width = tool.rect.right - tool.rect.left;
    Caption caption = CaptionOf(header_, column);
    // How far from its edges a header writes differs: rather a tip too many.
    if (width == 0 || TextWidth(header_, caption) + 4 * margin <= width) continue;
    tool.lpszText = caption.data();
    SendMessageW(window_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
  }
}

void HeaderTips::Relay(const HookedMessage& message) {
  if (message.message < WM_MOUSEFIRST || message.message > WM_MOUSELAST) return;
  if (window_ && HasMoved()) Close();
  if (outdated_) Follow();
  if (!window_) return;
  MSG event = {};
  event.hwnd = message.window;
  event.message = message.message;
  event.wParam = message.wparam;
  event.lParam = message.lparam;
  SendMessageW(window_, TTM_RELAYEVENT, 0, reinterpret_cast<LPARAM>(&event));
}

void HeaderTips::Close() {
  if (IsWindow(window_)) DestroyWindow(window_);
  window_ = nullptr;
  outdated_ = true;
}

}  // namespace rdv::win32

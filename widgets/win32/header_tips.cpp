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

// A tool for each column that needs one. Only when the mouse is there: a header tells of a change
// before it has made it.
void HeaderTips::Follow(HWND header) {
  outdated_ = false;
  if (!window_) {
    window_ = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX, 0,
                              0, 0, 0, header, nullptr, nullptr, nullptr);
    if (!window_) return;
  }
  const auto columns = static_cast<int>(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
  const auto margin = static_cast<int>(SendMessageW(header, HDM_GETBITMAPMARGIN, 0, 0));
  for (int column = 0; column < columns; ++column) {
    TTTOOLINFOW tool = ToolOf(header, column);
    SendMessageW(window_, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    SendMessageW(header, HDM_GETITEMRECT, static_cast<WPARAM>(column),
                 reinterpret_cast<LPARAM>(&tool.rect));
    const LONG width = tool.rect.right - tool.rect.left;
    Caption caption = CaptionOf(header, column);
    // How far from its edges a header writes differs: rather a tip too many.
    if (width == 0 || TextWidth(header, caption) + 4 * margin <= width) continue;
    tool.lpszText = caption.data();
    SendMessageW(window_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
  }
}

void HeaderTips::Relay(HWND header, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message < WM_MOUSEFIRST || message > WM_MOUSELAST) return;
  if (outdated_) Follow(header);
  if (!window_) return;
  MSG event = {};
  event.hwnd = header;
  event.message = message;
  event.wParam = wparam;
  event.lParam = lparam;
  SendMessageW(window_, TTM_RELAYEVENT, 0, reinterpret_cast<LPARAM>(&event));
}

void HeaderTips::Close() {
  if (window_) DestroyWindow(window_);
  window_ = nullptr;
  outdated_ = true;
}

}  // namespace rdv::win32

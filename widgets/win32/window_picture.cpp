#include "widgets/win32/window_picture.h"

#include <commctrl.h>

namespace rdv::win32 {
namespace {

// A bitmap of the screen's kind to paint on. Printers and metafiles have no such thing, and not all
// that the platform's controls do is done on them.
class Canvas {
 public:
  explicit Canvas(SIZE size) : screen_(GetDC(nullptr)), context_(CreateCompatibleDC(screen_)) {
    if (!context_) return;
    bitmap_ = CreateCompatibleBitmap(screen_, size.cx, size.cy);
    before_ = SelectObject(context_, bitmap_);
  }
  ~Canvas() {
    if (before_) SelectObject(context_, before_);
    if (bitmap_) DeleteObject(bitmap_);
    if (context_) DeleteDC(context_);
    if (screen_) ReleaseDC(nullptr, screen_);
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  // Null where the system paints nothing.
  HDC Context() const { return before_ ? context_ : nullptr; }

 private:
  const HDC screen_;
  const HDC context_;
  HBITMAP bitmap_ = nullptr;
  HGDIOBJ before_ = nullptr;
};

SIZE SizeOf(const RECT& place) {
  return {place.right - place.left, place.bottom - place.top};
}

// A list view that buffers its painting may leave this to the window that it is on.
void FillListView(HWND window, HDC context, SIZE size) {
  wchar_t name[32] = L"";
  GetClassNameW(window, name, 32);
  if (lstrcmpiW(name, WC_LISTVIEWW) != 0) return;
  const HBRUSH brush =
      CreateSolidBrush(static_cast<COLORREF>(SendMessageW(window, LVM_GETBKCOLOR, 0, 0)));
  const RECT area = {0, 0, size.cx, size.cy};
  FillRect(context, &area, brush);
  DeleteObject(brush);
}

// The windows in it come last, those in front last of all. Each has a canvas of its own: not all of
// the platform's controls paint where the context's origin was moved to, and not every system
// paints the windows in a window by itself. One that paints no background has its parent's.
void Paint(HWND window, HDC context, POINT at) {
  RECT place = {};
  GetWindowRect(window, &place);
  const SIZE size = SizeOf(place);
  const Canvas canvas(size);
  const HDC own = canvas.Context();
  if (!own) return;
  BitBlt(own, 0, 0, size.cx, size.cy, context, at.x, at.y, SRCCOPY);
  FillListView(window, own, size);
  SendMessageW(window, WM_PRINT, reinterpret_cast<WPARAM>(own),
               PRF_NONCLIENT | PRF_ERASEBKGND | PRF_CLIENT);
  const HWND front = GetWindow(window, GW_CHILD);
  HWND child = front ? GetWindow(front, GW_HWNDLAST) : nullptr;
  for (; child; child = GetWindow(child, GW_HWNDPREV)) {
    // Its own style: in a form that is not placed no window can be seen.
    if ((GetWindowLongW(child, GWL_STYLE) & WS_VISIBLE) == 0) continue;
    RECT inner = {};
    GetWindowRect(child, &inner);
    Paint(child, own, {inner.left - place.left, inner.top - place.top});
  }
  BitBlt(context, at.x, at.y, size.cx, size.cy, own, 0, 0, SRCCOPY);
}

}  // namespace

bool DrawWindow(HWND window, HDC context, const RECT& area) {
  RECT client = {};
  GetClientRect(window, &client);
  if (client.right == 0 || client.bottom == 0) return false;
  const Canvas canvas({client.right, client.bottom});
  if (!canvas.Context()) return false;
  Paint(window, canvas.Context(), {0, 0});
  const int saved = SaveDC(context);
  SetStretchBltMode(context, HALFTONE);
  SetBrushOrgEx(context, 0, 0, nullptr);
  StretchBlt(context, area.left, area.top, area.right - area.left, area.bottom - area.top,
             canvas.Context(), 0, 0, client.right, client.bottom, SRCCOPY);
  RestoreDC(context, saved);
  return true;
}

}  // namespace rdv::win32

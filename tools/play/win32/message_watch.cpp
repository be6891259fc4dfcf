#include "tools/play/win32/message_watch.h"

#include <array>
#include <cstdlib>
#include <optional>
#include <utility>

#include "tools/play/win32/box_buttons.h"
#include "tools/play/win32/container.h"
#include "tools/play/win32/window_text.h"

namespace rdv::play {
namespace {

MessageWatch* watching = nullptr;

constexpr const wchar_t* kDialogClass = L"#32770";
// The property of a box that has its answer.
constexpr const wchar_t* kSeen = L"TLV_RDV_Line_Config.Seen";

bool HasButton(HWND box, int id) {
  const HWND button = GetDlgItem(box, id);
  return button && HasClass(button, L"Button");
}

struct Parts {
  Text text;
  HICON icon = nullptr;
};

BOOL CALLBACK TakePart(HWND child, LPARAM context) {
  auto& parts = *reinterpret_cast<Parts*>(context);
  if (!HasClass(child, L"Static")) return TRUE;
  const auto kind = GetWindowLongW(child, GWL_STYLE) & SS_TYPEMASK;
  if (kind == SS_ICON) {
    parts.icon = reinterpret_cast<HICON>(SendMessageW(child, STM_GETICON, 0, 0));
  } else if (parts.text.empty()) {
    parts.text = TextOf(child);
  }
  return TRUE;
}

int ButtonsStyle(HWND box) {
  if (HasButton(box, IDYES)) return HasButton(box, IDCANCEL) ? MB_YESNOCANCEL : MB_YESNO;
  return HasButton(box, IDCANCEL) && HasButton(box, IDOK) ? MB_OKCANCEL : MB_OK;
}

// Three colours of every pixel on white, in one size for all.
using Picture = std::vector<int>;

std::optional<Picture> PictureOf(HICON icon) {
  constexpr int kSide = 32;
  BITMAPINFO description = {};
  description.bmiHeader = {sizeof(BITMAPINFOHEADER), kSide, kSide, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  const HDC context = CreateCompatibleDC(nullptr);
  void* pixels = nullptr;
  const HBITMAP bitmap =
      CreateDIBSection(context, &description, DIB_RGB_COLORS, &pixels, nullptr, 0);
  std::optional<Picture> picture;
  if (bitmap) {
    const HGDIOBJ before = SelectObject(context, bitmap);
    PatBlt(context, 0, 0, kSide, kSide, WHITENESS);
    if (DrawIconEx(context, 0, 0, icon, kSide, kSide, 0, nullptr, DI_NORMAL)) {
      GdiFlush();
      picture.emplace();
      const auto* bytes = static_cast<const BYTE*>(pixels);
      for (int index = 0; index < kSide * kSide * 4; ++index) {
        if (index % 4 != 3) picture->push_back(bytes[index]);
      }
    }
    SelectObject(context, before);
    DeleteObject(bitmap);
  }
  DeleteDC(context);
  return picture;
}

long Difference(const Picture& left, const Picture& right) {
  long sum = 0;
  for (size_t index = 0; index < left.size(); ++index) sum += std::abs(left[index] - right[index]);
  return sum;
}

// A box may show a copy of the system's icon, and of another size: it is that of the four which it
// looks most like.
int IconStyle(HICON icon) {
  if (!icon) return 0;
  const std::array<std::pair<LPCWSTR, int>, 4> icons = {{{IDI_HAND, MB_ICONHAND},
                                                         {IDI_QUESTION, MB_ICONQUESTION},
                                                         {IDI_EXCLAMATION, MB_ICONEXCLAMATION},
                                                         {IDI_ASTERISK, MB_ICONASTERISK}}};
  const std::optional<Picture> shown = PictureOf(icon);
  int style = 0;
  long least = 0;
  for (const auto& [name, each] : icons) {
    const std::optional<Picture> known = PictureOf(LoadIconW(nullptr, name));
    if (!shown || !known) return 0;
    const long difference = Difference(*shown, *known);
    if (style == 0 || difference < least) {
      style = each;
      least = difference;
    }
  }
  return style;
}

}  // namespace

MessageWatch::MessageWatch() {
  watching = this;
  // Told of few events. A hook that sees every message makes each of them many times slower.
  hook_ = SetWindowsHookExW(WH_CBT, &OnWindowEvent, nullptr, GetCurrentThreadId());
}

MessageWatch::~MessageWatch() {
  UnhookWindowsHookEx(hook_);
  watching = nullptr;
}

std::vector<MessageSeen> MessageWatch::TakeMessages() {
  return std::exchange(messages_, {});
}

// A box that becomes active is complete: its text, its icon and its buttons are there. It does so
// again when a box above it has gone.
LRESULT CALLBACK MessageWatch::OnWindowEvent(int code, WPARAM wparam, LPARAM lparam) {
  const auto window = reinterpret_cast<HWND>(wparam);
  if (code == HCBT_ACTIVATE && HasClass(window, kDialogClass) && !GetPropW(window, kSeen)) {
    SetPropW(window, kSeen, reinterpret_cast<HANDLE>(1));
    watching->OnBox(window);
  }
  return CallNextHookEx(nullptr, code, wparam, lparam);
}

void MessageWatch::OnBox(HWND box) {
  Parts parts;
  EnumChildWindows(box, &TakePart, reinterpret_cast<LPARAM>(&parts));
  const int buttons = ButtonsStyle(box);
  MessageAnswer answer = buttons == MB_OK ? MessageAnswer::Ok : MessageAnswer::Cancel;
  if (!answers_.empty()) {
    answer = answers_.front();
    answers_.pop_front();
  }
  MessageSeen& seen = messages_.emplace_back();
  seen.text = parts.text;
  const Text title = TextOf(box);
  if (title != FromWide(kHostTitle)) seen.title = title;
  seen.style = buttons | IconStyle(parts.icon);
  seen.answer = NameOf(answer);
  PressInBox(box, static_cast<int>(answer));
}

}  // namespace rdv::play

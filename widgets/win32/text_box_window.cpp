#include "widgets/win32/text_box_window.h"

#include "widgets/win32/wide.h"

namespace rdv::win32 {

rdv::Text WindowText(HWND window) {
  rdv::Text text(static_cast<size_t>(GetWindowTextLengthW(window)) + 1, u'\0');
  const int length = GetWindowTextW(window, reinterpret_cast<wchar_t*>(text.data()),
                                    static_cast<int>(text.size()));
  text.resize(static_cast<size_t>(length));
  return text;
}

TextBoxWindow::TextBoxWindow(HWND parent, int id) {
  Create(parent, {.window_class = L"EDIT",
                  .style = WS_TABSTOP | ES_AUTOHSCROLL,
                  .extended_style = WS_EX_CLIENTEDGE,
                  .id = id});
}

rdv::Text TextBoxWindow::Text() const {
  return WindowText(Handle());
}

void TextBoxWindow::SetText(TextView text) {
  if (text == known_text_) return;
  known_text_ = text;
  setting_ = true;
  SetWindowTextW(Handle(), Wide(known_text_));
  setting_ = false;
  SetCaret(0);
  Notify(on_change);
}

size_t TextBoxWindow::Caret() const {
  DWORD start = 0;
  SendMessageW(Handle(), EM_GETSEL, reinterpret_cast<WPARAM>(&start), 0);
  return start;
}

void TextBoxWindow::SetCaret(size_t position) {
  SendMessageW(Handle(), EM_SETSEL, position, static_cast<LPARAM>(position));
}

// What is typed replaces the old text.
void TextBoxWindow::SetFocus() {
  EditorWindow::SetFocus();
  if (Focused()) SendMessageW(Handle(), EM_SETSEL, 0, -1);
}

void TextBoxWindow::MakeAnew(HWND parent) {
  EditorWindow::MakeAnew(parent);
  setting_ = true;
  SetWindowTextW(Handle(), Wide(known_text_));
  setting_ = false;
}

void TextBoxWindow::OnCommand(WORD code) {
  if (code != EN_CHANGE || setting_) return;
  rdv::Text text = Text();
  if (text == known_text_) return;
  known_text_ = std::move(text);
  Notify(on_change);
}

}  // namespace rdv::win32

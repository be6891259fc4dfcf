#include "tests/support/test_form.h"

#include "tests/support/memory_test_form.h"

#ifdef _WIN32

#include <utility>

#include "tests/support/window_probe.h"
#include "tools/play/win32/container.h"
#include "tools/play/win32/control_windows.h"
#include "tools/play/win32/editor_user.h"
#include "tools/play/win32/grid_user.h"
#include "tools/play/win32/message_watch.h"
#include "tools/play/win32/window_text.h"
#include "widgets/win32/form_window.h"

namespace rdv::test {
namespace {

// In a host's window of the design size.
class WindowTestForm : public TestForm {
 public:
  WindowTestForm() {
    form_.KeepAlive(alive_);
    RECT place = {};
    GetClientRect(host_.Handle(), &place);
    win32::MoveTo(form_.Handle(), place);
    ShowWindow(form_.Handle(), SW_SHOWNA);
  }

  Form Widgets() override { return form_.Widgets(); }

  Refusal ClickCell(int row, int column, Keys held) override {
    return Settled(Grid().ClickCell(row, column, {.ctrl = held.ctrl, .shift = held.shift}));
  }
  Refusal ClickAt(Twips x, Twips y, Keys held) override {
    return Settled(Grid().ClickAt(x, y, {.ctrl = held.ctrl, .shift = held.shift}));
  }
  Refusal PressKey(char16_t key) override { return Settled(Grid().PressKey(key)); }
  Refusal ClickHeader(int column) override { return Settled(Grid().ClickHeader(column)); }
  Refusal ResizeColumn(int column, Twips width) override {
    return Settled(Grid().ResizeColumn(column, width));
  }
  Refusal ScrollHorizontally(Twips distance) override {
    return Settled(Grid().ScrollHorizontally(distance));
  }
  Refusal ScrollVertically(Twips distance) override {
    return Settled(Grid().ScrollVertically(distance));
  }
  Refusal Pick(ComboBox& list, int index) override { return Settled(At(list).Pick(index)); }
  Refusal Type(Editor& editor, TextView text) override { return Settled(At(editor).Type(text)); }
  Refusal Paste(Editor& editor, TextView text) override { return Settled(At(editor).Paste(text)); }
  Refusal Press(Button& button) override {
    const HWND window = dynamic_cast<win32::ButtonWindow&>(button).Handle();
    if (const Refusal refused = windows_.WhyOutOfReach(window)) return refused;
    RECT area = {};
    GetClientRect(window, &area);
    play::Click(window, {area.right / 2, area.bottom / 2});
    return Settled(Refusal());
  }

  void QueueAnswer(MessageAnswer answer) override { watch_.QueueAnswer(answer); }
  std::vector<Message> TakeMessages() override {
    std::vector<Message> messages;
    for (play::MessageSeen& seen : watch_.TakeMessages()) {
      messages.push_back({std::move(seen.text), seen.style, std::move(seen.title)});
    }
    return messages;
  }

  std::optional<std::string> FocusedWidget() override { return windows_.Focused(); }
  int DropDownWidth(ComboBox& list) override { return At(list).List().drop_down_width; }
  Text ColumnCaption(int column) override {
    wchar_t caption[64] = L"";
    LVCOLUMNW part = {};
    part.mask = LVCF_TEXT;
    part.pszText = caption;
    part.cchTextMax = 64;
    SendMessageW(windows_.Grid(), LVM_GETCOLUMNW, static_cast<WPARAM>(column - 1),
                 reinterpret_cast<LPARAM>(&part));
    return play::FromWide(caption);
  }

 private:
  static Refusal Settled(Refusal refused) {
    play::HandlePendingMessages();
    return refused;
  }

  play::GridUser Grid() { return play::GridUser(windows_); }
  play::EditorUser At(Editor& editor) {
    auto* list = dynamic_cast<win32::ComboBoxWindow*>(&editor);
    return play::EditorUser(
        windows_, list ? list->Handle() : dynamic_cast<win32::TextBoxWindow&>(editor).Handle());
  }

  play::HostWindow host_;
  play::MessageWatch watch_;
  const std::shared_ptr<void> alive_ = std::make_shared<int>();
  win32::FormWindow form_{GetModuleHandleW(nullptr), host_.Handle(), kGridContent};
  const play::ControlWindows windows_{host_.Handle()};
};

}  // namespace

std::unique_ptr<TestForm> MakeTestForm() {
  if (!MakesDropDownLists()) return std::make_unique<MemoryTestForm>();
  return std::make_unique<WindowTestForm>();
}

Twips LengthTolerance() {
  return MakesDropDownLists() ? 60 : 0;
}

}  // namespace rdv::test

#else

namespace rdv::test {

std::unique_ptr<TestForm> MakeTestForm() {
  return std::make_unique<MemoryTestForm>();
}

Twips LengthTolerance() {
  return 0;
}

}  // namespace rdv::test

#endif
